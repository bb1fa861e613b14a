#include "host/Server.h"

#include "frame/NIMPageCatalog.h"
#include "host/GuardedHttpServer.h"
#include "host/JsonValue.h"
#include "host/SearchIndex.h"
#include "host/SessionPool.h"
#include "host/SettingsBackup.h"
#include "platform/NSFileManager.h"
#include "platform/PSListController.h"

#include <httplib.h>
#include <stb/stb_image.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <iostream>
#include <map>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using Json = nlohmann::ordered_json;

/// A request refused before it reaches the session.
class HttpError : public std::runtime_error {
public:
    HttpError(int status, const std::string& message)
        : std::runtime_error(message)
        , status(status)
    {
    }
    int status;
};

/// A request naming a session that ended (dropped as the least recently used) or never began.
class UnknownSession : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The header (or, for requests that cannot carry one, the "session" parameter) naming a tab's session.
constexpr const char* kSessionHeader = "X-Nimbra-Session";
/// The header naming one loaded page of a tab (a new name on every load), so that a request of that
/// page waiting for events is not woken for what its own gestures' answers carried.
constexpr const char* kClientHeader = "X-Nimbra-Client";
/// The longest a request for events waits for one to happen, and how many may wait at once (each
/// holds a connection and a worker; more are answered at once).
constexpr double kMaxEventWaitSeconds = 30;
constexpr int kMaxEventWaiters = 8;

/// Where picked images are stored on the device; /api/file serves PNG files from here only.
constexpr std::string_view kImageFolder = "/var/jb/var/mobile/Library/Nimbra/";
/// The largest picture an upload may decode to (a 48-megapixel photo fits).
constexpr long long kMaxImagePixels = 64LL * 1024 * 1024;
/// How deeply a request body's arrays and objects may nest; deeper bodies are refused before they
/// are parsed, so that no recursive conversion can run out of stack.
constexpr std::size_t kMaxJsonNesting = 256;

void reply(httplib::Response& res, int status, const Json& body)
{
    res.status = status;
    res.set_content(body.dump(-1, ' ', false, Json::error_handler_t::replace), "application/json; charset=utf-8");
}

std::string sizeText(std::size_t bytes)
{
    if (bytes % (1024 * 1024) == 0)
        return std::to_string(bytes / (1024 * 1024)) + " MiB";
    return std::to_string(bytes / 1024) + " KiB";
}

/// A value the user gave, as the property list stores it. JSON null has no property-list form.
PlistValue plistFromJson(const Json& value, const std::string& field)
{
    switch (value.type()) {
    case Json::value_t::boolean:
        return PlistValue(value.get<bool>());
    case Json::value_t::number_integer:
        return PlistValue(value.get<long long>());
    case Json::value_t::number_unsigned:
        if (value.get<unsigned long long>() > static_cast<unsigned long long>(INT64_MAX))
            throw HttpError(400, "\"" + field + "\" is out of range");
        return PlistValue(static_cast<long long>(value.get<unsigned long long>()));
    case Json::value_t::number_float:
        return PlistValue(value.get<double>());
    case Json::value_t::string:
        return PlistValue(value.get<std::string>());
    case Json::value_t::array: {
        PlistArray array;
        for (auto& element : value)
            array.push_back(plistFromJson(element, field));
        return PlistValue(std::move(array));
    }
    case Json::value_t::object: {
        PlistDictionary dictionary;
        for (auto& [key, element] : value.items())
            dictionary.emplace(key, plistFromJson(element, field));
        return PlistValue(std::move(dictionary));
    }
    default:
        throw HttpError(400, "\"" + field + "\" must be a boolean, a number, a string, an array or an object");
    }
}

const Json& field(const Json& body, const char* name)
{
    auto it = body.find(name);
    if (it == body.end())
        throw HttpError(400, std::string("missing \"") + name + "\"");
    return *it;
}

std::string stringField(const Json& body, const char* name)
{
    const Json& value = field(body, name);
    if (!value.is_string())
        throw HttpError(400, std::string("\"") + name + "\" must be a string");
    return value.get<std::string>();
}

