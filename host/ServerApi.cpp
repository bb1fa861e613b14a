// The JSON API of `serve`: what the screen shows, the events, tab sessions, the user's gestures,
// the pages' addresses and search.

#include "frame/NIMPageCatalog.h"
#include "host/JsonValue.h"
#include "host/ServerImpl.h"
#include "host/SettingsBackup.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>

namespace {

using Json = nlohmann::ordered_json;
using namespace ServerRequests;
using Kind = CommandError::Kind;

/// The longest a request for events waits for one to happen, and how many may wait at once (each
/// holds a worker; more are answered at once).
constexpr double kMaxEventWaitSeconds = 30;
constexpr int kMaxEventWaiters = 8;
/// How deeply a request body's arrays and objects may nest; deeper bodies are refused before they
/// are parsed, so that no recursive conversion can run out of stack.
constexpr std::size_t kMaxJsonNesting = 256;

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
            throw CommandError("\"" + field + "\" is out of range");
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
        throw CommandError("\"" + field + "\" must be a boolean, a number, a string, an array or an object");
    }
}

const Json& field(const Json& body, const char* name)
{
    auto it = body.find(name);
    if (it == body.end())
        throw CommandError(std::string("missing \"") + name + "\"");
    return *it;
}

std::string stringField(const Json& body, const char* name)
{
    const Json& value = field(body, name);
    if (!value.is_string())
        throw CommandError(std::string("\"") + name + "\" must be a string");
    return value.get<std::string>();
}

double numberField(const Json& body, const char* name)
{
    const Json& value = field(body, name);
    if (!value.is_number() || !std::isfinite(value.get<double>()))
        throw CommandError(std::string("\"") + name + "\" must be a number");
    return value.get<double>();
}

std::size_t indexField(const Json& body, const char* name)
{
    const Json& value = field(body, name);
    if (!value.is_number_integer() || value.get<long long>() < 0)
        throw CommandError(std::string("\"") + name + "\" must be a row index (an integer from 0)");
    return static_cast<std::size_t>(value.get<long long>());
}

std::string sessionIdOf(const HttpRequest& req)
{
    std::string id = req.has_header(kSessionHeader) ? req.get_header_value(kSessionHeader) : req.get_param_value("session");
    if (!id.empty() && !SessionPool::isValidId(id))
        throw CommandError("a session id is 8 to 64 letters, digits, \"-\" or \"_\"");
    return id;
}

}  // namespace

std::string ServerRequests::clientId(const HttpRequest& req)
{
    std::string id = req.get_header_value(kClientHeader);
    return SessionPool::isValidId(id) ? id : std::string();
}

std::uint64_t ServerRequests::numberParameter(const HttpRequest& req, const char* name, std::uint64_t fallback)
{
    if (!req.has_param(name))
        return fallback;
    std::string text = req.get_param_value(name);
    char* end = nullptr;
    errno = 0;
    unsigned long long parsed = std::strtoull(text.c_str(), &end, 10);
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos || *end || errno)
        throw CommandError(std::string("\"") + name + "\" must be an event number");
    return parsed;
}

std::shared_ptr<ServerSession> WebServer::Impl::sessionFor(const HttpRequest& req)
{
    auto session = sessions.find(sessionIdOf(req));
    if (!session)
        throw UnknownSession("this tab's session has ended (the server keeps the " + std::to_string(sessions.limit()) +
                             " most recently used); start a new one");
    return session;
}

namespace {

/// A fingerprint of a state's rows.
std::size_t rowsFingerprint(const nlohmann::ordered_json& rows)
{
    return std::hash<std::string>{}(rows.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace)) | 1;
}

}  // namespace

WebServer::Impl::Json WebServer::Impl::stateOf(ServerSession& tab)
{
    Json state = tab.state();
    state["answer"] = ++_answers;
    if (state["picker"].is_object() && state["page"].is_object())
        tab.sentPickerRows(state["answer"].get<std::uint64_t>(), rowsFingerprint(state["page"]["rows"]));
    return state;
}

