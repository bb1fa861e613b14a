#pragma once
// The root page's header: the product artwork ("icons/NIMHeader") across the table's width,
// reaching 35 points below the header so that the first rows slide over it. Its laid-out height
// is the process-wide `headerH` that the root page's title fade measures against.

#include "platform/PSTableCell.h"

class NIMRootHeaderView : public PSHeaderView {
public:
    void initWithSpecifier(const std::shared_ptr<PSSpecifier>& specifier) override;
    /// The vertical origin is always 0; the image view is (x, 0, w, h + 35).
    void setFrame(CGRect frame) override;
    /// w / aspect ratio - 26 (0 without the artwork).
    double preferredHeightForWidth(double width) override;

    /// The height of the header image as last laid out (0 before the first layout).
    static float headerH();

    const std::shared_ptr<UIImageView>& headerImageView() const { return _headerImageView; }

private:
    std::shared_ptr<UIImageView> _headerImageView;
    double _aspectRatio = 0;
};

/// The root page's process-wide title state.
struct NIMRootTitleState {
    bool titleShown = false;
    float headerHeight = 0;
};
