#include "host/SessionPool.h"

#include <algorithm>

SessionPool::SessionPool(Session::Options options, std::size_t limit, EventHistoryLimits history)
    : _options(std::move(options))
    , _limit(std::max<std::size_t>(limit, 1))
    , _history(history)
    , _main(std::make_shared<ServerSession>(_options, history))
{
}

bool SessionPool::isValidId(std::string_view id)
{
    if (id.size() < 8 || id.size() > 64)
        return false;
    return std::all_of(id.begin(), id.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
    });
}

std::shared_ptr<ServerSession> SessionPool::find(std::string_view id)
{
    std::shared_ptr<ServerSession> found;
    if (id.empty()) {
        found = _main;
    } else {
        std::lock_guard lock(_mutex);
        if (auto it = _tabs.find(id); it != _tabs.end())
            found = it->second;
    }
    if (found)
        found->touch();
    return found;
}

std::shared_ptr<ServerSession> SessionPool::start(const std::string& id)
{
    // The new session opens its root page outside the pool's lock: other tabs go on meanwhile.
    auto session = std::make_shared<ServerSession>(_options, _history);
    std::vector<std::shared_ptr<ServerSession>> dropped;
    {
        std::lock_guard lock(_mutex);
        if (auto it = _tabs.find(id); it != _tabs.end()) {
            dropped.push_back(it->second);
            _tabs.erase(it);
        }
        while (_tabs.size() >= _limit) {
            auto oldest = std::min_element(_tabs.begin(), _tabs.end(),
                                           [](auto& a, auto& b) { return a.second->lastUsed() < b.second->lastUsed(); });
            dropped.push_back(oldest->second);
            _tabs.erase(oldest);
        }
        _tabs[id] = session;
    }
    for (auto& old : dropped) {
        old->ended = true;
        old->changed.notify_all();
    }
    // A dropped session goes with its last holder: here, or a request still running on it.
    return session;
}

std::vector<std::shared_ptr<ServerSession>> SessionPool::all() const
{
    std::lock_guard lock(_mutex);
    std::vector<std::shared_ptr<ServerSession>> sessions{_main};
    for (auto& [id, session] : _tabs)
        sessions.push_back(session);
    return sessions;
}

std::size_t SessionPool::size() const
{
    std::lock_guard lock(_mutex);
    return _tabs.size();
}
