#include "platform/UIKit.h"

#include "platform/Process.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace {

// Changes made inside an animation block, recorded when the block ends.
struct AnimationContext {
    double duration = 0;
    EventLog::Event changes = EventLog::Event::array();
};
// The block running on this thread: a host runs several processes at once, each on whichever
// thread takes its work, and one's block never collects another's changes.
thread_local AnimationContext* runningAnimation = nullptr;

}  // namespace

std::array<int, 4> UIColor::components255() const
{
    auto c = [](double v) { return static_cast<int>(std::lround(std::clamp(v, 0.0, 1.0) * 255)); };
    return {c(red), c(green), c(blue), c(alpha)};
}

UIView::UIView(std::string name, CGRect frame)
    : _name(std::move(name))
    , _frame(frame)
{
}

void UIView::recordChange(const char* property, double value)
{
    if (runningAnimation)
        runningAnimation->changes.push_back({{"view", _name}, {property, value}});
}

void UIView::setAlpha(double alpha)
{
    _alpha = alpha;
    recordChange("alpha", alpha);
}

void UIView::setTranslation(double x, double y)
{
    _translation = {x, y};
    recordChange("translationY", y);
}

void UIView::addSubview(const std::shared_ptr<UIView>& view)
{
    if (!view)
        return;
    view->removeFromSuperview();
    _subviews.push_back(view);
    view->_superview = std::static_pointer_cast<UIView>(shared_from_this());
    view->didMoveToSuperview();
}

void UIView::removeFromSuperview()
{
    auto parent = _superview.lock();
    if (!parent)
        return;
    auto& siblings = parent->_subviews;
    siblings.erase(std::remove_if(siblings.begin(), siblings.end(), [this](auto& v) { return v.get() == this; }),
                   siblings.end());
    _superview.reset();
}

void UIView::endEditing(bool force)
{
    Process::current().events().record({{"event", "endEditing"}, {"force", force}});
}

void UIView::animateWithDuration(double duration, double delay, std::function<void()> animations,
                                 std::function<void(bool)> completion)
{
    AnimationContext context{duration};
    AnimationContext* outer = runningAnimation;
    runningAnimation = &context;
    if (animations)
        animations();
    runningAnimation = outer;
    for (auto& change : context.changes) {
        EventLog::Event event{{"event", "animate"}};
        for (auto& [property, value] : change.items())
            event[property] = value;
        event["duration"] = duration;
        Process::current().events().record(std::move(event));
    }
    if (completion)
        Process::current().mainQueue().dispatchAfter(delay + duration, [completion] { completion(true); });
}

UIVisualEffectView::UIVisualEffectView(UIBlurEffectStyle style, CGRect frame)
    : UIView("blur", frame)
    , _style(style)
{
}

void UIVisualEffectView::didMoveToSuperview()
{
    Process::current().events().record(
        {{"event", "blur"}, {"style", static_cast<int>(_style)}, {"alpha", alpha()}});
}

UIBarButtonItem::UIBarButtonItem(std::string title, std::weak_ptr<NSObject> target, std::string action)
    : _title(std::move(title))
    , _target(std::move(target))
    , _action(std::move(action))
{
}

void UIBarButtonItem::changed()
{
    if (Process::hasCurrent())
        Process::current().setNeedsCommit(std::static_pointer_cast<UIBarButtonItem>(shared_from_this()));
}

void UIBarButtonItem::setTitle(std::string title)
{
    _title = std::move(title);
    changed();
}

void UIBarButtonItem::setTintColor(UIColor color)
{
    _tint = color;
    changed();
}

void UIBarButtonItem::tap()
{
    if (auto target = _target.lock())
        target->performSelector(_action);
}

void UIBarButtonItem::commit()
{
    EventLog::Event tint = nullptr;
    if (_tint) {
        auto c = _tint->components255();
        tint = {c[0], c[1], c[2], c[3]};
    }
    Process::current().events().record({{"event", "button"}, {"title", _title}, {"tint", tint}});
}
