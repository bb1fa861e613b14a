#pragma once
// The parts of UIKit the bundle touches: colours, views and their animations, blur views, bar
// buttons and navigation items. Nothing is drawn; what a user would see change is recorded in the
// process's event log.

#include "platform/Events.h"
#include "platform/ObjCRuntime.h"

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct CGRect {
    double x = 0, y = 0, width = 0, height = 0;
    bool operator==(const CGRect&) const = default;
};

struct UIColor {
    double red = 0, green = 0, blue = 0, alpha = 1;

    static UIColor colorWithRed(double r, double g, double b, double a) { return {r, g, b, a}; }
    static UIColor whiteColor() { return {1, 1, 1, 1}; }
    static UIColor clearColor() { return {0, 0, 0, 0}; }
    /// The components as 0 to 255 (rounded), red, green, blue, alpha.
    std::array<int, 4> components255() const;
    bool operator==(const UIColor&) const = default;
};

enum class UIBlurEffectStyle { Regular = 4, SystemThickMaterial = 9 };

class UIView : public NSObject {
public:
    explicit UIView(std::string name = "view", CGRect frame = {});

    /// A short name that the event log uses for the view ("blur", "titleView", ...).
    const std::string& name() const { return _name; }

    CGRect frame() const { return _frame; }
    virtual void setFrame(CGRect frame) { _frame = frame; }
    CGRect bounds() const { return {0, 0, _frame.width, _frame.height}; }

    double alpha() const { return _alpha; }
    void setAlpha(double alpha);
    /// A translation, the only transform the bundle makes.
    std::array<double, 2> translation() const { return _translation; }
    void setTranslation(double x, double y);

    const std::vector<std::shared_ptr<UIView>>& subviews() const { return _subviews; }
    std::shared_ptr<UIView> superview() const { return _superview.lock(); }
    void addSubview(const std::shared_ptr<UIView>& view);
    void removeFromSuperview();

    /// Ends editing of any text field in the view (dismisses the keyboard).
    void endEditing(bool force);

    /// animateWithDuration:delay:options:animations:completion: — the animation block's changes take
    /// effect at once and are recorded as {"event":"animate",...}; the completion runs on the main
    /// queue when delay + duration have passed.
    static void animateWithDuration(double duration, double delay, std::function<void()> animations,
                                    std::function<void(bool finished)> completion = {});

protected:
    virtual void didMoveToSuperview() {}

private:
    /// Inside an animation block, records that this view's property (alpha, translationY) changed.
    void recordChange(Events::Maybe<double> Events::Animate::*property, double value);

    std::string _name;
    CGRect _frame;
    double _alpha = 1;
    std::array<double, 2> _translation{0, 0};
    std::vector<std::shared_ptr<UIView>> _subviews;
    std::weak_ptr<UIView> _superview;
};

/// UIVisualEffectView with a UIBlurEffect. Adding it to a view is recorded as
/// {"event":"blur","style":S,"alpha":A}.
class UIVisualEffectView : public UIView {
public:
    UIVisualEffectView(UIBlurEffectStyle style, CGRect frame);
    UIBlurEffectStyle style() const { return _style; }

protected:
    void didMoveToSuperview() override;

private:
    UIBlurEffectStyle _style;
};

/// A label: its text and font.
class UILabel : public UIView {
public:
    explicit UILabel(std::string text = {})
        : UIView("label")
        , text(std::move(text))
    {
    }
    std::string text;
    double fontSize = 17;
    bool bold = false;
    UIColor textColor{0, 0, 0, 1};
    bool centered = false;
};

/// An image view showing a bundle image (or nothing).
class UIImageView : public UIView {
public:
    explicit UIImageView(std::string imageName = {})
        : UIView("image")
        , imageName(std::move(imageName))
    {
    }
    std::string imageName;
    bool aspectFit = false;
    bool aspectFill = false;
    bool clipsToBounds = false;
};

/// A stack of views laid out along one axis.
class UIStackView : public UIView {
public:
    explicit UIStackView(std::string name = "stack")
        : UIView(std::move(name))
    {
    }
    bool vertical = false;
    double spacing = 0;
    void addArrangedSubview(const std::shared_ptr<UIView>& view) { addSubview(view); }
};

/// A scroll view (the table of a page): its keyboard dismiss mode and vertical content offset.
class UIScrollView : public UIView {
public:
    using UIView::UIView;
    int keyboardDismissMode() const { return _keyboardDismissMode; }
    void setKeyboardDismissMode(int mode) { _keyboardDismissMode = mode; }
    double contentOffsetY() const { return _contentOffsetY; }
    void setContentOffsetY(double y) { _contentOffsetY = y; }

private:
    int _keyboardDismissMode = 0;
    double _contentOffsetY = 0;
};

/// A bar button: its title and tint are drawn at the end of the run-loop turn, recorded as
/// {"event":"button","title":...,"tint":[R,G,B,A]} (tint null when none was set).
class UIBarButtonItem : public NSObject {
public:
    UIBarButtonItem(std::string title, std::weak_ptr<NSObject> target, std::string action);

    const std::string& title() const { return _title; }
    void setTitle(std::string title);
    std::optional<UIColor> tintColor() const { return _tint; }
    void setTintColor(UIColor color);
    /// A custom view item (a button with its own two-line title) keeps its title there.
    bool hasCustomView() const { return _customView; }
    void setCustomView(bool custom) { _customView = custom; }

    /// The button's action, as a tap performs it.
    void tap();
    /// Records the current state (called by Process::commit).
    void commit();

private:
    void changed();

    std::string _title;
    std::optional<UIColor> _tint;
    bool _customView = false;
    std::weak_ptr<NSObject> _target;
    std::string _action;
};

class UINavigationItem {
public:
    std::shared_ptr<UIBarButtonItem> rightBarButtonItem;
    std::shared_ptr<UIView> titleView;
    bool hidesBackButton = false;
    std::string title;
    void setHidesBackButton(bool hides) { hidesBackButton = hides; }
};
