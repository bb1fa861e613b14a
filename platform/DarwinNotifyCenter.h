#pragma once
// CFNotificationCenterGetDarwinNotifyCenter: posts travel to every process that observes the name.
// Here a post is recorded as {"event":"notify","name":...} and reaches the observers added in this
// process at once (deliverImmediately; Darwin notifications carry no object and no user info).

#include <functional>
#include <map>
#include <string>
#include <string_view>

class DarwinNotifyCenter {
public:
    using Observer = std::function<void(const std::string& name)>;

    /// CFNotificationCenterPostNotification(center, name, NULL, NULL, true).
    void postNotification(std::string_view name);
    /// CFNotificationCenterAddObserver; returns a token for removeObserver.
    int addObserver(std::string name, Observer observer);
    void removeObserver(int token);

private:
    struct Registration {
        std::string name;
        Observer observer;
    };
    std::map<int, Registration> _observers;
    int _nextToken = 1;
};

/// The current process's Darwin notify centre.
DarwinNotifyCenter& CFNotificationCenterGetDarwinNotifyCenter();
