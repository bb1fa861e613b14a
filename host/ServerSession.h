#pragma once
// One browser tab's session in `nimbra-prefs serve`: a Session of its own (navigation stack,
// presented alert or picker, respring button, main queue) over the shared root, the numbered
// history of its events, and stable identities for what its screen draws. Each session has a lock
// of its own (`mutex`): a slow gesture of one tab holds up only that tab. Every call needs that
// lock held and the session's process current (see activate()).

#include "host/Session.h"
#include "platform/ProcessScope.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// How many events a session keeps for a screen that is behind, and how many bytes of JSON they may
/// take together (the newest event is always kept).
struct EventHistoryLimits {
    std::size_t count = 4096;
    std::size_t bytes = 8 * 1024 * 1024;
};

class ServerSession {
public:
    using Json = nlohmann::ordered_json;

    /// Opens the bundle's root page in a new session.
    ServerSession(Session::Options options, EventHistoryLimits limits);
    ~ServerSession();
    ServerSession(const ServerSession&) = delete;
    ServerSession& operator=(const ServerSession&) = delete;

    /// Held for every call below; `changed` is signalled (with it held) when the history grows.
    std::mutex mutex;
    std::condition_variable changed;
    /// Set when the pool dropped the session: requests still holding it answer that it ended.
    std::atomic<bool> ended = false;

    Session& session() { return *_session; }
    /// Makes the session's process current until the returned scope ends.
    [[nodiscard]] std::unique_ptr<ProcessScope> activate();

    /// Moves what the session recorded into the numbered history.
    void drain();
    /// The number of the last event.
    std::uint64_t sequence() const { return _sequence; }
    /// The number of the last event a gesture's answer carried to the loaded page named client (0
    /// for "" or a page not among the last kAnsweredClients to send a gesture).
    std::uint64_t answered(const std::string& client) const;
    /// Records that a gesture's answer carried every event up to sequence to client ("": nobody).
    void setAnswered(const std::string& client, std::uint64_t sequence);
    /// What the screen shows (Session::state) with the sequence number of its last event and the
    /// identities ("uid") of the pages of the stack, the top page and its rows; image rows carry the
    /// stored picture their preview shows.
    Json state();
    /// {"seq","missed","events"}: the events numbered above since (each with its "seq"); missed
    /// when since is behind the kept history or ahead of this session.
    Json eventsSince(std::uint64_t since) const;
    /// The message of a write that did not reach the disk among the events numbered above since;
    /// nothing when every write of those events was stored.
    std::optional<std::string> failedWriteSince(std::uint64_t since) const;

    /// The last states sent showing an app picker: each one's answer number and a fingerprint of
    /// its rows, so that a pick can answer only the rows it changed in the rows a page drew (a page
    /// may not draw every state sent to it: a state that brings it nothing new is not drawn).
    struct SentRows {
        std::uint64_t answer = 0;
        std::size_t fingerprint = 0;
    };
    static constexpr std::size_t kSentRows = 8;
    void sentPickerRows(std::uint64_t answer, std::size_t fingerprint);
    /// The fingerprint of the rows sent with answer; 0 when they are not among the last kept.
    std::size_t sentPickerRows(std::uint64_t answer) const;

    /// When a request last named the session.
    std::chrono::steady_clock::time_point lastUsed() const { return _lastUsed.load(); }
    void touch() { _lastUsed = std::chrono::steady_clock::now(); }

private:
    std::uint64_t identity(const std::shared_ptr<const void>& object);

    std::unique_ptr<Session> _session;
    EventHistoryLimits _limits;
    std::deque<std::pair<std::uint64_t, Json>> _history;
    std::size_t _historyBytes = 0;  // the events of the history, as JSON text
    std::uint64_t _sequence = 0;
    /// The pages that sent the latest gestures, and the last event each answer carried them.
    static constexpr std::size_t kAnsweredClients = 8;
    std::vector<std::pair<std::string, std::uint64_t>> _answered;
    std::map<const void*, std::pair<std::weak_ptr<const void>, std::uint64_t>> _identities;
    std::uint64_t _nextIdentity = 0;
    std::deque<SentRows> _sentRows;
    std::atomic<std::chrono::steady_clock::time_point> _lastUsed = std::chrono::steady_clock::now();
};
