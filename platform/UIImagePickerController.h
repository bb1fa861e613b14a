#pragma once
// UIImagePickerController over the photo library, and the activity indicator a picker's delegate
// shows while it saves. A host answers a shown picker with an image file or a cancel.

#include "platform/UIImage.h"
#include "platform/UIViewController.h"

class UIImagePickerController;

struct UIImagePickerInfo {
    /// UIImagePickerControllerOriginalImage: the picked image, unedited.
    std::shared_ptr<UIImage> originalImage;
};

class UIImagePickerControllerDelegate {
public:
    virtual ~UIImagePickerControllerDelegate() = default;
    virtual void imagePickerControllerDidFinishPickingMediaWithInfo(UIImagePickerController& picker,
                                                                    const UIImagePickerInfo& info) = 0;
    virtual void imagePickerControllerDidCancel(UIImagePickerController& picker) = 0;
};

class UIImagePickerController : public UIViewController {
public:
    enum class SourceType { PhotoLibrary = 0, Camera = 1 };

    SourceType sourceType = SourceType::PhotoLibrary;
    std::weak_ptr<UIImagePickerControllerDelegate> delegate;

    /// The user picks image (the host's `image PATH`).
    void pick(std::shared_ptr<UIImage> image);
    /// The user cancels.
    void cancel();
};

/// A spinning wheel over a view: {"event":"activity","animating":B} when it starts or stops.
class UIActivityIndicatorView : public UIView {
public:
    explicit UIActivityIndicatorView(CGRect frame)
        : UIView("activity", frame)
    {
    }
    bool hidesWhenStopped = true;
    bool isAnimating() const { return _animating; }
    void startAnimating();
    void stopAnimating();

private:
    bool _animating = false;
};
