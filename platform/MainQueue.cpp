#include "platform/MainQueue.h"

#include "platform/Process.h"

#include <chrono>
#include <cmath>

namespace {

long long monotonicNanoseconds()
{
    using namespace std::chrono;
    return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace

MainQueue::Nanoseconds MainQueue::fromSeconds(double seconds)
{
    if (!(seconds > 0))
        return 0;
    if (seconds > 1e9)
        seconds = 1e9;  // some thirty years: later than anything a session lives to see
    return std::llround(seconds * 1e9);
}

MainQueue::MainQueue(Clock clock)
    : _clock(clock)
    , _origin(monotonicNanoseconds())
{
}

MainQueue::Nanoseconds MainQueue::nowNanoseconds() const
{
    return _clock == Clock::Virtual ? _virtualNow : monotonicNanoseconds() - _origin;
}

double MainQueue::now() const
{
    return nowNanoseconds() / 1e9;
}

void MainQueue::dispatchAfter(double seconds, std::function<void()> block)
{
    _blocks.emplace(std::make_pair(nowNanoseconds() + fromSeconds(seconds), _sequence++), std::move(block));
}

void MainQueue::runUntil(Nanoseconds time)
{
    while (!_blocks.empty() && _blocks.begin()->first.first <= time) {
        auto node = _blocks.extract(_blocks.begin());
        if (_clock == Clock::Virtual && node.key().first > _virtualNow)
            _virtualNow = node.key().first;
        node.mapped()();
        if (Process::hasCurrent())
            Process::current().commit();
    }
}

void MainQueue::advance(double seconds)
{
    if (_clock == Clock::Real) {
        runDue();
        return;
    }
    Nanoseconds target = _virtualNow + fromSeconds(seconds);
    runUntil(target);
    _virtualNow = target;
}

void MainQueue::runDue()
{
    runUntil(nowNanoseconds());
}

double MainQueue::secondsUntilNext() const
{
    if (_blocks.empty())
        return -1;
    Nanoseconds wait = _blocks.begin()->first.first - nowNanoseconds();
    return wait > 0 ? wait / 1e9 : 0;
}
