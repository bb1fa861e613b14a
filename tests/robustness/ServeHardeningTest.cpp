// `serve` under hostile clients: bodies nested without bound, clients that hold connections by
// sending a byte now and then, file requests that name other files than stored pictures, and an
// event history that must stay bounded in bytes. After each the server still answers.

#include "TestSupport.h"

#include "host/Server.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace fs = std::filesystem;

namespace {

/// A server on a free port of 127.0.0.1 over a fresh root, serving from a thread of its own.
class RunningServer {
public:
    explicit RunningServer(WebServer::Options options = {})
    {
        options.port = 0;
        options.web = fs::path(NIMBRA_RESOURCES_DIR) / "web";
        options.icons = fs::path(NIMBRA_RESOURCES_DIR) / "icons";
        _server = std::make_unique<WebServer>(Session::Options{.root = root.path(), .resources = NIMBRA_RESOURCES_DIR},
                                               options);
        port = _server->bind();
        _thread = std::thread([this] { _server->run(); });
        // Serving once the root page answers.
        for (int attempt = 0; attempt < 100 && !client().Get("/api/state"); ++attempt)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    ~RunningServer()
    {
        _server->stop();
        _thread.join();
    }

    /// A client that gives up after `seconds` without an answer.
    httplib::Client client(int seconds = 5) const
    {
        httplib::Client client("127.0.0.1", port);
        client.set_connection_timeout(seconds);
        client.set_read_timeout(seconds);
        return client;
    }

    httplib::Result post(const std::string& path, const std::string& body) const
    {
        return client().Post(path.c_str(), body, "application/json");
    }

    test::TempDir root;
    int port = 0;

private:
    std::unique_ptr<WebServer> _server;
    std::thread _thread;
};

int connectTo(int port)
{
    int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

/// Whether the server closes the connection within `milliseconds`: reads (of any answer it sent)
/// reach its end or a reset.
bool closedByServer(int fd, int milliseconds = 0)
{
    auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        pollfd entry{fd, POLLIN, 0};
        if (::poll(&entry, 1, static_cast<int>(std::max<long long>(left.count(), 0))) <= 0)
            return false;
        char bytes[4096];
        ssize_t got = ::recv(fd, bytes, sizeof bytes, MSG_DONTWAIT);
        if (got == 0 || (got < 0 && errno != EAGAIN && errno != EWOULDBLOCK))
            return true;
    }
}

std::string nested(std::size_t depth)
{
    return std::string(depth, '[') + std::string(depth, ']');
}

}  // namespace

TEST(ServeHardening, DeeplyNestedBodiesAreRefusedAndTheServerGoesOn)
{
    RunningServer server;
    // 20,000 nested arrays in one 40 KB request.
    auto deep = server.post("/api/set", R"({"key":"nimbraEnabled","value":)" + nested(20000) + "}");
    ASSERT_TRUE(deep) << "the server did not answer";
    EXPECT_EQ(deep->status, 400);
    EXPECT_NE(deep->body.find("nested deeper than 256"), std::string::npos) << deep->body;
    // Brackets inside strings are text, not nesting.
    auto text = server.post("/api/open", R"({"class":")" + nested(20000) + R"("})");
    ASSERT_TRUE(text);
    EXPECT_EQ(text->status, 404) << text->body;
    // A value nested within the limit is still taken.
    auto fine = server.post("/api/set", R"({"key":"nimbraEnabled","value":true,"extra":)" + nested(200) + "}");
    ASSERT_TRUE(fine);
    EXPECT_EQ(fine->status, 200) << fine->body;
    auto state = server.client().Get("/api/state");
    ASSERT_TRUE(state);
    EXPECT_EQ(state->status, 200);
}

TEST(ServeHardening, SlowClientsCannotStarveANormalRequest)
{
    WebServer::Options options;
    options.connections.requestSeconds = 3;
    RunningServer server(options);
    const std::string request = "GET /api/state HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(server.port) + "\r\n\r\n";

    // 40 connections, each sending one byte of a request every 2 s, for 6 s.
    std::vector<int> slow;
    for (int i = 0; i < 40; ++i)
        if (int fd = connectTo(server.port); fd >= 0)
            slow.push_back(fd);
    ASSERT_EQ(slow.size(), 40u);
    std::atomic<bool> dripping = true;
    std::thread drip([&] {
        for (std::size_t sent = 0; sent < 3 && dripping; ++sent) {
            for (int fd : slow)
                ::send(fd, request.data() + sent, 1, MSG_NOSIGNAL);
            for (int tenth = 0; tenth < 20 && dripping; ++tenth)
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    auto answer = server.client(4).Get("/api/state");
    dripping = false;
    drip.join();
    ASSERT_TRUE(answer) << "a normal request got no answer while slow clients held connections";
    EXPECT_EQ(answer->status, 200);
    // The slow clients are dropped (each at its first read that waits over a second).
    std::size_t dropped = 0;
    for (int fd : slow) {
        dropped += closedByServer(fd, 3000);
        ::close(fd);
    }
    EXPECT_EQ(dropped, slow.size());

    // A client quick enough for every read, but whose request never ends, is dropped at the
    // request's deadline (3 s here); the loop is bounded at 12 s.
    int steady = connectTo(server.port);
    ASSERT_GE(steady, 0);
    const std::string firstLine = "GET /api/state HTTP/1.1\r\n", header = "X-Padding: 1\r\n";
    ::send(steady, firstLine.data(), firstLine.size(), MSG_NOSIGNAL);
    bool closed = false;
    for (int step = 0; step < 40 && !closed; ++step) {
        ::send(steady, header.data(), header.size(), MSG_NOSIGNAL);
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        closed = closedByServer(steady);
    }
    ::close(steady);
    EXPECT_TRUE(closed) << "a request that never ends kept its connection";
}

TEST(ServeHardening, OnlyStoredPicturesAreServed)
{
    RunningServer server;
    fs::path folder = test::under(server.root.path(), "/var/jb/var/mobile/Library/Nimbra/");
    test::writeFile(folder / "secret.txt", "the secret");
    test::writeFile(folder / "picture.png", "PNG bytes");
    fs::create_symlink(folder / "secret.txt", folder / "linked.png");
    ASSERT_EQ(::mkfifo((folder / "fifo.png").c_str(), 0644), 0);
    auto get = [&](const std::string& query) { return server.client().Get(("/api/file?path=" + query).c_str()); };

    auto nul = get("/var/jb/var/mobile/Library/Nimbra/secret.txt%00.png");
    ASSERT_TRUE(nul);
    EXPECT_EQ(nul->status, 403);
    EXPECT_EQ(nul->body.find("the secret"), std::string::npos);
    auto link = get("/var/jb/var/mobile/Library/Nimbra/linked.png");
    ASSERT_TRUE(link);
    EXPECT_EQ(link->status, 404);
    EXPECT_EQ(link->body.find("the secret"), std::string::npos);
    auto fifo = get("/var/jb/var/mobile/Library/Nimbra/fifo.png");
    ASSERT_TRUE(fifo) << "a FIFO held the request";
    EXPECT_EQ(fifo->status, 404);
    auto picture = get("/var/jb/var/mobile/Library/Nimbra/picture.png");
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->status, 200);
    EXPECT_EQ(picture->body, "PNG bytes");
}

TEST(ServeHardening, TheEventHistoryIsBoundedInBytes)
{
    WebServer::Options options;
    options.eventHistoryBytes = 4096;
    RunningServer server(options);
    // Each gesture records events; long class names make them large.
    for (int i = 0; i < 40; ++i)
        server.post("/api/open", R"({"class":"NIMBatteryLineColorsPrefsListController"})");
    auto events = server.client().Get("/api/events?since=0");
    ASSERT_TRUE(events);
    auto body = nlohmann::json::parse(events->body);
    EXPECT_TRUE(body["missed"].get<bool>());
    std::size_t bytes = 0;
    for (auto& event : body["events"]) {
        event.erase("seq");
        bytes += event.dump().size();
    }
    EXPECT_GT(bytes, 0u);
    EXPECT_LE(bytes, 4096u);
}
