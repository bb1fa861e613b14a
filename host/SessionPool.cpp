#include "host/SessionPool.h"

#include <algorithm>

SessionPool::SessionPool(Session::Options options, std::size_t limit, EventHistoryLimits history)
    : _options(std::move(options))
    , _limit(std::max<std::size_t>(limit, 1))
    , _history(history)
    , _main(std::make_unique<ServerSession>(_options, history))
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

ServerSession* SessionPool::find(std::string_view id)
{
    ServerSession* found = nullptr;
    if (id.empty()) {
        found = _main.get();
    } else if (auto it = _tabs.find(id); it != _tabs.end()) {
        found = it->second.get();
    }
    if (found)
        found->touch();
    return found;
}

ServerSession& SessionPool::start(const std::string& id)
{
    _tabs.erase(id);
    while (_tabs.size() >= _limit) {
        auto oldest = std::min_element(_tabs.begin(), _tabs.end(),
                                       [](auto& a, auto& b) { return a.second->lastUsed() < b.second->lastUsed(); });
        _tabs.erase(oldest);
    }
    auto& session = _tabs[id];
    session = std::make_unique<ServerSession>(_options, _history);
    return *session;
}

void SessionPool::forEach(const std::function<void(ServerSession&)>& visit)
{
    visit(*_main);
    for (auto& [id, session] : _tabs)
        visit(*session);
}
