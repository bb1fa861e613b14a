#include "platform/UIViewController.h"

#include "platform/Events.h"
#include "platform/Process.h"

NIM_REGISTER_CLASS(UIViewController, NSObject);
NIM_REGISTER_CLASS(UINavigationController, UIViewController);
NIM_REGISTER_CLASS(UIAlertController, UIViewController);

namespace {

const char* styleName(UIAlertActionStyle style)
{
    switch (style) {
    case UIAlertActionStyle::Cancel: return "cancel";
    case UIAlertActionStyle::Destructive: return "destructive";
    default: return "default";
    }
}

}  // namespace

UIViewController::UIViewController() = default;

std::shared_ptr<UIView> UIViewController::view()
{
    if (!_view) {
        auto keepAlive = weak_from_this().lock();
        loadView();
        viewDidLoad();
    }
    return _view;
}

void UIViewController::loadView()
{
    _view = std::make_shared<UIView>("view", CGRect{0, 0, 375, 667});
}

void UIViewController::presentViewController(std::shared_ptr<UIViewController> controller, bool animated,
                                             std::function<void()> completion)
{
    (void)animated;
    if (auto navigation = navigationController(); navigation && navigation.get() != this) {
        navigation->presentViewController(std::move(controller), animated, std::move(completion));
        return;
    }
    if (!controller)
        return;
    if (_presented) {  // present on top of what is shown
        _presented->presentViewController(std::move(controller), animated, std::move(completion));
        return;
    }
    auto& events = Process::current().events();
    if (auto alert = std::dynamic_pointer_cast<UIAlertController>(controller)) {
        Events::Alert event{alert->title(), alert->message(), {}};
        for (auto& action : alert->actions())
            event.actions.push_back({action.title, styleName(action.style)});
        events.record(std::move(event));
    } else {
        events.record(Events::Present{controller->className()});
    }
    _presented = std::move(controller);
    if (completion)
        completion();
}

std::shared_ptr<UIViewController> UIViewController::presentedViewController() const
{
    if (auto navigation = navigationController(); navigation && navigation.get() != this)
        return navigation->presentedViewController();
    if (_presented) {
        if (auto onTop = _presented->presentedViewController())
            return onTop;
    }
    return _presented;
}

void UIViewController::dismissViewControllerAnimated(bool animated, std::function<void()> completion)
{
    if (auto navigation = navigationController(); navigation && navigation.get() != this) {
        navigation->dismissViewControllerAnimated(animated, std::move(completion));
        return;
    }
    if (_presented && _presented->_presented) {  // the top-most presentation goes first
        _presented->dismissViewControllerAnimated(animated, std::move(completion));
        return;
    }
    if (auto presented = std::move(_presented)) {
        _presented.reset();
        Process::current().events().record(Events::Dismiss{presented->className()});
    }
    if (completion)
        completion();
}

void UINavigationController::pushViewController(const std::shared_ptr<UIViewController>& controller, bool animated)
{
    (void)animated;
    controller->setNavigationController(std::static_pointer_cast<UINavigationController>(shared_from_this()));
    _stack.push_back(controller);
    Events::Push event{.className = controller->className()};
    controller->describePush(event);
    Process::current().events().record(std::move(event));
    controller->loadViewIfNeeded();
    controller->viewWillAppear(animated);
}

std::shared_ptr<UIViewController> UINavigationController::popViewControllerAnimated(bool animated)
{
    (void)animated;
    if (_stack.size() < 2)
        return nullptr;
    auto popped = _stack.back();
    _stack.pop_back();
    Process::current().events().record(Events::Pop{popped->className()});
    _stack.back()->viewWillAppear(animated);
    return popped;
}

void UINavigationController::reset()
{
    _stack.clear();
}

UIAlertController::UIAlertController(std::string title, std::string message)
    : _title(std::move(title))
    , _message(std::move(message))
{
}

std::shared_ptr<UIAlertController> UIAlertController::alertControllerWithTitle(std::string title, std::string message)
{
    return std::make_shared<UIAlertController>(std::move(title), std::move(message));
}

const UIAlertAction* UIAlertController::actionTitled(const std::string& title) const
{
    for (auto& action : _actions)
        if (action.title == title)
            return &action;
    return nullptr;
}
