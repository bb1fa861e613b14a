#include "host/GuardedHttpServer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <chrono>
#include <memory>

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

std::chrono::milliseconds toMilliseconds(double seconds)
{
    return std::chrono::milliseconds(static_cast<long long>(std::max(0.0, seconds) * 1000));
}

/// Waits up to `timeout` for `events` on the socket; true when they came.
bool waitFor(int fd, short events, std::chrono::milliseconds timeout)
{
    pollfd entry{fd, events, 0};
    int ready;
    do
        ready = ::poll(&entry, 1, static_cast<int>(timeout.count()));
    while (ready < 0 && errno == EINTR);
    return ready > 0;
}

void addressText(const sockaddr_storage& address, socklen_t length, std::string& ip, int& port)
{
    char host[NI_MAXHOST] = "";
    char service[NI_MAXSERV] = "";
    if (getnameinfo(reinterpret_cast<const sockaddr*>(&address), length, host, sizeof host, service, sizeof service,
                    NI_NUMERICHOST | NI_NUMERICSERV) == 0) {
        ip = host;
        port = std::atoi(service);
    }
}

/// A connection's socket as cpp-httplib reads and writes it: each read waits at most the read
/// timeout and never past the request's deadline.
class DeadlineStream : public httplib::Stream {
public:
    /// A stream for one request, whose deadline starts now.
    DeadlineStream(int fd, const GuardedHttpServer::Limits& limits)
        : _fd(fd)
        , _limits(limits)
        , _deadline(Clock::now() + toMilliseconds(limits.requestSeconds))
    {
    }


    /// False once the request's deadline has passed, even when bytes are waiting.
    bool is_readable() const override
    {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(_deadline - Clock::now());
        if (left.count() > 0 && waitFor(_fd, POLLIN, std::min(left, toMilliseconds(_limits.readSeconds))))
            return true;
        _late = true;
        return false;
    }

    /// Whether a read of the current request waited too long; the connection is then closed.
    bool late() const { return _late; }
    bool is_writable() const override { return waitFor(_fd, POLLOUT, toMilliseconds(_limits.writeSeconds)); }

    /// Reads through a buffer, as cpp-httplib's own socket stream does: bytes of a request that
    /// its handler left unread (the body of a refused request) go with this stream.
    ssize_t read(char* ptr, size_t size) override
    {
        if (_buffered < _filled) {
            std::size_t n = std::min(size, _filled - _buffered);
            std::memcpy(ptr, _buffer.data() + _buffered, n);
            _buffered += n;
            return static_cast<ssize_t>(n);
        }
        if (!is_readable())
            return -1;
        if (size >= _buffer.size())
            return receive(ptr, size);
        ssize_t got = receive(_buffer.data(), _buffer.size());
        if (got <= 0)
            return got;
        std::size_t n = std::min(size, static_cast<std::size_t>(got));
        std::memcpy(ptr, _buffer.data(), n);
        _buffered = n;
        _filled = static_cast<std::size_t>(got);
        return static_cast<ssize_t>(n);
    }

    ssize_t write(const char* ptr, size_t size) override
    {
        if (!is_writable())
            return -1;
        ssize_t sent;
        do
            sent = ::send(_fd, ptr, size, MSG_NOSIGNAL);
        while (sent < 0 && errno == EINTR);
        return sent;
    }

    void get_remote_ip_and_port(std::string& ip, int& port) const override
    {
        sockaddr_storage address{};
        socklen_t length = sizeof address;
        if (getpeername(_fd, reinterpret_cast<sockaddr*>(&address), &length) == 0)
            addressText(address, length, ip, port);
    }

    void get_local_ip_and_port(std::string& ip, int& port) const override
    {
        sockaddr_storage address{};
        socklen_t length = sizeof address;
        if (getsockname(_fd, reinterpret_cast<sockaddr*>(&address), &length) == 0)
            addressText(address, length, ip, port);
    }

    socket_t socket() const override { return _fd; }

private:
    ssize_t receive(char* ptr, size_t size) const
    {
        ssize_t got;
        do
            got = ::recv(_fd, ptr, size, 0);
        while (got < 0 && errno == EINTR);
        return got;
    }

    int _fd;
    const GuardedHttpServer::Limits& _limits;
    Clock::time_point _deadline;
    mutable bool _late = false;
    std::array<char, 4096> _buffer;
    std::size_t _buffered = 0, _filled = 0;
};

}  // namespace

GuardedHttpServer::GuardedHttpServer(Limits limits)
    : _limits(limits)
{
    _limits.connections = std::max<std::size_t>(_limits.connections, 1);
    std::size_t workers = _limits.connections;
    new_task_queue = [workers] { return new httplib::ThreadPool(workers); };
}

bool GuardedHttpServer::awaitRequest(socket_t sock) const
{
    // In short slices, so that stop() is not held up by an idle keep-alive connection.
    auto until = Clock::now() + toMilliseconds(_limits.idleSeconds);
    while (svr_sock_ != INVALID_SOCKET) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now());
        if (left.count() <= 0)
            return false;
        if (waitFor(sock, POLLIN, std::min(left, std::chrono::milliseconds(100))))
            return true;
    }
    return false;
}

bool GuardedHttpServer::process_and_close_socket(socket_t sock)
{
    // An answer goes out as its headers, then its body. With Nagle's algorithm on, the body would
    // wait for the browser to acknowledge the headers, which it delays (up to 40 ms on Linux): every
    // gesture's answer would arrive that much late on a kept-alive connection.
    int noDelay = 1;
    ::setsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
    bool served = false;
    for (std::size_t left = std::max<std::size_t>(_limits.requestsPerConnection, 1); left > 0; --left) {
        if (!awaitRequest(sock))
            break;
        DeadlineStream stream(sock, _limits);
        bool closed = false;
        served = process_request(stream, left == 1, closed, nullptr);
        if (!served || closed || stream.late())
            break;
    }
    ::shutdown(sock, SHUT_RDWR);
    ::close(sock);
    return served;
}