double numberField(const Json& body, const char* name)
{
    const Json& value = field(body, name);
    if (!value.is_number() || !std::isfinite(value.get<double>()))
        throw HttpError(400, std::string("\"") + name + "\" must be a number");
    return value.get<double>();
}

std::size_t indexField(const Json& body, const char* name)
{
    const Json& value = field(body, name);
    if (!value.is_number_integer() || value.get<long long>() < 0)
        throw HttpError(400, std::string("\"") + name + "\" must be a row index (an integer from 0)");
    return static_cast<std::size_t>(value.get<long long>());
}

/// A refused command: 404 when what it names does not exist, else 400.
int statusFor(const CommandError& error)
{
    std::string_view message = error.what();
    for (std::string_view missing : {"unknown page controller", "shows no row", "is not available yet"})
        if (message.find(missing) != std::string_view::npos)
            return 404;
    return 400;
}

/// Reordering rows arrives with the session's `move`; until then the endpoint says so.
template <class S>
concept CanMoveRows = requires(S& session, std::size_t index) { session.move(index, index); };

template <class S>
void moveRow(S& session, std::size_t from, std::size_t to)
{
    if constexpr (CanMoveRows<S>)
        session.move(from, to);
    else
        throw HttpError(404, "moving rows is not available");
}

/// A regular file's bytes; nothing for a link, a FIFO, a folder or a file over limit.
std::optional<std::string> readFile(const fs::path& path, std::size_t limit)
{
    return AtomicFile::read(path, limit, AtomicFile::Links::Refuse);
}

const char* contentType(const fs::path& path)
{
    std::string extension = path.extension().string();
    if (extension == ".html")
        return "text/html; charset=utf-8";
    if (extension == ".js" || extension == ".mjs")
        return "text/javascript; charset=utf-8";
    if (extension == ".css")
        return "text/css; charset=utf-8";
    if (extension == ".svg")
        return "image/svg+xml";
    if (extension == ".png")
        return "image/png";
    return "application/octet-stream";
}

}  // namespace

struct WebServer::Impl {
    Options options;
    std::mutex mutex;  // every session, its event history and its row identities
    SessionPool sessions;
    const SearchIndex search;  // built once, read by any thread
    GuardedHttpServer http;
    int port = 0;

    // Requests for events that wait for one: woken when any session's history grows or on stop.
    std::condition_variable eventsWake;
    int waiters = 0;
    std::uint64_t answers = 0;  // states answered so far
    bool closing = false;  // stop() was called: waiting requests answer at once

    fs::path uploads;
    std::uint64_t uploadCount = 0;

    std::thread ticker;
    std::mutex tickMutex;
    std::condition_variable tickWake;
    bool stopping = false;

    Impl(Session::Options sessionOptions, Options serverOptions)
        : options(std::move(serverOptions))
        , sessions((sessionOptions.clock = MainQueue::Clock::Real, sessionOptions), options.sessionLimit,
                   {options.eventHistory, options.eventHistoryBytes})
        , search(sessionOptions.resources)
        , http(options.connections)
    {
        routes();
    }

    ~Impl()
    {
        std::error_code ec;
        if (!uploads.empty())
            fs::remove_all(uploads, ec);
    }

    /// The id of the session a request names ("" for none: the main session).
    static std::string sessionId(const httplib::Request& req)
    {
        std::string id = req.has_header(kSessionHeader) ? req.get_header_value(kSessionHeader) : req.get_param_value("session");
        if (!id.empty() && !SessionPool::isValidId(id))
            throw HttpError(400, "a session id is 8 to 64 letters, digits, \"-\" or \"_\"");
        return id;
    }

    /// The loaded page a request comes from ("" when it does not say, or says it wrongly).
    static std::string clientId(const httplib::Request& req)
    {
        std::string id = req.get_header_value(kClientHeader);
        return SessionPool::isValidId(id) ? id : std::string();
    }

