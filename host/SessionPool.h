#pragma once
// The sessions of `nimbra-prefs serve`, one per browser tab, named by an id the page makes (kept in
// the tab's sessionStorage and sent with each request). Requests that name no session share the
// main session, which lives as long as the server. At most `limit` tab sessions are kept: making
// one more drops the one least recently used, so a tab left open for days or a script opening
// thousands cannot grow the server without bound. A request naming a dropped or unknown session
// is refused; the page then starts a fresh session on the root page. The pool is safe to use from
// any thread; a session found stays alive while its holder keeps it, even once dropped.

#include "host/ServerSession.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

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
    std::shared_ptr<ServerSession> find(std::string_view id);
    /// A fresh session named id on the root page, replacing one of that name; the least recently
    /// used session goes when there are more than the limit. Dropped sessions are marked ended.
    std::shared_ptr<ServerSession> start(const std::string& id);
    /// The main session, then every tab session (those there when the call began).
    std::vector<std::shared_ptr<ServerSession>> all() const;
    std::size_t size() const;
    std::size_t limit() const { return _limit; }

private:
    Session::Options _options;
    std::size_t _limit;
    EventHistoryLimits _history;
    std::shared_ptr<ServerSession> _main;
    mutable std::mutex _mutex;  // the tabs below
    std::map<std::string, std::shared_ptr<ServerSession>, std::less<>> _tabs;
};
