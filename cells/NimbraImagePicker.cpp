#include "cells/NimbraImagePicker.h"

#include "platform/NSFileManager.h"
#include "platform/Process.h"
#include "storage/NimbraDomains.h"

#include <nlohmann/json.hpp>

NIM_REGISTER_CLASS(NimbraImagePicker, PSTableCell);

void NimbraImagePicker::initWithSpecifier(const std::shared_ptr<PSSpecifier>& specifier, int style)
{
    PSTableCell::initWithSpecifier(specifier, style);
    if (!specifier)
        return;
    _listController = std::dynamic_pointer_cast<PSListController>(specifier->target());
    specifier->setTarget(weak_from_this());
    _fileName = specifier->propertyForKey("fileName").stringValue();
    addAction("chooseImage", [this] { chooseImage(); });
}

CGRect NimbraImagePicker::previewFrame() const
{
    double side = frame().height - 10;
    return CGRect{frame().width - side - 10, 5, side, side};
}

void NimbraImagePicker::didMoveToWindow()
{
    PSTableCell::didMoveToWindow();
    if (_previewImage)
        return;
    _previewImage = std::make_shared<UIImageView>();
    _previewImage->setFrame(previewFrame());
    _previewImage->aspectFill = true;
    _previewImage->clipsToBounds = true;
    addSubview(_previewImage);
    if (NimbraDomains::isPlainFileName(_fileName)) {
        std::string stored = NimbraDomains::pickedImage(_fileName);
        if (auto host = Process::current().hostPath(stored)) {
            _previewContents = UIImage::imageWithContentsOfFile(*host);
            if (_previewContents)
                _previewImage->imageName = stored;
        }
    }
}

void NimbraImagePicker::layoutSubviews()
{
    PSTableCell::layoutSubviews();
    if (_previewImage)
        _previewImage->setFrame(previewFrame());
}

void NimbraImagePicker::chooseImage()
{
    auto page = _listController.lock();
    if (!page || !NimbraDomains::isPlainFileName(_fileName))
        return;
    auto picker = NSObject::make<UIImagePickerController>();
    picker->sourceType = UIImagePickerController::SourceType::PhotoLibrary;
    picker->delegate = std::dynamic_pointer_cast<UIImagePickerControllerDelegate>(shared_from_this());
    page->presentViewController(picker, true);
}

void NimbraImagePicker::imagePickerControllerDidFinishPickingMediaWithInfo(UIImagePickerController& picker,
                                                                         const UIImagePickerInfo& info)
{
    auto spinner = std::make_shared<UIActivityIndicatorView>(picker.view()->bounds());
    picker.view()->addSubview(spinner);
    spinner->startAnimating();
    if (info.originalImage && NimbraDomains::isPlainFileName(_fileName)) {
        std::string stored = NimbraDomains::pickedImage(_fileName);
        // Encoded a row at a time into the file: the picture is never held a second time.
        const UIImage& picture = *info.originalImage;
        if (!NSFileManager::defaultManager().writeAtomically(stored, [&](const AtomicFile::Sink& put) {
                return UIImageWritePNG(picture, put);
            })) {
            // The preview keeps showing the picture that is stored.
            Process::current().events().record(
                {{"event", "error"}, {"message", "could not store the picture " + stored}, {"path", stored}, {"write", true}});
        } else {
            _previewContents = info.originalImage;
            if (_previewImage)
                _previewImage->imageName = stored;
        }
    }
    if (auto page = _listController.lock())
        page->dismissViewControllerAnimated(true, [spinner] { spinner->stopAnimating(); });
}

bool NimbraImagePicker::removeImage()
{
    if (NimbraDomains::isPlainFileName(_fileName)) {
        std::string stored = NimbraDomains::pickedImage(_fileName);
        auto& files = NSFileManager::defaultManager();
        if (!files.removeItemAtPath(stored) && files.fileExistsAtPath(stored))
            return false;
    }
    _previewContents = nullptr;
    if (_previewImage)
        _previewImage->imageName.clear();
    return true;
}

void NimbraImagePicker::imagePickerControllerDidCancel(UIImagePickerController& picker)
{
    (void)picker;
    if (auto page = _listController.lock())
        page->dismissViewControllerAnimated(true);
}
