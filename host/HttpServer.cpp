#include "host/HttpServer.h"

#include <boost/asio.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <iostream>
#include <list>
#include <mutex>
#include <regex>
#include <stdexcept>
#include <strings.h>
#include <thread>

#include <fcntl.h>

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using tcp = asio::ip::tcp;
using Clock = std::chrono::steady_clock;

namespace {

std::chrono::milliseconds toMilliseconds(double seconds)
{
    return std::chrono::milliseconds(static_cast<long long>(std::max(0.0, seconds) * 1000));
}

bool sameName(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

/// Percent-decoding; in a query a '+' is a space.
std::string decoded(std::string_view text, bool query)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hexDigit(text[i + 1]) >= 0 && hexDigit(text[i + 2]) >= 0) {
            out += static_cast<char>(hexDigit(text[i + 1]) * 16 + hexDigit(text[i + 2]));
            i += 2;
        } else if (query && text[i] == '+') {
            out += ' ';
        } else {
            out += text[i];
        }
    }
    return out;
}

std::string sizeText(std::size_t bytes)
{
    if (bytes % (1024 * 1024) == 0)
        return std::to_string(bytes / (1024 * 1024)) + " MiB";
    if (bytes % 1024 == 0)
        return std::to_string(bytes / 1024) + " KiB";
    return std::to_string(bytes) + " bytes";
}

void closeOnExec(int fd)
{
    int flags = ::fcntl(fd, F_GETFD);
    if (flags >= 0)
        ::fcntl(fd, F_SETFD, flags | FD_CLOEXEC);
}

/// Threads for the handlers, started as requests need them (up to a maximum) and kept for the next.
class Workers {
public:
    explicit Workers(std::size_t maximum)
        : _maximum(std::max<std::size_t>(maximum, 1))
    {
    }
    ~Workers() { shutdown(); }

    void submit(std::function<void()> job)
    {
        std::lock_guard lock(_mutex);
        _jobs.push_back(std::move(job));
        if (_jobs.size() > _idle && _threads.size() < _maximum)
            _threads.emplace_back([this] { work(); });
        _wake.notify_one();
    }

    /// Runs the jobs left and ends every thread.
    void shutdown()
    {
        {
            std::lock_guard lock(_mutex);
            _stopping = true;
        }
        _wake.notify_all();
        for (auto& thread : _threads)
            if (thread.joinable())
                thread.join();
        _threads.clear();
    }

private:
    void work()
    {
        std::unique_lock lock(_mutex);
        for (;;) {
            ++_idle;
            _wake.wait(lock, [this] { return !_jobs.empty() || _stopping; });
            --_idle;
            if (_jobs.empty())
                return;
            auto job = std::move(_jobs.front());
            _jobs.pop_front();
            lock.unlock();
            job();
            lock.lock();
        }
    }

    std::size_t _maximum;
    std::mutex _mutex;
    std::condition_variable _wake;
    std::deque<std::function<void()>> _jobs;
    std::vector<std::thread> _threads;
    std::size_t _idle = 0;
    bool _stopping = false;
};

struct Route {
    std::string method;
    std::regex pattern;
    std::size_t bodyLimit;
    HttpServer::Handler handler;
};

/// The most request-head bytes a connection may send (request line and headers).
constexpr std::uint32_t kHeaderLimit = 16 * 1024;
/// A GET may carry a small body, which nothing reads.
constexpr std::size_t kGetBodyLimit = 64 * 1024;
/// After a refusal, what the client still sends (the body it was refused) is read and dropped for
/// at most this long and this much, never kept, so that a client still sending reads the refusal
/// instead of a reset connection.
constexpr double kLingerSeconds = 2;
constexpr std::size_t kLingerBytes = 64 * 1024 * 1024;

}  // namespace

bool HttpRequest::has_header(std::string_view name) const
{
    return get_header_value_count(name) > 0;
}

std::string HttpRequest::get_header_value(std::string_view name) const
{
    for (auto& [key, value] : headers)
        if (sameName(key, name))
            return value;
    return {};
}

std::size_t HttpRequest::get_header_value_count(std::string_view name) const
{
    return static_cast<std::size_t>(std::count_if(headers.begin(), headers.end(), [&](auto& h) { return sameName(h.first, name); }));
}

bool HttpRequest::has_param(std::string_view name) const
{
    return std::any_of(params.begin(), params.end(), [&](auto& p) { return p.first == name; });
}

std::string HttpRequest::get_param_value(std::string_view name) const
{
    for (auto& [key, value] : params)
        if (key == name)
            return value;
    return {};
}

class Connection;

struct HttpServer::Impl {
    ConnectionLimits limits;
    std::vector<Route> routes;
    Guard guard;
    Refusal refusal = [](int status, const std::string& message) {
        HttpResponse response;
        response.status = status;
        response.set_content(message, "text/plain; charset=utf-8");
        return response;
    };
    std::vector<std::pair<std::string, std::string>> defaultHeaders;