WebServer::Impl::Json WebServer::Impl::screenUpdate(ServerSession& tab, std::uint64_t since)
{
    Json body = tab.eventsSince(since);
    body["state"] = stateOf(tab);
    return body;
}

WebServer::Impl::Json WebServer::Impl::parseBody(const HttpRequest& req) const
{
    if (req.body.empty())
        return Json::object();
    std::string type = req.get_header_value("Content-Type");
    if (type.rfind("application/json", 0) != 0)
        throw CommandError("the request body must be JSON (Content-Type: application/json)", Kind::UnsupportedType);
    if (jsonNestingDepth(req.body) > kMaxJsonNesting)
        throw CommandError("the JSON is nested deeper than " + std::to_string(kMaxJsonNesting) + " levels");
    Json body = Json::parse(req.body, nullptr, false);
    if (body.is_discarded())
        throw CommandError("malformed JSON");
    if (!body.is_object())
        throw CommandError("the request body must be a JSON object");
    return body;
}

void WebServer::Impl::command(const HttpRequest& req, HttpResponse& res, const std::function<Json(ServerSession&)>& run,
                              const std::function<void(ServerSession&, Json&)>& shape)
{
    try {
        auto tab = sessionFor(req);
        std::lock_guard lock(tab->mutex);
        if (tab->ended)
            throw UnknownSession("this tab's session has ended; start a new one");
        auto scope = tab->activate();
        std::uint64_t since = numberParameter(req, "since", tab->sequence());
        Json result;
        try {
            result = run(*tab);
        } catch (...) {
            tab->drain();
            tab->changed.notify_all();
            throw;
        }
        tab->drain();
        // The answer below carries every event so far to the page that sent the gesture.
        tab->setAnswered(clientId(req), tab->sequence());
        tab->changed.notify_all();
        if (auto failed = tab->failedWriteSince(since)) {
            Json refusal = screenUpdate(*tab, since);
            refusal["error"] = *failed;
            reply(res, 500, refusal);
            return;
        }
        if (!result.is_object())
            result = Json::object();
        result["ok"] = true;
        result.update(screenUpdate(*tab, since));
        if (shape)
            shape(*tab, result);
        reply(res, 200, result);
    } catch (...) {
        refuse(req, res, std::current_exception());
    }
}

