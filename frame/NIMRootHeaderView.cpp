#include "frame/NIMRootHeaderView.h"

#include "platform/Process.h"
#include "platform/UIImage.h"

NIM_REGISTER_CLASS(NIMRootHeaderView, PSHeaderView);

void NIMRootHeaderView::initWithSpecifier(const std::shared_ptr<PSSpecifier>& specifier)
{
    PSHeaderView::initWithSpecifier(specifier);
    // Only the artwork's proportions matter here; its pixels are drawn by whoever shows the page.
    if (auto size = UIImage::sizeOfImageNamed("icons/NIMHeader"))
        _aspectRatio = static_cast<double>(size->width) / size->height;
    _headerImageView = std::make_shared<UIImageView>("icons/NIMHeader");
    addSubview(_headerImageView);
}

void NIMRootHeaderView::setFrame(CGRect frame)
{
    PSHeaderView::setFrame(CGRect{frame.x, 0, frame.width, frame.height});
    _headerImageView->setFrame(CGRect{frame.x, 0, frame.width, frame.height + 35});
    Process::current().global<NIMRootTitleState>().headerHeight = static_cast<float>(_headerImageView->frame().height);
}

double NIMRootHeaderView::preferredHeightForWidth(double width)
{
    return _aspectRatio > 0 ? width / _aspectRatio - 26 : 0;
}

float NIMRootHeaderView::headerH()
{
    return Process::current().global<NIMRootTitleState>().headerHeight;
}
