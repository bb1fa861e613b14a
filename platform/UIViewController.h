#pragma once
// View controllers, the navigation stack, modal presentation and alerts.
//
// Recorded events: {"event":"push","class":...}, {"event":"pop","class":...},
// {"event":"alert","title":...,"message":...,"actions":[{"title":...,"style":...}]} when an alert
// is presented, {"event":"present","class":...} for any other presented controller and
// {"event":"dismiss","class":...}.

#include "platform/Events.h"
#include "platform/UIKit.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

class UINavigationController;

class UIViewController : public NSObject {
public:
    UIViewController();

    /// The controller's view, made on first use (375 x 667 points, as a phone's screen): loadView,
    /// then viewDidLoad.
    std::shared_ptr<UIView> view();
    void loadViewIfNeeded() { view(); }
    bool isViewLoaded() const { return _view != nullptr; }
    virtual void loadView();
    virtual void viewDidLoad() {}
    virtual void viewWillAppear(bool animated) { (void)animated; }

    /// Adds what a push of this controller reports beyond its class (the app picker its store).
    virtual void describePush(Events::Push& event) const { (void)event; }

    UINavigationItem& navigationItem() { return _navigationItem; }
    std::shared_ptr<UINavigationController> navigationController() const { return _navigationController.lock(); }
    void setNavigationController(const std::shared_ptr<UINavigationController>& controller) { _navigationController = controller; }

    /// Presents modally: from the navigation controller when there is one, else from this controller.
    void presentViewController(std::shared_ptr<UIViewController> controller, bool animated,
                               std::function<void()> completion = {});
    /// Dismisses what this controller (or its navigation controller) presents; the completion runs
    /// once it is gone.
    void dismissViewControllerAnimated(bool animated, std::function<void()> completion = {});
    /// The controller presented on top, if any.
    std::shared_ptr<UIViewController> presentedViewController() const;

    int overrideUserInterfaceStyle() const { return _overrideUserInterfaceStyle; }

protected:
    std::shared_ptr<UIView> _view;

private:
    UINavigationItem _navigationItem;
    std::weak_ptr<UINavigationController> _navigationController;
    std::shared_ptr<UIViewController> _presented;
    int _overrideUserInterfaceStyle = 0;
};

class UINavigationController : public UIViewController {
public:
    const std::vector<std::shared_ptr<UIViewController>>& viewControllers() const { return _stack; }
    std::shared_ptr<UIViewController> topViewController() const { return _stack.empty() ? nullptr : _stack.back(); }

    /// Pushes a controller: it joins the stack, learns its navigation controller, loads its view
    /// (loadView, viewDidLoad) and appears (viewWillAppear:).
    void pushViewController(const std::shared_ptr<UIViewController>& controller, bool animated);
    /// Pops the top controller (never the last one); the popped controller or nullptr.
    std::shared_ptr<UIViewController> popViewControllerAnimated(bool animated);
    /// Empties the stack (a fresh launch of the app).
    void reset();

private:
    std::vector<std::shared_ptr<UIViewController>> _stack;
};

enum class UIAlertActionStyle { Default = 0, Cancel = 1, Destructive = 2 };

struct UIAlertAction {
    std::string title;
    UIAlertActionStyle style = UIAlertActionStyle::Default;
    std::function<void()> handler;
};

class UIAlertController : public UIViewController {
public:
    explicit UIAlertController(std::string title = {}, std::string message = {});
    static std::shared_ptr<UIAlertController> alertControllerWithTitle(std::string title, std::string message);

    const std::string& title() const { return _title; }
    const std::string& message() const { return _message; }
    const std::vector<UIAlertAction>& actions() const { return _actions; }
    void addAction(UIAlertAction action) { _actions.push_back(std::move(action)); }

    /// The action titled title, or nullptr. A tap dismisses the alert, then runs the handler.
    const UIAlertAction* actionTitled(const std::string& title) const;

private:
    std::string _title;
    std::string _message;
    std::vector<UIAlertAction> _actions;
};