    asio::io_context io{1};
    tcp::acceptor acceptor{io};
    std::list<std::shared_ptr<Connection>> connections;  // the I/O thread's only
    Workers workers;
    bool bound = false;
    std::atomic<bool> stopped = false;

    explicit Impl(ConnectionLimits connectionLimits)
        : limits(connectionLimits)
        , workers(std::max<std::size_t>(connectionLimits.workers, 1))
    {
        limits.connections = std::max<std::size_t>(limits.connections, 1);
        limits.requestsPerConnection = std::max<std::size_t>(limits.requestsPerConnection, 1);
    }

    ~Impl()
    {
        workers.shutdown();
        connections.clear();
    }

    void accept();
    void admit(tcp::socket socket);
};

class Connection : public std::enable_shared_from_this<Connection> {
public:
    Connection(HttpServer::Impl& server, tcp::socket socket)
        : _server(server)
        , _stream(std::move(socket))
    {
    }

    void start(std::list<std::shared_ptr<Connection>>::iterator self)
    {
        _self = self;
        awaitRequest();
    }

    /// Whether the connection is waiting for its first request (it may then give way to another).
    bool idle() const { return !_started && _served == 0; }

    void close()
    {
        if (_closed)
            return;
        _closed = true;
        beast::error_code ec;
        _stream.socket().shutdown(tcp::socket::shutdown_both, ec);
        _stream.close();
        _server.connections.erase(_self);
    }

private:
    const ConnectionLimits& limits() const { return _server.limits; }

    void awaitRequest()
    {
        _started = false;
        _checked = false;
        _route = nullptr;
        _parser.emplace();
        _parser->header_limit(kHeaderLimit);
        _parser->body_limit(std::numeric_limits<std::uint64_t>::max());
        if (_buffer.size() > 0) {
            beginRequest();
            return;
        }
        _stream.expires_after(toMilliseconds(limits().idleSeconds));
        _stream.async_read_some(_buffer.prepare(4096), [self = shared_from_this()](beast::error_code ec, std::size_t n) {
            if (ec || n == 0)
                return self->close();
            self->_buffer.commit(n);
            self->beginRequest();
        });
    }

    void beginRequest()
    {
        _started = true;
        _deadline = Clock::now() + toMilliseconds(limits().requestSeconds);
        readMore();
    }

    void readMore()
    {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(_deadline - Clock::now());
        if (left.count() <= 0)
            return close();
        _stream.expires_after(std::min(left, toMilliseconds(limits().readSeconds)));
        http::async_read_some(_stream, _buffer, *_parser,
                              [self = shared_from_this()](beast::error_code ec, std::size_t) { self->onRead(ec); });
    }

    void onRead(beast::error_code ec)
    {
        if (ec == http::error::body_limit)
            return refuse(413, "the request body is larger than " + sizeText(_route ? _route->bodyLimit : 0));
        if (ec == beast::error::timeout || ec == http::error::end_of_stream || ec == asio::error::eof ||
            ec == asio::error::operation_aborted || ec == asio::error::connection_reset)
            return close();
        if (ec == http::error::header_limit)
            return refuse(431, "the request's headers are larger than " + sizeText(kHeaderLimit));
        if (ec && ec.category() == http::make_error_code(http::error::bad_method).category())  // a malformed request
            return refuse(400, "malformed HTTP request");
        if (ec)
            return close();
        if (!_checked && _parser->is_header_done()) {
            _checked = true;
            if (!checkHeader())
                return;
        }
        if (_parser->is_done())
            return dispatch();
        readMore();
    }

