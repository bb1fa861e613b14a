#include "host/Server.h"

#include "cells/NimbraImagePicker.h"
#include "host/GuardedHttpServer.h"
#include "host/JsonValue.h"
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
    Session session;
    std::mutex mutex;  // the session, the event history and the row identities
    GuardedHttpServer http;
    int port = 0;

    std::deque<std::pair<std::uint64_t, Json>> history;
    std::size_t historyBytes = 0;  // the events of history, as JSON text
    std::uint64_t sequence = 0;

    // Stable identities of the objects a screen draws (rows, pages), so that a browser can tell a
    // row that moved from a new row with the same label.
    std::map<const void*, std::pair<std::weak_ptr<const void>, std::uint64_t>> identities;
    std::uint64_t nextIdentity = 0;

    fs::path uploads;
    std::uint64_t uploadCount = 0;

    std::thread ticker;
    std::mutex tickMutex;
    std::condition_variable tickWake;
    bool stopping = false;

    Impl(Session::Options sessionOptions, Options serverOptions)
        : options(std::move(serverOptions))
        , session((sessionOptions.clock = MainQueue::Clock::Real, std::move(sessionOptions)))
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

    std::uint64_t identity(const std::shared_ptr<const void>& object)
    {
        auto it = identities.find(object.get());
        if (it != identities.end() && it->second.first.lock() == object)
            return it->second.second;
        if (identities.size() > 8192)
            std::erase_if(identities, [](auto& entry) { return entry.second.first.expired(); });
        identities[object.get()] = {object, ++nextIdentity};
        return nextIdentity;
    }

    /// Moves what the session recorded into the numbered history. Call with the mutex held.
    void drain()
    {
        session.commit();
        Json drained = session.events();
        for (auto& event : drained["events"]) {
            historyBytes += event.dump().size();
            history.emplace_back(++sequence, std::move(event));
            while (history.size() > 1 &&
                   (history.size() > options.eventHistory || historyBytes > options.eventHistoryBytes)) {
                historyBytes -= history.front().second.dump().size();
                history.pop_front();
            }
        }
    }

    /// The session's state with the event sequence number and the identities of the top page and
    /// its rows; image rows carry the stored picture their preview shows.
    Json state()
    {
        Json state = session.state();
        state["seq"] = sequence;
        auto page = session.topPage();
        if (!page || !state["page"].is_object())
            return state;
        state["page"]["uid"] = identity(page);
        auto& rows = state["page"]["rows"];
        auto& specifiers = page->specifiers();
        for (std::size_t i = 0; i < rows.size() && i < specifiers.size(); ++i) {
            rows[i]["uid"] = identity(specifiers[i]);
            auto picker = std::dynamic_pointer_cast<NimbraImagePicker>(page->cellForSpecifier(specifiers[i]));
            if (!picker || !picker->previewContents())
                continue;
            std::string path = std::string(kImageFolder) + picker->fileName() + ".png";
            Json image{{"path", path}, {"version", nullptr}};
            std::error_code ec;
            if (auto host = session.process().hostPath(path)) {
                auto time = fs::last_write_time(*host, ec);
                if (!ec)
                    image["version"] = std::to_string(time.time_since_epoch().count()) + "-" +
                                       std::to_string(fs::file_size(*host, ec));
            }
            rows[i]["image"] = image;
        }
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

    /// Runs one command under the session's lock and answers with its result and the sequence
    /// number of the last event it caused.
    void command(const httplib::Request& req, httplib::Response& res, const std::function<Json(const Json&)>& run,
                 bool jsonBody = true)
    {
        try {
            Json body = jsonBody ? parseBody(req) : Json::object();
            std::lock_guard lock(mutex);
            try {
                Json result = run(body);
                drain();
                if (!result.is_object())
                    result = Json::object();
                result["ok"] = true;
                result["seq"] = sequence;
                reply(res, 200, result);
            } catch (...) {
                drain();
                throw;
            }
        } catch (const HttpError& error) {
            reply(res, error.status, {{"error", error.what()}});
        } catch (const CommandError& error) {
            reply(res, statusFor(error), {{"error", error.what()}});
        } catch (const std::exception& error) {
            std::cerr << "nimbra-prefs: " << req.method << ' ' << req.path << ": " << error.what() << std::endl;
            reply(res, 500, {{"error", std::string("internal error: ") + error.what()}});
        }
    }

    void post(const std::string& path, std::function<Json(const Json&)> run)
    {
        http.Post(path, [this, run = std::move(run)](const httplib::Request& req, httplib::Response& res) {
            command(req, res, run);
        });
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
        http.set_payload_max_length(options.imageLimit);
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
        http.Get("/api/state", [this](const httplib::Request&, httplib::Response& res) {
            std::lock_guard lock(mutex);
            drain();
            reply(res, 200, state());
        });
        http.Get("/api/events", [this](const httplib::Request& req, httplib::Response& res) {
            std::uint64_t since = 0;
            if (req.has_param("since")) {
                std::string text = req.get_param_value("since");
                char* end = nullptr;
                errno = 0;
                unsigned long long parsed = std::strtoull(text.c_str(), &end, 10);
                if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos || *end || errno) {
                    reply(res, 400, {{"error", "\"since\" must be an event number"}});
                    return;
                }
                since = parsed;
            }
            std::lock_guard lock(mutex);
            drain();
            Json events = Json::array();
            for (auto& [number, event] : history) {
                if (number <= since)
                    continue;
                Json numbered = event;
                numbered["seq"] = number;
                events.push_back(std::move(numbered));
            }
            std::uint64_t oldest = history.empty() ? sequence + 1 : history.front().first;
            // Behind the kept history, or ahead of this server (a browser left open over a restart).
            bool missed = since > sequence || since + 1 < oldest;
            Json body{{"seq", sequence}, {"missed", missed}, {"events", events}};
            if (req.has_param("state") && req.get_param_value("state") != "0")
                body["state"] = state();
            reply(res, 200, body);
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
                if (auto host = session.process().hostPath(path))
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
        post("/api/open", [this](const Json& body) {
            session.open(stringField(body, "class"));
            return Json::object();
        });
        post("/api/set", [this](const Json& body) {
            std::string key = stringField(body, "key");
            PlistValue value = plistFromJson(field(body, "value"), "value");
            // A slider hands over a float, whatever number the browser wrote.
            if (auto page = session.topPage(); page && value.kind() == PlistValue::Kind::Integer)
                for (auto& row : page->specifiers())
                    if (row->key() == key && row->cellType() == PSCellType::Slider)
                        value = PlistValue(value.doubleValue());
            session.set(key, value);
            return Json::object();
        });
        post("/api/tap", [this](const Json& body) {
            bool byId = body.contains("id");
            if (byId == body.contains("index"))
                throw HttpError(400, "give either \"id\" or \"index\"");
            if (byId)
                session.tap(stringField(body, "id"));
            else
                session.tapRow(indexField(body, "index"));
            return Json::object();
        });
        post("/api/call", [this](const Json& body) {
            session.call(stringField(body, "name"));
            return Json::object();
        });
        post("/api/alert", [this](const Json& body) {
            session.alert(stringField(body, "title"));
            return Json::object();
        });
        post("/api/pick", [this](const Json& body) {
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
        post("/api/removeimage", [this](const Json& body) {
            session.removeImageAt(indexField(body, "index"));
            return Json::object();
        });
        post("/api/cancel", [this](const Json&) {
            session.cancel();
            return Json::object();
        });
        post("/api/back", [this](const Json&) {
            session.back();
            return Json::object();
        });
        post("/api/reload", [this](const Json&) {
            session.reload();
            return Json::object();
        });
        post("/api/scroll", [this](const Json& body) {
            session.scroll(numberField(body, "y"));
            return Json::object();
        });
        post("/api/button", [this](const Json&) {
            session.tapBarButton();
            return Json::object();
        });
        post("/api/relaunch", [this](const Json&) {
            session.relaunch();
            return Json::object();
        });
        post("/api/move", [this](const Json& body) {
            moveRow(session, indexField(body, "from"), indexField(body, "to"));
            return Json::object();
        });
        http.Post("/api/image", [this](const httplib::Request& req, httplib::Response& res) {
            command(req, res, [&](const Json&) { return image(req); }, false);
        });
    }

    /// The uploaded picture answers the image picker being shown.
    Json image(const httplib::Request& req)
    {
        std::string type = req.get_header_value("Content-Type");
        if (type.rfind("image/", 0) != 0 && type.rfind("application/octet-stream", 0) != 0)
            throw HttpError(415, "upload the picture's bytes (Content-Type: image/... or application/octet-stream)");
        if (req.body.empty())
            throw HttpError(400, "no picture was uploaded");
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

    void tick()
    {
        std::unique_lock wait(tickMutex);
        auto interval = std::chrono::duration<double>(options.tickSeconds);
        while (!tickWake.wait_for(wait, interval, [this] { return stopping; })) {
            wait.unlock();
            {
                std::lock_guard lock(mutex);
                try {
                    session.tick();
                    drain();
                } catch (const std::exception& error) {
                    std::cerr << "nimbra-prefs: " << error.what() << std::endl;
                }
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
        _impl->session.open("NIMRootListController");
        _impl->drain();
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
    _impl->http.stop();
}
