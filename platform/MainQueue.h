#pragma once
// The main dispatch queue and its clock. Blocks dispatched with a delay run in order of their due
// time (ties in the order they were dispatched). On the virtual clock time moves only when a host
// advances it; on the real clock it is the monotonic time since the queue was made, and a host runs
// what is due from its own loop. After every block the process commits its pending UI changes.

#include <functional>
#include <map>
#include <utility>

class MainQueue {
public:
    enum class Clock { Virtual, Real };

    explicit MainQueue(Clock clock);

    Clock clock() const { return _clock; }
    /// Seconds since the queue was made.
    double now() const;

    /// dispatch_after on the main queue: runs block `seconds` from now (0 = on the next turn).
    void dispatchAfter(double seconds, std::function<void()> block);

    /// Virtual clock: moves time forward by seconds, running every block that falls due on the way
    /// (also those dispatched meanwhile), each at its own due time. Real clock: runs what is due.
    void advance(double seconds);
    /// Runs every block due at the current time.
    void runDue();
    /// Seconds until the next block is due, or a negative number when nothing is pending.
    double secondsUntilNext() const;
    bool hasPending() const { return !_blocks.empty(); }

private:
    // Time is kept in whole nanoseconds, so that delays add up exactly (2.9 s + 0.1 s is 3 s).
    using Nanoseconds = long long;
    static Nanoseconds fromSeconds(double seconds);
    Nanoseconds nowNanoseconds() const;
    void runUntil(Nanoseconds time);

    Clock _clock;
    Nanoseconds _virtualNow = 0;
    Nanoseconds _origin = 0;
    unsigned long long _sequence = 0;
    std::multimap<std::pair<Nanoseconds, unsigned long long>, std::function<void()>> _blocks;
};