    /// The session a request names. Call with the mutex held.
    ServerSession& sessionFor(const std::string& id)
    {
        ServerSession* session = sessions.find(id);
        if (!session)
            throw UnknownSession("this tab's session has ended (the server keeps the " + std::to_string(sessions.limit()) +
                                 " most recently used); start a new one");
        return *session;
    }

    static std::uint64_t numberParameter(const httplib::Request& req, const char* name, std::uint64_t fallback)
    {
        if (!req.has_param(name))
            return fallback;
        std::string text = req.get_param_value(name);
        char* end = nullptr;
        errno = 0;
        unsigned long long parsed = std::strtoull(text.c_str(), &end, 10);
        if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos || *end || errno)
            throw HttpError(400, std::string("\"") + name + "\" must be an event number");
        return parsed;
    }

    /// The answer that lets a screen draw at once: the events numbered above since and the state.
    Json screenUpdate(ServerSession& tab, std::uint64_t since)
    {
        Json body = tab.eventsSince(since);
        body["state"] = stateOf(tab);
        return body;
    }

    /// A tab's state, numbered: a screen draws no answer older than one it drew. Call with the
    /// mutex held.
    Json stateOf(ServerSession& tab)
    {
        Json state = tab.state();
        state["answer"] = ++answers;
        return state;
    }

    Json parseBody(const httplib::Request& req)
    {
        if (req.body.size() > options.jsonLimit)
            throw HttpError(413, "the request body is larger than " + sizeText(options.jsonLimit));
        if (req.body.empty())
            return Json::object();
        std::string type = req.get_header_value("Content-Type");
        if (type.rfind("application/json", 0) != 0)
            throw HttpError(415, "the request body must be JSON (Content-Type: application/json)");
        if (jsonNestingDepth(req.body) > kMaxJsonNesting)
            throw HttpError(400, "the JSON is nested deeper than " + std::to_string(kMaxJsonNesting) + " levels");
        Json body = Json::parse(req.body, nullptr, false);
        if (body.is_discarded())
            throw HttpError(400, "malformed JSON");
        if (!body.is_object())
            throw HttpError(400, "the request body must be a JSON object");
        return body;
    }

    /// Answers a refused request; anything else is answered by the handler.
    static void refuse(const httplib::Request& req, httplib::Response& res, std::exception_ptr failure)
    {
        try {
            std::rethrow_exception(failure);
        } catch (const HttpError& error) {
            reply(res, error.status, {{"error", error.what()}});
        } catch (const UnknownSession& error) {
            reply(res, 410, {{"error", error.what()}, {"session", "unknown"}});
        } catch (const CommandError& error) {
            reply(res, statusFor(error), {{"error", error.what()}});
        } catch (const BackupError& error) {
            reply(res, 400, {{"error", error.what()}});
        } catch (const std::exception& error) {
            std::cerr << "nimbra-prefs: " << req.method << ' ' << req.path << ": " << error.what() << std::endl;
            reply(res, 500, {{"error", std::string("internal error: ") + error.what()}});
        }
    }

    /// Runs one command on the session the request names, under the lock, and answers with its
    /// result, the events it caused (those numbered above "since" when the request gives it) and
    /// the state after it, so that the screen draws after this one round trip.
    void command(const httplib::Request& req, httplib::Response& res, const std::function<Json(const Json&, ServerSession&)>& run,
                 bool jsonBody = true)
    {
        try {
            Json body = jsonBody ? parseBody(req) : Json::object();
            std::string id = sessionId(req);
            std::lock_guard lock(mutex);
            ServerSession& tab = sessionFor(id);
            auto scope = tab.activate();
            std::uint64_t since = numberParameter(req, "since", tab.sequence());
            Json result;
            try {
                result = run(body, tab);
            } catch (...) {
                tab.drain();
                eventsWake.notify_all();
                throw;
            }
            tab.drain();
            // The answer below carries every event so far to the page that sent the gesture.
            tab.setAnswered(clientId(req), tab.sequence());
            eventsWake.notify_all();
            if (auto failed = tab.failedWriteSince(since)) {
                Json refusal = screenUpdate(tab, since);
                refusal["error"] = *failed;
                reply(res, 500, refusal);
                return;
            }
            if (!result.is_object())
                result = Json::object();
            result["ok"] = true;
            result.update(screenUpdate(tab, since));
            reply(res, 200, result);
        } catch (...) {
            refuse(req, res, std::current_exception());
        }
    }

    void post(const std::string& path, std::function<Json(const Json&, Session&)> run)
    {
        http.Post(path, [this, run = std::move(run)](const httplib::Request& req, httplib::Response& res) {
            command(req, res, [&](const Json& body, ServerSession& tab) { return run(body, tab.session()); });
        });
    }

    /// GET /api/events: the events numbered above since (and the state with state=1). With wait=S and
    /// nothing newer than since, it waits up to S seconds (at most kMaxEventWaitSeconds) for an event
    /// that no gesture's answer carried to the page asking (X-Nimbra-Client), so that the revert of
    /// the respring button, the end of a respring and another client's gestures reach the screen as
    /// they happen, while the page's own tap is drawn once, from its own answer.
    void events(const httplib::Request& req, httplib::Response& res)
    {
        try {
            std::string id = sessionId(req);
            std::uint64_t since = numberParameter(req, "since", 0);
            double wait = 0;
            if (req.has_param("wait")) {
                char* end = nullptr;
                std::string text = req.get_param_value("wait");
                wait = std::strtod(text.c_str(), &end);
                if (text.empty() || *end || !std::isfinite(wait) || wait < 0)
                    throw HttpError(400, "\"wait\" must be a number of seconds");
                wait = std::min(wait, kMaxEventWaitSeconds);
            }
            std::unique_lock lock(mutex);
            ServerSession* tab = &sessionFor(id);
            {
                auto scope = tab->activate();
                tab->drain();
            }
            if (wait > 0 && tab->sequence() == since && waiters < kMaxEventWaiters) {
                ++waiters;
                auto deadline = std::chrono::steady_clock::now() + std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                                                                       std::chrono::duration<double>(wait));
                // What a gesture's answer carried to this page is not news: it drew it from that answer.
                std::string client = clientId(req);
                eventsWake.wait_until(lock, deadline, [&] {
                    tab = sessions.find(id);
                    return closing || !tab || tab->sequence() > std::max(since, tab->answered(client));
                });
                --waiters;
                if (!tab)
                    throw UnknownSession("this tab's session has ended; start a new one");
            }
            auto scope = tab->activate();
            Json body = tab->eventsSince(since);
            if (req.has_param("state") && req.get_param_value("state") != "0")
                body["state"] = stateOf(*tab);
            reply(res, 200, body);
        } catch (...) {
            refuse(req, res, std::current_exception());
        }
    }

    /// Whether the request comes from this server's own pages: the Host is the loopback address
    /// and port served, and the Origin, when given, is one of them too.
    std::optional<std::string> refusal(const httplib::Request& req) const
    {
        std::string portText = std::to_string(port);
        auto hostOk = [&](std::string_view host) {
            for (std::string_view name : {"127.0.0.1", "localhost"}) {
                if (host == std::string(name) + ":" + portText)
                    return true;
                if (port == 80 && host == name)
                    return true;
            }
            return false;
        };
        if (req.get_header_value_count("Host") != 1 || !hostOk(req.get_header_value("Host")))
            return "requests must be addressed to 127.0.0.1:" + portText + " or localhost:" + portText;
        if (req.has_header("Origin")) {
            std::string origin = req.get_header_value("Origin");
            if (req.get_header_value_count("Origin") != 1 || origin.rfind("http://", 0) != 0 || !hostOk(origin.substr(7)))
                return "cross-origin requests are refused";
        }
        return std::nullopt;
    }

    void serveFile(httplib::Response& res, const fs::path& path)
    {
        auto bytes = readFile(path, 16 * 1024 * 1024);
        if (!bytes) {
            reply(res, 404, {{"error", "not found"}});
            return;
        }
        res.set_header("Cache-Control", "no-cache");
        res.set_content(std::move(*bytes), contentType(path));
    }
    void routes()
    {
        http.set_payload_max_length(std::max(options.imageLimit, SettingsBackup::kMaximumSize));
        http.set_default_headers({
            {"X-Content-Type-Options", "nosniff"},
            {"X-Frame-Options", "DENY"},
            {"Referrer-Policy", "no-referrer"},
            {"Cross-Origin-Resource-Policy", "same-origin"},
            {"Content-Security-Policy",
             "default-src 'self'; img-src 'self' blob: data:; object-src 'none'; base-uri 'none'; "
             "form-action 'none'; frame-ancestors 'none'"},
        });

        http.set_pre_routing_handler([this](const httplib::Request& req, httplib::Response& res) {
            if (auto refused = refusal(req)) {
                reply(res, 403, {{"error", *refused}});
                return httplib::Server::HandlerResponse::Handled;
            }
            return httplib::Server::HandlerResponse::Unhandled;
        });
        http.set_error_handler(httplib::Server::HandlerWithResponse([this](const httplib::Request& req, httplib::Response& res) {
            if (!res.body.empty())
                return httplib::Server::HandlerResponse::Unhandled;
            if (res.status == 413)
                reply(res, 413, {{"error", "the request body is larger than " + sizeText(options.imageLimit)}});
            else if (res.status == 404)
                reply(res, 404, {{"error", "no such endpoint: " + req.method + " " + req.path}});
            else if (res.status == 400)
                reply(res, 400, {{"error", "malformed HTTP request (a POST needs a Content-Length)"}});
            else
                reply(res, res.status, {{"error", "the request was refused (HTTP " + std::to_string(res.status) + ")"}});
            return httplib::Server::HandlerResponse::Handled;
        }));
        http.set_exception_handler([](const httplib::Request& req, httplib::Response& res, std::exception_ptr error) {
            std::string message = "unknown error";
            try {
                std::rethrow_exception(error);
            } catch (const std::exception& e) {
                message = e.what();
            } catch (...) {
            }
            std::cerr << "nimbra-prefs: " << req.method << ' ' << req.path << ": " << message << std::endl;
            reply(res, 500, {{"error", "internal error: " + message}});
        });

        // The page application.
        http.Get("/", [this](const httplib::Request&, httplib::Response& res) { serveFile(res, options.web / "index.html"); });
        http.Get(R"(/([A-Za-z0-9_-]+\.(html|js|css|svg|png)))", [this](const httplib::Request& req, httplib::Response& res) {
            serveFile(res, options.web / req.matches[1].str());
        });
        http.Get(R"(/icons/([A-Za-z0-9_-]+\.png))", [this](const httplib::Request& req, httplib::Response& res) {
            serveFile(res, options.icons / req.matches[1].str());
        });

        // What the screen shows.
        http.Get("/api/state", [this](const httplib::Request& req, httplib::Response& res) {
            try {
                std::string id = sessionId(req);
                std::lock_guard lock(mutex);
                ServerSession& tab = sessionFor(id);
                auto scope = tab.activate();
                tab.drain();
                reply(res, 200, stateOf(tab));
            } catch (...) {
                refuse(req, res, std::current_exception());
            }
        });
        http.Get("/api/events", [this](const httplib::Request& req, httplib::Response& res) { events(req, res); });
        // A stamp of everything stored: a tab asks for it to learn cheaply whether another tab, a
        // script or another process wrote what it shows.
        http.Get("/api/stored", [this](const httplib::Request& req, httplib::Response& res) {
            try {
                std::string id = sessionId(req);
                std::lock_guard lock(mutex);
                ServerSession& tab = sessionFor(id);
                auto scope = tab.activate();
                reply(res, 200, {{"stamp", SettingsBackup::stamp()}});
            } catch (...) {
                refuse(req, res, std::current_exception());
            }
        });
        // A tab starts (or starts afresh) its own session on the root page.
        http.Post("/api/session", [this](const httplib::Request& req, httplib::Response& res) {
            try {
                std::string id = stringField(parseBody(req), "id");
                if (!SessionPool::isValidId(id))
                    throw HttpError(400, "a session id is 8 to 64 letters, digits, \"-\" or \"_\"");
                std::lock_guard lock(mutex);
                ServerSession& tab = sessions.start(id);
                auto scope = tab.activate();
                Json body = screenUpdate(tab, 0);
                body["ok"] = true;
                body["session"] = id;
                reply(res, 200, body);
            } catch (...) {
                refuse(req, res, std::current_exception());
            }
        });
        backupRoutes();
        // The address of each page: the last part of its definition's name ("HomeScreenDock").
        http.Get("/api/pages", [](const httplib::Request&, httplib::Response& res) {
            Json pages = Json::object();
            for (auto& entry : NIMPageCatalog::all()) {
                const std::string& definition = entry.description().definition;
                if (!definition.empty())
                    pages[entry.className] = definition.substr(definition.rfind('/') + 1);
            }
            reply(res, 200, pages);
        });
        http.Get("/api/search", [this](const httplib::Request& req, httplib::Response& res) {
            Json results = Json::array();
            for (const SearchIndex::Entry* entry : search.find(req.get_param_value("q")))
                results.push_back(SearchIndex::toJson(*entry));
            reply(res, 200, {{"results", results}});
        });
        http.Get("/api/file", [this](const httplib::Request& req, httplib::Response& res) {
            std::string path = req.get_param_value("path");
            fs::path logical(path);
            // The decoded path as the file system would see it: a NUL would end it early.
            bool plain = path.find('\0') == std::string::npos && path.rfind(kImageFolder, 0) == 0 &&
                         logical.extension() == ".png" && logical.stem() != "" &&
                         logical.lexically_normal() == logical && logical.parent_path().string() + "/" == kImageFolder;
            if (!plain) {
                reply(res, 403, {{"error", "only the stored pictures (" + std::string(kImageFolder) + "NAME.png) are served"}});
                return;
            }
            std::optional<std::string> bytes;
            {
                std::lock_guard lock(mutex);
                if (auto host = sessions.main().session().process().hostPath(path))
                    bytes = readFile(*host, 256 * 1024 * 1024);
            }
            if (!bytes) {
                reply(res, 404, {{"error", "no file at " + path}});
                return;
            }
            res.set_header("Cache-Control", "no-cache");
            res.set_content(std::move(*bytes), "image/png");
        });

        // The user's gestures.
        post("/api/open", [](const Json& body, Session& session) {
            session.open(stringField(body, "class"));
            return Json::object();
        });
        post("/api/set", [](const Json& body, Session& session) {
            std::string key = stringField(body, "key");
            PlistValue value = plistFromJson(field(body, "value"), "value");
            // A slider hands over a float, whatever number the browser wrote.
            if (auto page = session.topPage(); page && value.kind() == PlistValue::Kind::Integer)
                for (auto& row : page->specifiers())
                    if (row->key() == key && row->cellType() == PSCellType::Slider)
                        value = PlistValue(value.doubleValue());
            // "level" names a page below the top (0: the root page), as the sidebar's master switch does.
            std::optional<std::size_t> level;
            if (body.contains("level"))
                level = indexField(body, "level");
            session.set(key, value, level);
            return Json::object();
        });
        post("/api/tap", [](const Json& body, Session& session) {
            bool byId = body.contains("id");
            if (byId == body.contains("index"))
                throw HttpError(400, "give either \"id\" or \"index\"");
            if (byId)
                session.tap(stringField(body, "id"));
            else
                session.tapRow(indexField(body, "index"));
            return Json::object();
        });
        post("/api/call", [](const Json& body, Session& session) {
            session.call(stringField(body, "name"));
            return Json::object();
        });
        post("/api/alert", [](const Json& body, Session& session) {
            session.alert(stringField(body, "title"));
            return Json::object();
        });
        post("/api/pick", [](const Json& body, Session& session) {
            const Json& identifiers = field(body, "bundleIDs");
            if (!identifiers.is_array())
                throw HttpError(400, "\"bundleIDs\" must be an array of bundle identifiers");
            std::vector<std::string> list;
            for (auto& identifier : identifiers) {
                if (!identifier.is_string())
                    throw HttpError(400, "\"bundleIDs\" must be an array of bundle identifiers");
                list.push_back(identifier.get<std::string>());
            }
            session.pick(list);
            return Json::object();
        });
        post("/api/removeimage", [](const Json& body, Session& session) {
            session.removeImageAt(indexField(body, "index"));
            return Json::object();
        });
        post("/api/cancel", [](const Json&, Session& session) {
            session.cancel();
            return Json::object();
        });
        post("/api/back", [](const Json&, Session& session) {
            session.back();
            return Json::object();
        });
        post("/api/reload", [](const Json&, Session& session) {
            session.reload();
            return Json::object();
        });
        post("/api/scroll", [](const Json& body, Session& session) {
            session.scroll(numberField(body, "y"));
            return Json::object();
        });
        post("/api/button", [](const Json&, Session& session) {
            session.tapBarButton();
            return Json::object();
        });
        post("/api/relaunch", [](const Json&, Session& session) {
            session.relaunch();
            return Json::object();
        });
        post("/api/move", [](const Json& body, Session& session) {
            moveRow(session, indexField(body, "from"), indexField(body, "to"));
            return Json::object();
        });
        http.Post("/api/image", [this](const httplib::Request& req, httplib::Response& res) {
            command(req, res, [&](const Json&, ServerSession& tab) { return image(req, tab.session()); }, false);
        });
    }

    /// The uploaded picture answers the image picker being shown.
    Json image(const httplib::Request& req, Session& session)
    {
        std::string type = req.get_header_value("Content-Type");
        if (type.rfind("image/", 0) != 0 && type.rfind("application/octet-stream", 0) != 0)
            throw HttpError(415, "upload the picture's bytes (Content-Type: image/... or application/octet-stream)");
        if (req.body.empty())
            throw HttpError(400, "no picture was uploaded");
        // The server takes bodies as large as a backup; a picture has a limit of its own.
        if (req.body.size() > options.imageLimit)
            throw HttpError(413, "the request body is larger than " + sizeText(options.imageLimit));
        int width = 0, height = 0, components = 0;
        if (req.body.size() > static_cast<std::size_t>(INT32_MAX) ||
            !stbi_info_from_memory(reinterpret_cast<const stbi_uc*>(req.body.data()), static_cast<int>(req.body.size()),
                                   &width, &height, &components))
            throw HttpError(400, "the uploaded file is not a picture");
        if (static_cast<long long>(width) * height > kMaxImagePixels)
            throw HttpError(413, "the picture is too large (" + std::to_string(width) + " x " + std::to_string(height) + " pixels)");
        if (uploads.empty()) {
            std::string pattern = (fs::temp_directory_path() / "nimbra-prefs-uploads-XXXXXX").string();
            if (!mkdtemp(pattern.data()))
                throw std::runtime_error("cannot make a folder for uploads");
            uploads = pattern;
        }
        fs::path file = uploads / ("picture-" + std::to_string(++uploadCount));
        {
            std::ofstream out(file, std::ios::binary);
            out.write(req.body.data(), static_cast<std::streamsize>(req.body.size()));
            if (!out)
                throw std::runtime_error("cannot keep the uploaded picture");
        }
        struct Remove {
            fs::path path;
            ~Remove()
            {
                std::error_code ec;
                fs::remove(path, ec);
            }
        } remove{file};
        try {
            session.image(file);
        } catch (const CommandError& error) {
            if (std::string_view(error.what()).find(file.string()) != std::string_view::npos)
                throw HttpError(400, "the uploaded file is not a picture");
            throw;
        }
        return Json::object();
    }

    /// GET /api/backup downloads a backup of everything stored; POST /api/restore with a backup's
    /// bytes lists what it would change (?dryRun=1) or restores it, after which the tab's session
    /// opens afresh on the root page, as after a respring.
    void backupRoutes()
    {
        http.Get("/api/backup", [this](const httplib::Request& req, httplib::Response& res) {
            try {
                std::lock_guard lock(mutex);
                auto scope = sessions.main().activate();
                std::string bytes = SettingsBackup::collect().data();
                res.set_header("Content-Disposition", "attachment; filename=\"Nimbra Settings.plist\"");
                res.set_header("Cache-Control", "no-store");
                res.set_content(std::move(bytes), "application/x-plist");
            } catch (...) {
                refuse(req, res, std::current_exception());
            }
        });
        http.Post("/api/restore", [this](const httplib::Request& req, httplib::Response& res) {
            command(req, res, [&](const Json&, ServerSession& tab) {
                SettingsBackup backup = SettingsBackup::fromData(req.body);
                if (req.has_param("dryRun") && req.get_param_value("dryRun") != "0")
                    return Json{{"changes", backup.changes()}};
                backup.restore();
                tab.session().relaunch();
                return Json{{"restored", {{"domains", backup.domains().size()}, {"pictures", backup.pictures().size()}}}};
            }, false);
        });
    }

    void tick()
    {
        std::unique_lock wait(tickMutex);
        auto interval = std::chrono::duration<double>(options.tickSeconds);
        while (!tickWake.wait_for(wait, interval, [this] { return stopping; })) {
            wait.unlock();
            {
                std::lock_guard lock(mutex);
                bool happened = false;
                sessions.forEach([&](ServerSession& tab) {
                    try {
                        auto scope = tab.activate();
                        std::uint64_t before = tab.sequence();
                        tab.session().tick();
                        tab.drain();
                        happened = happened || tab.sequence() != before;
                    } catch (const std::exception& error) {
                        std::cerr << "nimbra-prefs: " << error.what() << std::endl;
                    }
                });
                if (happened)
                    eventsWake.notify_all();
            }
            wait.lock();
        }
    }
};

