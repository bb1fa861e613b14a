#pragma once
// The sessions of `nimbra-prefs serve`, one per browser tab, named by an id the page makes (kept in
// the tab's sessionStorage and sent with each request). Requests that name no session share the
// main session, which lives as long as the server. At most `limit` tab sessions are kept: making
// one more drops the one least recently used, so a tab left open for days or a script opening
// thousands cannot grow the server without bound. A request naming a dropped or unknown session
// is refused; the page then starts a fresh session on the root page.

#include "host/ServerSession.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

class SessionPool {
public:
    /// Tab sessions kept at most, by default.
    static constexpr std::size_t kDefaultLimit = 32;

    /// The main session is made at once, on the root page.
    SessionPool(Session::Options options, std::size_t limit, EventHistoryLimits history);

    /// Whether id can name a session: 8 to 64 letters, digits, "-" and "_".
    static bool isValidId(std::string_view id);

    /// The session of requests that name none.
    ServerSession& main() { return *_main; }
    /// The session named id ("" is the main one), marked as used now; nullptr when there is none.
    ServerSession* find(std::string_view id);
    /// A fresh session named id on the root page, replacing one of that name; the least recently
    /// used session goes when there are more than the limit.
    ServerSession& start(const std::string& id);
    /// The main session, then every tab session.
    void forEach(const std::function<void(ServerSession&)>& visit);
    std::size_t size() const { return _tabs.size(); }
    std::size_t limit() const { return _limit; }

private:
    Session::Options _options;
    std::size_t _limit;
    EventHistoryLimits _history;
    std::unique_ptr<ServerSession> _main;
    std::map<std::string, std::unique_ptr<ServerSession>, std::less<>> _tabs;
};
