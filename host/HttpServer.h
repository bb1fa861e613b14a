#pragma once
// The HTTP/1.1 server of `serve`, on Boost.Beast. One thread reads and writes every connection
// (an idle or slow connection holds no thread); each complete request is handed to a small pool
// of worker threads, started as they are needed, whose handler may take its time (a session's
// gesture, a wait for events) without holding up the other connections.
//
// Every connection is timed from its accept: its first request must begin within `idleSeconds`;
// a request (line, headers and body) must arrive whole within `requestSeconds` of its first byte,
// each read waiting at most `readSeconds`; a connection over its time is closed without an answer.
// A body is refused (413) from its declared Content-Length before any of it is read, and so is a
// request whose Host or Origin the guard refuses (403). At most `connections` are open at once:
// one more closes the oldest that has not begun a request, or is itself closed when there is none.

#include "host/ConnectionLimits.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A request as its handler sees it: the path and parameters decoded, the body whole.
struct HttpRequest {
    std::string method;
    /// The decoded path, without its query.
    std::string path;
    std::vector<std::pair<std::string, std::string>> headers;
    std::vector<std::pair<std::string, std::string>> params;
    std::string body;
    /// The parts of the path its route's pattern captured ([0] is the whole path).
    std::vector<std::string> matches;

    bool has_header(std::string_view name) const;
    /// The first value of the header name (any letter case), "" when there is none.
    std::string get_header_value(std::string_view name) const;
    std::size_t get_header_value_count(std::string_view name) const;
    bool has_param(std::string_view name) const;
    std::string get_param_value(std::string_view name) const;
};

struct HttpResponse {
    int status = 200;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;

    void set_header(std::string name, std::string value) { headers.emplace_back(std::move(name), std::move(value)); }
    void set_content(std::string content, std::string type)
    {
        body = std::move(content);
        set_header("Content-Type", std::move(type));
    }
};

class HttpServer {
public:
    using Handler = std::function<void(const HttpRequest&, HttpResponse&)>;
    /// Answers a request from its line and headers alone (its body unread), or lets it through.
    using Guard = std::function<std::optional<HttpResponse>(const HttpRequest&)>;
    /// The answer to a refusal of the server itself (413 over a body limit, 404 for no route,
    /// 400 for a malformed request), from its status and a message.
    using Refusal = std::function<HttpResponse(int status, const std::string& message)>;

    explicit HttpServer(ConnectionLimits limits);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    const ConnectionLimits& limits() const;

    /// Routes: the whole decoded path matches the regular expression pattern. A POST's body may
    /// hold at most bodyLimit bytes.
    void get(const std::string& pattern, Handler handler);
    void post(const std::string& pattern, std::size_t bodyLimit, Handler handler);
    void setGuard(Guard guard);
    void setRefusal(Refusal refusal);
    /// Headers added to every answer.
    void setDefaultHeaders(std::vector<std::pair<std::string, std::string>> headers);

    /// Listens on host:port (0 picks a free port) and returns the port. Throws std::runtime_error
    /// when the port is taken (another server listens there: no two share a port) or cannot be had.
    int bind(const std::string& host, int port);
    /// Serves until stop(); false when it could not serve (not bound).
    bool run();
    /// Ends run() from any thread: the listener and every connection close, handlers running end
    /// on their own and their answers are dropped.
    void stop();

    /// The inside, shared by the files that make it up.
    struct Impl;

private:
    std::unique_ptr<Impl> _impl;
};