void WebServer::Impl::apiRoutes()
{
    const std::size_t jsonLimit = options.jsonLimit;
    // A gesture with a JSON body, run on the session the request names.
    auto gesture = [this, jsonLimit](const std::string& path, std::function<Json(const Json&, Session&)> run) {
        http.post(path, jsonLimit, [this, run = std::move(run)](const HttpRequest& req, HttpResponse& res) {
            Json body;
            try {
                body = parseBody(req);
            } catch (...) {
                return refuse(req, res, std::current_exception());
            }
            command(req, res, [&](ServerSession& tab) { return run(body, tab.session()); });
        });
    };

    // What the screen shows.
    http.get("/api/state", [this](const HttpRequest& req, HttpResponse& res) {
        try {
            auto tab = sessionFor(req);
            std::lock_guard lock(tab->mutex);
            auto scope = tab->activate();
            tab->drain();
            reply(res, 200, stateOf(*tab));
        } catch (...) {
            refuse(req, res, std::current_exception());
        }
    });

    // GET /api/events: the events numbered above since (and the state with state=1). With wait=S
    // and nothing newer than since, it waits up to S seconds (at most kMaxEventWaitSeconds) for an
    // event that no gesture's answer carried to the page asking (X-Nimbra-Client), so that the
    // revert of the respring button, the end of a respring and another client's gestures reach the
    // screen as they happen, while the page's own tap is drawn once, from its own answer.
    http.get("/api/events", [this](const HttpRequest& req, HttpResponse& res) {
        try {
            std::uint64_t since = numberParameter(req, "since", 0);
            double wait = 0;
            if (req.has_param("wait")) {
                char* end = nullptr;
                std::string text = req.get_param_value("wait");
                wait = std::strtod(text.c_str(), &end);
                if (text.empty() || *end || !std::isfinite(wait) || wait < 0)
                    throw CommandError("\"wait\" must be a number of seconds");
                wait = std::min(wait, kMaxEventWaitSeconds);
            }
            auto tab = sessionFor(req);
            std::unique_lock lock(tab->mutex);
            {
                auto scope = tab->activate();
                tab->drain();
            }
            if (wait > 0 && tab->sequence() == since && ++waiters <= kMaxEventWaiters) {
                auto deadline = std::chrono::steady_clock::now() +
                                std::chrono::duration_cast<std::chrono::steady_clock::duration>(std::chrono::duration<double>(wait));
                // What a gesture's answer carried to this page is not news: it drew it from that answer.
                std::string client = clientId(req);
                auto news = [&] { return closing() || tab->ended || tab->sequence() > std::max(since, tab->answered(client)); };
                // In slices: the end of serving and of the session are signalled without the lock.
                while (!news() && std::chrono::steady_clock::now() < deadline)
                    tab->changed.wait_until(lock, std::min(deadline, std::chrono::steady_clock::now() + std::chrono::milliseconds(200)));
                --waiters;
                if (tab->ended)
                    throw UnknownSession("this tab's session has ended; start a new one");
            } else if (wait > 0 && tab->sequence() == since) {
                --waiters;
            }
            auto scope = tab->activate();
            Json body = tab->eventsSince(since);
            if (req.has_param("state") && req.get_param_value("state") != "0")
                body["state"] = stateOf(*tab);
            reply(res, 200, body);
        } catch (...) {
            refuse(req, res, std::current_exception());
        }
    });

    // A stamp of everything stored: a tab asks for it to learn cheaply whether another tab, a
    // script or another process wrote what it shows.
    http.get("/api/stored", [this](const HttpRequest& req, HttpResponse& res) {
        try {
            auto tab = sessionFor(req);
            std::lock_guard lock(tab->mutex);
            auto scope = tab->activate();
            reply(res, 200, {{"stamp", SettingsBackup::stamp()}});
        } catch (...) {
            refuse(req, res, std::current_exception());
        }
    });

    // A tab starts (or starts afresh) its own session on the root page.
    http.post("/api/session", jsonLimit, [this](const HttpRequest& req, HttpResponse& res) {
        try {
            std::string id = stringField(parseBody(req), "id");
            if (!SessionPool::isValidId(id))
                throw CommandError("a session id is 8 to 64 letters, digits, \"-\" or \"_\"");
            auto tab = sessions.start(id);
            std::lock_guard lock(tab->mutex);
            auto scope = tab->activate();
            Json body = screenUpdate(*tab, 0);
            body["ok"] = true;
            body["session"] = id;
            reply(res, 200, body);
        } catch (...) {
            refuse(req, res, std::current_exception());
        }
    });

    // The address of each page: the last part of its definition's name ("HomeScreenDock").
    http.get("/api/pages", [](const HttpRequest&, HttpResponse& res) {
        Json pages = Json::object();
        for (auto& entry : NIMPageCatalog::all()) {
            const std::string& definition = entry.description().definition;
            if (!definition.empty())
                pages[entry.className] = definition.substr(definition.rfind('/') + 1);
        }
        reply(res, 200, pages);
    });
    http.get("/api/search", [this](const HttpRequest& req, HttpResponse& res) {
        Json results = Json::array();
        for (const SearchIndex::Entry* entry : searchIndex().find(req.get_param_value("q")))
            results.push_back(SearchIndex::toJson(*entry));
        reply(res, 200, {{"results", results}});
    });

    // The user's gestures.
    gesture("/api/open", [](const Json& body, Session& session) {
        session.open(stringField(body, "class"));
        return Json::object();
    });
    gesture("/api/set", [](const Json& body, Session& session) {
        // "level" names a page below the top (0: the root page), as the sidebar's master switch does.
        std::optional<std::size_t> level;
        if (body.contains("level"))
            level = indexField(body, "level");
        session.set(stringField(body, "key"), plistFromJson(field(body, "value"), "value"), level);
        return Json::object();
    });
    gesture("/api/tap", [](const Json& body, Session& session) {
        bool byId = body.contains("id");
        if (byId == body.contains("index"))
            throw CommandError("give either \"id\" or \"index\"");
        if (byId)
            session.tap(stringField(body, "id"));
        else
            session.tapRow(indexField(body, "index"));
        return Json::object();
    });
    gesture("/api/call", [](const Json& body, Session& session) {
        session.call(stringField(body, "name"));
        return Json::object();
    });
    gesture("/api/alert", [](const Json& body, Session& session) {
        session.alert(stringField(body, "title"));
        return Json::object();
    });
    // A pick in an app picker answers only the rows it changed when the page says which state it
    // drew (?drawn=ANSWER) and that state's rows are the session's rows before the pick: an app
    // list is long, and a pick changes one or two of its rows. The answer's page then holds
    // "rowsChanged": {"base": ANSWER, "rows": [[INDEX, ROW], ...]} instead of "rows".
    http.post("/api/pick", jsonLimit, [this](const HttpRequest& req, HttpResponse& res) {
        Json body;
        std::optional<std::uint64_t> drawn;
        try {
            body = parseBody(req);
            if (req.has_param("drawn"))
                drawn = numberParameter(req, "drawn", 0);
        } catch (...) {
            return refuse(req, res, std::current_exception());
        }
        Json before;  // the rows the page drew, when they are the session's rows before the pick
        command(
            req, res,
            [&](ServerSession& tab) {
                const Json& identifiers = field(body, "bundleIDs");
                if (!identifiers.is_array())
                    throw CommandError("\"bundleIDs\" must be an array of bundle identifiers");
                std::vector<std::string> list;
                for (auto& identifier : identifiers) {
                    if (!identifier.is_string())
                        throw CommandError("\"bundleIDs\" must be an array of bundle identifiers");
                    list.push_back(identifier.get<std::string>());
                }
                if (std::size_t sent = drawn ? tab.sentPickerRows(*drawn) : 0) {
                    Json state = tab.state();
                    if (state["page"].is_object() && rowsFingerprint(state["page"]["rows"]) == sent)
                        before = std::move(state["page"]["rows"]);
                }
                tab.session().pick(list);
                return Json::object();
            },
            [&](ServerSession&, Json& answer) {
                Json& page = answer["state"]["page"];
                if (!before.is_array() || !page.is_object() || !page["rows"].is_array() || page["rows"].size() != before.size())
                    return;
                Json changed = Json::array();
                const Json& rows = page["rows"];
                for (std::size_t i = 0; i < rows.size(); ++i)
                    if (rows[i] != before[i])
                        changed.push_back(Json::array({i, rows[i]}));
                page.erase("rows");
                page["rowsChanged"] = {{"base", *drawn}, {"rows", std::move(changed)}};
            });
    });
    gesture("/api/removeimage", [](const Json& body, Session& session) {
        session.removeImageAt(indexField(body, "index"));
        return Json::object();
    });
    gesture("/api/cancel", [](const Json&, Session& session) {
        session.cancel();
        return Json::object();
    });
    gesture("/api/back", [](const Json&, Session& session) {
        session.back();
        return Json::object();
    });
    gesture("/api/reload", [](const Json&, Session& session) {
        session.reload();
        return Json::object();
    });
    gesture("/api/scroll", [](const Json& body, Session& session) {
        session.scroll(numberField(body, "y"));
        return Json::object();
    });
    gesture("/api/button", [](const Json&, Session& session) {
        session.tapBarButton();
        return Json::object();
    });
    gesture("/api/relaunch", [](const Json&, Session& session) {
        session.relaunch();
        return Json::object();
    });
    gesture("/api/move", [](const Json& body, Session& session) {
        session.move(indexField(body, "from"), indexField(body, "to"));
        return Json::object();
    });
}
