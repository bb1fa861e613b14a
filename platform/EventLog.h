#pragma once
// What the device would show or do, in the order it happened: table insertions and removals,
// alerts, bar-button changes, pushes, resprings, spawned programs, terminated apps, posted
// notifications, opened libraries, deleted files. Every kind of event is defined in
// platform/Events.h. Hosts read and forget the log with `drain` and send each event as `json`
// gives it.

#include "platform/Events.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <vector>

class EventLog {
public:
    using Event = Events::Event;

    EventLog();
    ~EventLog();
    EventLog(const EventLog&) = delete;
    EventLog& operator=(const EventLog&) = delete;

    void record(Event event);
    /// Everything recorded since the last drain, oldest first; the log is empty afterwards.
    std::vector<Event> drain();
    const std::vector<Event>& pending() const { return _events; }
    /// Forgets all but the latest `count` events; answers how many it forgot.
    std::size_t keepLatest(std::size_t count);

    /// The event as the hosts send it: {"event": NAME, FIELD: VALUE, ...}, its fields in the order
    /// its kind lists them.
    static nlohmann::ordered_json json(const Event& event);

private:
    std::vector<Event> _events;
};