WebServer::WebServer(Session::Options session, Options options)
    : _impl(std::make_unique<Impl>(std::move(session), std::move(options)))
{
}

WebServer::~WebServer()
{
    stop();
}

int WebServer::bind()
{
    int requested = _impl->options.port;
    if (requested < 0 || requested > 65535)
        throw std::runtime_error("the port must be between 0 and 65535");
    bool bound = requested == 0 ? (_impl->port = _impl->http.bind_to_any_port("127.0.0.1")) > 0
                                : _impl->http.bind_to_port("127.0.0.1", requested);
    if (!bound)
        throw std::runtime_error("cannot listen on 127.0.0.1:" + std::to_string(requested) + " (is the port in use?)");
    if (requested != 0)
        _impl->port = requested;
    return _impl->port;
}

std::string WebServer::address() const
{
    return "http://127.0.0.1:" + std::to_string(_impl->port) + "/";
}

bool WebServer::run()
{
    {
        std::lock_guard lock(_impl->mutex);
        _impl->closing = false;
    }
    {
        std::lock_guard lock(_impl->tickMutex);
        _impl->stopping = false;
    }
    _impl->ticker = std::thread([this] { _impl->tick(); });
    bool served = _impl->http.listen_after_bind();
    {
        std::lock_guard lock(_impl->tickMutex);
        _impl->stopping = true;
    }
    _impl->tickWake.notify_all();
    _impl->ticker.join();
    return served;
}

void WebServer::stop()
{
    {
        // Requests waiting for events answer at once.
        std::lock_guard lock(_impl->mutex);
        _impl->closing = true;
    }
    _impl->eventsWake.notify_all();
    _impl->http.stop();
}
