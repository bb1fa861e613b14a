#include "platform/EventLog.h"

#include <nlohmann/json.hpp>

#include <utility>

EventLog::EventLog() = default;
EventLog::~EventLog() = default;

void EventLog::record(Event event)
{
    _events.push_back(std::move(event));
}

std::vector<EventLog::Event> EventLog::drain()
{
    std::vector<Event> events;
    events.swap(_events);
    return events;
}
