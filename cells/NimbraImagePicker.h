#pragma once
// An image row: tapping it opens the photo library; the picked image is stored, PNG-encoded at
// full size, atomically, in "/var/jb/var/mobile/Library/Nimbra/<fileName>.png", where the
// customisation code reads it by name. A square preview at the cell's right shows the stored image.
//
// A row whose "fileName" is not a plain file name (empty, "." or "..", or with a "/") does nothing:
// the picker does not open and nothing is written anywhere.

#include "platform/PSListController.h"
#include "platform/UIImagePickerController.h"

class NimbraImagePicker : public PSTableCell, public UIImagePickerControllerDelegate {
public:
    /// Remembers the row's page, becomes the row's target, reads its "fileName".
    void initWithSpecifier(const std::shared_ptr<PSSpecifier>& specifier, int style) override;
    /// The first time the cell is shown: the preview (side = height - 10) at the right, showing the
    /// stored image when there is one.
    void didMoveToWindow() override;
    void layoutSubviews() override;

    /// The row's action: presents the photo library from the page.
    void chooseImage();
    void imagePickerControllerDidFinishPickingMediaWithInfo(UIImagePickerController& picker, const UIImagePickerInfo& info) override;
    void imagePickerControllerDidCancel(UIImagePickerController& picker) override;
    /// "Remove Picture": deletes the stored image and empties the preview. False (the preview kept)
    /// when the file is still there afterwards; true when there was none to begin with. A row
    /// without a plain file name removes nothing and answers true.
    bool removeImage();

    const std::string& fileName() const { return _fileName; }
    /// The preview (nullptr until the cell was first shown) and the image it shows.
    const std::shared_ptr<UIImageView>& previewImage() const { return _previewImage; }
    const std::shared_ptr<UIImage>& previewContents() const { return _previewContents; }

private:
    CGRect previewFrame() const;

    std::weak_ptr<PSListController> _listController;
    std::shared_ptr<UIImageView> _previewImage;
    std::shared_ptr<UIImage> _previewContents;
    std::string _fileName;
};
