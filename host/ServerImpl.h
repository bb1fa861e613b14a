#pragma once
// The inside of `serve` (WebServer), shared by the files that make it up:
//   Server.cpp         start, serving, the clock of the sessions, stop; what is refused and how
//   ServerApi.cpp      the JSON API: state, events, sessions, gestures, pages, search
//   ServerFiles.cpp    the page application's files and the stored pictures
//   ServerUploads.cpp  pictures, backups and restores sent by the browser
//
// Locks: each session has its own (ServerSession::mutex); a request takes only the lock of the
// session it names, for as long as the session works on it. Nothing else is held across a gesture.

#include "host/HttpServer.h"
#include "host/SearchIndex.h"
#include "host/Server.h"
#include "host/SessionPool.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

struct WebServer::Impl {
    using Json = nlohmann::ordered_json;

    Impl(Session::Options session, Options options);
    ~Impl();

    Options options;
    SessionPool sessions;
    HttpServer http;
    int port = 0;

    /// Answers a JSON body with the status.
    static void reply(HttpResponse& res, int status, const Json& body);
    /// Answers a request that failed with what it was: a refusal's kind gives the status.
    static void refuse(const HttpRequest& req, HttpResponse& res, std::exception_ptr failure);

    /// The search index, built on its first use (or beside start-up, whichever comes first).
    const SearchIndex& searchIndex();

    /// The session a request names (its header or "session" parameter; none is the main one).
    std::shared_ptr<ServerSession> sessionFor(const HttpRequest& req);
    /// Runs a gesture on the session the request names, with that session's lock held, and
    /// answers with its result, the events it caused (those above "since" when given) and the
    /// state after it.
    /// shape, when given, may then change the answer (with the lock still held).
    void command(const HttpRequest& req, HttpResponse& res, const std::function<Json(ServerSession&)>& run,
                 const std::function<void(ServerSession&, Json&)>& shape = {});
    /// The JSON object a request's body holds (an empty object for an empty body).
    Json parseBody(const HttpRequest& req) const;
    /// A tab's state, numbered: a screen draws no answer older than one it drew. Needs the tab's lock.
    Json stateOf(ServerSession& tab);
    /// The events numbered above since and the state. Needs the tab's lock.
    Json screenUpdate(ServerSession& tab, std::uint64_t since);
    /// Whether serving is ending: requests waiting for events answer at once.
    bool closing() const { return _closing; }

    void apiRoutes();
    void fileRoutes();
    void uploadRoutes();

    bool run();
    void stop();

private:
    void tick();

    std::atomic<std::uint64_t> _answers = 0;  // states answered so far
    std::atomic<bool> _closing = false;

    std::filesystem::path _resources;  // the page definitions the search index reads
    std::once_flag _searchBuilt;
    std::optional<SearchIndex> _search;
    std::thread _searchBuilder;

    std::thread _ticker;
    std::mutex _tickMutex;
    std::condition_variable _tickWake;
    bool _stopping = false;

public:
    // Requests for events that wait for one, at most kMaxEventWaiters at once.
    std::atomic<int> waiters = 0;
};

namespace ServerRequests {

/// The header (or, for requests that cannot carry one, the "session" parameter) naming a tab's session.
inline constexpr const char* kSessionHeader = "X-Nimbra-Session";
/// The header naming one loaded page of a tab (a new name on every load), so that a request of that
/// page waiting for events is not woken for what its own gestures' answers carried.
inline constexpr const char* kClientHeader = "X-Nimbra-Client";
/// Where picked images are stored on the device; /api/file serves PNG files from here only.
inline constexpr std::string_view kImageFolder = "/var/jb/var/mobile/Library/Nimbra/";

/// The loaded page a request comes from ("" when it does not say, or says it wrongly).
std::string clientId(const HttpRequest& req);
/// The request's parameter name as an event number, or fallback when it has none.
std::uint64_t numberParameter(const HttpRequest& req, const char* name, std::uint64_t fallback);

}  // namespace ServerRequests

/// A request naming a session that ended (dropped as the least recently used) or never began.
class UnknownSession : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};
