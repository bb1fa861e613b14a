#pragma once
// What the device would show or do, in the order it happened: table insertions and removals,
// alerts, bar-button changes, pushes, resprings, spawned programs, terminated apps, posted
// notifications, opened libraries, deleted files. Hosts read and forget it with `drain`.
// An event is a JSON object; code that makes or reads events includes <nlohmann/json.hpp>.

#include <nlohmann/json_fwd.hpp>

#include <vector>

class EventLog {
public:
    using Event = nlohmann::ordered_json;

    EventLog();
    ~EventLog();
    EventLog(const EventLog&) = delete;
    EventLog& operator=(const EventLog&) = delete;

    void record(Event event);
    /// Everything recorded since the last drain, oldest first; the log is empty afterwards.
    std::vector<Event> drain();
    const std::vector<Event>& pending() const { return _events; }

private:
    std::vector<Event> _events;
};
