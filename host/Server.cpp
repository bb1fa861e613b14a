#include "host/Server.h"

#include "host/JsonValue.h"
#include "host/ServerImpl.h"
#include "host/SettingsBackup.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <stdexcept>

namespace {

using Json = nlohmann::ordered_json;

/// The HTTP status of a refused command's kind.
int statusOf(CommandError::Kind kind)
{
    switch (kind) {
    case CommandError::Kind::NotFound:
        return 404;
    case CommandError::Kind::TooLarge:
        return 413;
    case CommandError::Kind::UnsupportedType:
        return 415;
    case CommandError::Kind::Forbidden:
        return 403;
    case CommandError::Kind::Refused:
        break;
    }
    return 400;
}

}  // namespace

void WebServer::Impl::reply(HttpResponse& res, int status, const Json& body)
{
    res.status = status;
    res.set_content(body.dump(-1, ' ', false, Json::error_handler_t::replace), "application/json; charset=utf-8");
}

void WebServer::Impl::refuse(const HttpRequest& req, HttpResponse& res, std::exception_ptr failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (const UnknownSession& error) {
        reply(res, 410, {{"error", error.what()}, {"session", "unknown"}});
    } catch (const CommandError& error) {
        reply(res, statusOf(error.kind()), {{"error", error.what()}});
    } catch (const BackupError& error) {
        reply(res, 400, {{"error", error.what()}});
    } catch (const std::exception& error) {
        std::cerr << "nimbra-prefs: " << req.method << ' ' << req.path << ": " << error.what() << std::endl;
        reply(res, 500, {{"error", std::string("internal error: ") + error.what()}});
    }
}

WebServer::Impl::Impl(Session::Options sessionOptions, Options serverOptions)
    : options(std::move(serverOptions))
    , sessions((sessionOptions.clock = MainQueue::Clock::Real, sessionOptions), options.sessionLimit,
               {options.eventHistory, options.eventHistoryBytes})
    , http(options.connections)
    , _resources(sessionOptions.resources)
{

    http.setDefaultHeaders({
        {"X-Content-Type-Options", "nosniff"},
        {"X-Frame-Options", "DENY"},
        {"Referrer-Policy", "no-referrer"},
        {"Cross-Origin-Resource-Policy", "same-origin"},
        {"Content-Security-Policy",
         "default-src 'self'; img-src 'self' blob: data:; object-src 'none'; base-uri 'none'; "
         "form-action 'none'; frame-ancestors 'none'"},
    });
    http.setRefusal([](int status, const std::string& message) {
        HttpResponse res;
        reply(res, status, {{"error", message}});
        return res;
    });
    // Only this server's own pages may send requests: the Host is the loopback address and port
    // served, and the Origin, when given, is one of them too. Refused before any body is read.
    http.setGuard([this](const HttpRequest& req) -> std::optional<HttpResponse> {
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
        std::optional<std::string> refused;
        if (req.get_header_value_count("Host") != 1 || !hostOk(req.get_header_value("Host")))
            refused = "requests must be addressed to 127.0.0.1:" + portText + " or localhost:" + portText;
        else if (req.has_header("Origin")) {
            std::string origin = req.get_header_value("Origin");
            if (req.get_header_value_count("Origin") != 1 || origin.rfind("http://", 0) != 0 || !hostOk(origin.substr(7)))
                refused = "cross-origin requests are refused";
        }
        if (!refused)
            return std::nullopt;
        HttpResponse res;
        reply(res, 403, {{"error", *refused}});
        return res;
    });
    fileRoutes();
    apiRoutes();
    uploadRoutes();
}

WebServer::Impl::~Impl()
{
    if (_searchBuilder.joinable())
        _searchBuilder.join();
}

const SearchIndex& WebServer::Impl::searchIndex()
{
    std::call_once(_searchBuilt, [&] { _search.emplace(_resources); });
    return *_search;
}

/// Runs what fell due on every session's main queue (the respring button's revert, the end of a
/// respring). A session busy with a gesture is left for the next turn: its gesture's answer
/// carries what happened, and no tab waits for another.
void WebServer::Impl::tick()
{
    std::unique_lock wait(_tickMutex);
    auto interval = std::chrono::duration<double>(options.tickSeconds);
    while (!_tickWake.wait_for(wait, interval, [this] { return _stopping; })) {
        wait.unlock();
        for (auto& tab : sessions.all()) {
            std::unique_lock lock(tab->mutex, std::try_to_lock);
            if (!lock)
                continue;
            try {
                auto scope = tab->activate();
                std::uint64_t before = tab->sequence();
                tab->session().tick();
                tab->drain();
                if (tab->sequence() != before)
                    tab->changed.notify_all();
            } catch (const std::exception& error) {
                std::cerr << "nimbra-prefs: " << error.what() << std::endl;
            }
        }
        wait.lock();
    }
}

bool WebServer::Impl::run()
{
    _closing = false;
    {
        std::lock_guard lock(_tickMutex);
        _stopping = false;
    }
    _ticker = std::thread([this] { tick(); });
    // The search index is built a moment after start-up, once the first screen has been answered,
    // so that it does not compete with it; a search before it is ready builds it or waits for it.
    _searchBuilder = std::thread([this] {
        std::unique_lock wait(_tickMutex);
        if (!_tickWake.wait_for(wait, std::chrono::seconds(1), [this] { return _stopping; })) {
            wait.unlock();
            searchIndex();
        }
    });
    bool served = http.run();
    {
        std::lock_guard lock(_tickMutex);
        _stopping = true;
    }
    _tickWake.notify_all();
    _ticker.join();
    _searchBuilder.join();
    return served;
}

void WebServer::Impl::stop()
{
    // Requests waiting for events answer at once.
    _closing = true;
    for (auto& tab : sessions.all())
        tab->changed.notify_all();
    http.stop();
}

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
    _impl->port = _impl->http.bind("127.0.0.1", requested);
    return _impl->port;
}

std::string WebServer::address() const
{
    return "http://127.0.0.1:" + std::to_string(_impl->port) + "/";
}

bool WebServer::run()
{
    return _impl->run();
}

void WebServer::stop()
{
    _impl->stop();
}
