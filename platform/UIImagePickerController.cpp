#include "platform/UIImagePickerController.h"

#include "platform/Events.h"
#include "platform/Process.h"

NIM_REGISTER_CLASS(UIImagePickerController, UIViewController);

void UIImagePickerController::pick(std::shared_ptr<UIImage> image)
{
    auto keepAlive = shared_from_this();
    if (auto receiver = delegate.lock())
        receiver->imagePickerControllerDidFinishPickingMediaWithInfo(*this, UIImagePickerInfo{std::move(image)});
}

void UIImagePickerController::cancel()
{
    auto keepAlive = shared_from_this();
    if (auto receiver = delegate.lock())
        receiver->imagePickerControllerDidCancel(*this);
}

void UIActivityIndicatorView::startAnimating()
{
    _animating = true;
    Process::current().events().record(Events::Activity{true});
}

void UIActivityIndicatorView::stopAnimating()
{
    _animating = false;
    Process::current().events().record(Events::Activity{false});
}