    /// The request's line and headers: refused at once, or routed with its body's limit.
    bool checkHeader()
    {
        auto& header = _parser->get();
        _request = HttpRequest();
        _request.method = std::string(header.method_string());
        std::string_view target(header.target().data(), header.target().size());
        std::size_t query = target.find('?');
        _request.path = decoded(target.substr(0, query), false);
        if (query != std::string_view::npos) {
            std::string_view rest = target.substr(query + 1);
            while (!rest.empty()) {
                std::size_t end = rest.find('&');
                std::string_view pair = rest.substr(0, end);
                std::size_t equals = pair.find('=');
                if (!pair.empty())
                    _request.params.emplace_back(decoded(pair.substr(0, equals), true),
                                                 equals == std::string_view::npos ? "" : decoded(pair.substr(equals + 1), true));
                rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
            }
        }
        for (auto& field : header)
            _request.headers.emplace_back(std::string(field.name_string()), std::string(field.value()));

        if (_server.guard)
            if (auto refused = _server.guard(_request)) {
                answer(std::move(*refused), true);
                return false;
            }
        std::smatch match;
        for (auto& route : _server.routes)
            if (route.method == _request.method && std::regex_match(_request.path, match, route.pattern)) {
                _route = &route;
                break;
            }
        if (!_route) {
            refuse(404, "no such endpoint: " + _request.method + " " + _request.path);
            return false;
        }
        for (auto& part : match)
            _request.matches.push_back(part.str());
        std::size_t limit = _route->method == "GET" ? kGetBodyLimit : _route->bodyLimit;
        if (auto declared = _parser->content_length(); declared && *declared > limit) {
            refuse(413, "the request body is larger than " + sizeText(limit));
            return false;
        }
        _parser->body_limit(limit);
        if (sameName(_request.get_header_value("Expect"), "100-continue") && !_parser->is_done()) {
            // The client waits for a go-ahead before it sends the body.
            static const std::string goAhead = "HTTP/1.1 100 Continue\r\n\r\n";
            _stream.expires_after(toMilliseconds(limits().writeSeconds));
            asio::async_write(_stream, asio::buffer(goAhead), [self = shared_from_this()](beast::error_code ec, std::size_t) {
                if (ec)
                    return self->close();
                self->readMore();
            });
            return false;
        }
        return true;
    }

    void dispatch()
    {
        _request.body = std::move(_parser->get().body());
        _version = _parser->get().version();
        bool keepAlive = _parser->get().keep_alive() && ++_served < limits().requestsPerConnection;
        // The handler's time is not the client's.
        _stream.expires_never();
        _server.workers.submit([self = shared_from_this(), route = _route, request = std::move(_request), keepAlive]() mutable {
            HttpResponse response;
            try {
                route->handler(request, response);
            } catch (const std::exception& error) {
                std::cerr << "nimbra-prefs: " << request.method << ' ' << request.path << ": " << error.what() << std::endl;
                response = self->_server.refusal(500, std::string("internal error: ") + error.what());
            } catch (...) {
                response = self->_server.refusal(500, "internal error");
            }
            asio::post(self->_server.io, [self, response = std::move(response), keepAlive]() mutable {
                if (!self->_closed)
                    self->answer(std::move(response), !keepAlive || self->_server.stopped);
            });
        });
    }

    /// Refuses the request being read; what it still sends is never looked at.
    void refuse(int status, const std::string& message) { answer(_server.refusal(status, message), true); }

    void answer(HttpResponse response, bool closeAfter)
    {
        _answer.emplace();
        auto& message = *_answer;
        message.result(static_cast<unsigned>(response.status));
        message.version(_version == 10 ? 10 : 11);
        for (auto& [name, value] : _server.defaultHeaders)
            message.insert(name, value);
        for (auto& [name, value] : response.headers)
            message.set(name, value);
        message.body() = std::move(response.body);
        message.keep_alive(!closeAfter);
        message.prepare_payload();
        // A 304 has no body and says nothing of one: a Content-Length there would have to be the
        // length of the file it stands for.
        if (message.result() == http::status::not_modified)
            message.erase(http::field::content_length);
        _closeAfter = closeAfter;
        _serializer.emplace(message);
        writeMore();
    }

    void writeMore()
    {
        _stream.expires_after(toMilliseconds(limits().writeSeconds));
        http::async_write_some(_stream, *_serializer, [self = shared_from_this()](beast::error_code ec, std::size_t) {
            if (ec)
                return self->close();
            if (!self->_serializer->is_done())
                return self->writeMore();
            self->_serializer.reset();
            self->_answer.reset();
            if (self->_closeAfter)
                return self->linger();
            self->awaitRequest();
        });
    }

    /// Ends the connection after its answer: no more is sent, and what the client still sends is
    /// dropped for a moment, so that closing does not reset the connection before the client read
    /// the answer.
    void linger()
    {
        beast::error_code ec;
        _stream.socket().shutdown(tcp::socket::shutdown_send, ec);
        _lingerUntil = Clock::now() + toMilliseconds(kLingerSeconds);
        _discard = std::make_unique<std::array<char, 65536>>();
        drain();
    }

    void drain()
    {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(_lingerUntil - Clock::now());
        if (left.count() <= 0 || _drained > kLingerBytes)
            return close();
        _stream.expires_after(left);
        _stream.async_read_some(asio::buffer(*_discard), [self = shared_from_this()](beast::error_code ec, std::size_t n) {
            if (ec)
                return self->close();
            self->_drained += n;
            self->drain();
        });
    }

