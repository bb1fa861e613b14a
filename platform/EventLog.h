#pragma once
// What the device would show or do, in the order it happened: table insertions and removals,
// alerts, bar-button changes, pushes, resprings, spawned programs, terminated apps, posted
// notifications, opened libraries, deleted files. Hosts read and forget it with `drain`.

#include <nlohmann/json.hpp>

#include <vector>

class EventLog {
public:
    using Event = nlohmann::ordered_json;

    void record(Event event) { _events.push_back(std::move(event)); }
    /// Everything recorded since the last drain, oldest first; the log is empty afterwards.
    std::vector<Event> drain()
    {
        std::vector<Event> events;
        events.swap(_events);
        return events;
    }
    const std::vector<Event>& pending() const { return _events; }

private:
    std::vector<Event> _events;
};
