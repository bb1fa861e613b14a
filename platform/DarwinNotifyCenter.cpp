#include "platform/DarwinNotifyCenter.h"

#include "platform/Events.h"
#include "platform/Process.h"

#include <vector>

void DarwinNotifyCenter::postNotification(std::string_view name)
{
    std::string posted(name);
    Process::current().events().record(Events::Notify{posted});
    std::vector<Observer> receivers;
    for (auto& [token, registration] : _observers)
        if (registration.name == posted)
            receivers.push_back(registration.observer);
    for (auto& observer : receivers)
        observer(posted);
}

int DarwinNotifyCenter::addObserver(std::string name, Observer observer)
{
    int token = _nextToken++;
    _observers.emplace(token, Registration{std::move(name), std::move(observer)});
    return token;
}

void DarwinNotifyCenter::removeObserver(int token)
{
    _observers.erase(token);
}

DarwinNotifyCenter& CFNotificationCenterGetDarwinNotifyCenter()
{
    return Process::current().notifyCenter();
}