    HttpServer::Impl& _server;
    std::list<std::shared_ptr<Connection>>::iterator _self;
    beast::tcp_stream _stream;
    beast::flat_buffer _buffer{kHeaderLimit + 4096};
    std::optional<http::request_parser<http::string_body>> _parser;
    std::optional<http::response<http::string_body>> _answer;
    std::optional<http::response_serializer<http::string_body>> _serializer;
    HttpRequest _request;
    const Route* _route = nullptr;
    Clock::time_point _deadline;
    Clock::time_point _lingerUntil;
    std::size_t _served = 0;
    std::size_t _drained = 0;
    unsigned _version = 11;
    bool _started = false;
    bool _checked = false;
    bool _closeAfter = false;
    bool _closed = false;
    std::unique_ptr<std::array<char, 65536>> _discard;  // made when a refusal lingers
};

void HttpServer::Impl::accept()
{
    acceptor.async_accept([this](beast::error_code ec, tcp::socket socket) {
        if (stopped || !acceptor.is_open())
            return;
        if (ec) {
            // Out of file descriptors: try again in a moment, once connections have closed.
            auto timer = std::make_shared<asio::steady_timer>(io, std::chrono::milliseconds(10));
            timer->async_wait([this, timer](beast::error_code) { accept(); });
            return;
        }
        admit(std::move(socket));
        accept();
    });
}

void HttpServer::Impl::admit(tcp::socket socket)
{
    closeOnExec(socket.native_handle());
    beast::error_code ec;
    // An answer goes out as its headers, then its body; Nagle's algorithm would hold the body back
    // until the client acknowledged the headers, which it delays.
    socket.set_option(tcp::no_delay(true), ec);
    if (connections.size() >= limits.connections) {
        auto idle = std::find_if(connections.begin(), connections.end(), [](auto& c) { return c->idle(); });
        if (idle == connections.end()) {
            socket.close(ec);
            return;
        }
        auto oldest = *idle;
        oldest->close();
    }
    // The oldest first.
    auto connection = std::make_shared<Connection>(*this, std::move(socket));
    connections.push_back(connection);
    connection->start(std::prev(connections.end()));
}

HttpServer::HttpServer(ConnectionLimits limits)
    : _impl(std::make_unique<Impl>(limits))
{
}

HttpServer::~HttpServer() = default;

const ConnectionLimits& HttpServer::limits() const
{
    return _impl->limits;
}

void HttpServer::get(const std::string& pattern, Handler handler)
{
    _impl->routes.push_back({"GET", std::regex(pattern), 0, std::move(handler)});
}

void HttpServer::post(const std::string& pattern, std::size_t bodyLimit, Handler handler)
{
    _impl->routes.push_back({"POST", std::regex(pattern), bodyLimit, std::move(handler)});
}

void HttpServer::setGuard(Guard guard)
{
    _impl->guard = std::move(guard);
}

void HttpServer::setRefusal(Refusal refusal)
{
    _impl->refusal = std::move(refusal);
}

void HttpServer::setDefaultHeaders(std::vector<std::pair<std::string, std::string>> headers)
{
    _impl->defaultHeaders = std::move(headers);
}

int HttpServer::bind(const std::string& host, int port)
{
    beast::error_code ec;
    auto address = asio::ip::make_address(host, ec);
    if (ec || port < 0 || port > 65535)
        throw std::runtime_error("cannot listen on " + host + ":" + std::to_string(port));
    tcp::endpoint endpoint(address, static_cast<unsigned short>(port));
    auto& acceptor = _impl->acceptor;
    acceptor.open(endpoint.protocol(), ec);
    if (ec)
        throw std::runtime_error("cannot open a socket: " + ec.message());
    closeOnExec(acceptor.native_handle());
    // A port left in TIME_WAIT by an earlier run is taken again; one that another server listens on
    // is not (no SO_REUSEPORT: two servers never share a port).
    acceptor.set_option(tcp::acceptor::reuse_address(true), ec);
    acceptor.bind(endpoint, ec);
    if (ec == asio::error::address_in_use) {
        acceptor.close(ec);
        throw std::runtime_error("the port " + std::to_string(port) + " of " + host +
                                 " is taken: another program listens there (choose another with --port)");
    }
    if (!ec)
        acceptor.listen(asio::socket_base::max_listen_connections, ec);
    if (ec) {
        std::string message = ec.message();
        acceptor.close(ec);
        throw std::runtime_error("cannot listen on " + host + ":" + std::to_string(port) + ": " + message);
    }
    _impl->bound = true;
    return acceptor.local_endpoint().port();
}

bool HttpServer::run()
{
    if (!_impl->bound || _impl->stopped)
        return !_impl->stopped;
    _impl->accept();
    _impl->io.run();
    // Handlers still running end before serving does (their answers are dropped).
    _impl->workers.shutdown();
    return true;
}

void HttpServer::stop()
{
    asio::post(_impl->io, [impl = _impl.get()] {
        impl->stopped = true;
        beast::error_code ec;
        impl->acceptor.close(ec);
        while (!impl->connections.empty()) {
            auto connection = impl->connections.front();
            connection->close();
        }
        impl->io.stop();
    });
    _impl->stopped = true;
}
