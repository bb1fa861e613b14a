// `serve` under hostile clients: bodies nested without bound, clients that hold connections by
// sending a byte now and then, a thousand idle connections, bodies declared larger than allowed,
// a second server on a taken port, a picture decoding beside other tabs, file requests that name
// other files than stored pictures, and an event history that must stay bounded in bytes. After
// each the server still answers.

#include "RunningServer.h"
#include "TestSupport.h"

#include "host/Server.h"
#include "platform/UIImage.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace fs = std::filesystem;

namespace {

using test::RunningServer;

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

namespace {

/// Raises the open-file limit to at least count (as far as the hard limit allows); false when it
/// cannot be.
bool allowOpenFiles(rlim_t count)
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return false;
    if (limit.rlim_cur >= count)
        return true;
    if (limit.rlim_max != RLIM_INFINITY && limit.rlim_max < count)
        return false;
    limit.rlim_cur = count;
    return ::setrlimit(RLIMIT_NOFILE, &limit) == 0;
}

/// What the server sent on fd until it closed the connection or went quiet for `milliseconds`.
std::string answerOn(int fd, int milliseconds)
{
    std::string answer;
    for (;;) {
        pollfd entry{fd, POLLIN, 0};
        if (::poll(&entry, 1, milliseconds) <= 0)
            return answer;
        char bytes[4096];
        ssize_t got = ::recv(fd, bytes, sizeof bytes, 0);
        if (got <= 0)
            return answer;
        answer.append(bytes, static_cast<std::size_t>(got));
    }
}

}  // namespace

TEST(ServeHardening, AThousandIdleConnectionsDoNotBlockARequest)
{
    ASSERT_TRUE(allowOpenFiles(2600)) << "the open-file limit cannot hold 1,000 connections at both ends";
    RunningServer server;
    std::vector<int> idle;
    for (int i = 0; i < 1000; ++i)
        if (int fd = connectTo(server.port); fd >= 0)
            idle.push_back(fd);
    ASSERT_EQ(idle.size(), 1000u);
    // Every idle connection was accepted before the request below is sent.
    auto answer = server.client(4).Get("/api/state");
    ASSERT_TRUE(answer) << "a request got no answer beside 1,000 idle connections";
    EXPECT_EQ(answer->status, 200);
    // The idle connections are still open: none was closed to make room.
    std::size_t open = 0;
    for (int fd : idle) {
        open += !closedByServer(fd);
        ::close(fd);
    }
    EXPECT_EQ(open, idle.size());
}

TEST(ServeHardening, OverTheConnectionLimitTheOldestIdleConnectionGoes)
{
    WebServer::Options options;
    options.connections.connections = 20;
    RunningServer server(options);
    std::vector<int> idle;
    for (int i = 0; i < 20; ++i)
        idle.push_back(connectTo(server.port));
    auto answer = server.client(4).Get("/api/state");
    ASSERT_TRUE(answer) << "idle connections at the limit starved a request";
    EXPECT_EQ(answer->status, 200);
    // The request's connection took the place of the oldest idle one.
    EXPECT_TRUE(closedByServer(idle.front(), 3000));
    for (int fd : idle)
        ::close(fd);
}

TEST(ServeHardening, AnOversizedDeclaredBodyIsRefusedUnread)
{
    RunningServer server;
    for (auto [path, type] : {std::pair{"/api/set", "application/json"}, {"/api/image", "image/png"}, {"/api/restore", "application/x-plist"}}) {
        int fd = connectTo(server.port);
        ASSERT_GE(fd, 0);
        // 600 MiB declared, none of it sent: the refusal comes from the headers alone.
        std::string head = std::string("POST ") + path + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(server.port) +
                           "\r\nContent-Type: " + type + "\r\nContent-Length: 629145600\r\n\r\n";
        ASSERT_EQ(::send(fd, head.data(), head.size(), MSG_NOSIGNAL), static_cast<ssize_t>(head.size()));
        std::string answer = answerOn(fd, 5000);
        ::close(fd);
        EXPECT_EQ(answer.rfind("HTTP/1.1 413", 0), 0u) << path << ": " << answer;
        EXPECT_NE(answer.find("the request body is larger than"), std::string::npos) << answer;
    }
    // A body within the limit is taken.
    auto fine = server.post("/api/set", R"({"key":"nimbraEnabled","value":true})");
    ASSERT_TRUE(fine);
    EXPECT_EQ(fine->status, 200) << fine->body;
}

TEST(ServeHardening, ATakenPortIsRefused)
{
    RunningServer first;
    WebServer::Options options;
    options.port = first.port;
    WebServer second(Session::Options{.root = first.root.path(), .resources = test::resourcesDir()}, options);
    try {
        second.bind();
        FAIL() << "a second server shared the port " << first.port;
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find("is taken"), std::string::npos) << error.what();
    }
    // The first server still answers every request.
    for (int i = 0; i < 10; ++i) {
        auto answer = first.client().Get("/api/state");
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, 200);
    }
}

TEST(ServeHardening, OtherTabsAnswerWhileAPictureDecodes)
{
    RunningServer server;
    auto post = [&](const std::string& tab, const std::string& path, const std::string& body, const char* type = "application/json") {
        return server.client(20).Post(path.c_str(), {{"X-Nimbra-Session", tab}}, body, type);
    };
    const std::string painter = "tab-painter", other = "tab-other1";
    for (auto& tab : {painter, other})
        ASSERT_EQ(post(tab, "/api/session", R"({"id":")" + tab + R"("})")->status, 200);
    ASSERT_EQ(post(painter, "/api/open", R"({"class":"NIMControlCenterRootPrefsListController"})")->status, 200);
    ASSERT_EQ(post(painter, "/api/set", R"({"key":"enabled","value":true})")->status, 200);
    ASSERT_EQ(post(painter, "/api/set", R"({"key":"backgroundStyle","value":2})")->status, 200);
    ASSERT_EQ(post(painter, "/api/tap", R"({"id":"backgroundImageChild1"})")->status, 200);

    std::string png = UIImagePNGRepresentation(UIImage(4, 4, std::vector<std::uint8_t>(4 * 4 * 4, 200)));
    std::atomic<int> uploaded = 0;
    std::thread upload;
    {
        // The picture waits for its turn to decode while the other requests run.
        std::lock_guard decoding(Session::pictureDecoding());
        upload = std::thread([&] {
            auto answer = post(painter, "/api/image", png, "image/png");
            uploaded = answer ? answer->status : -1;
        });
        for (int i = 0; i < 400 && Session::picturesDecoding() == 0; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(25));
        ASSERT_EQ(Session::picturesDecoding(), 1u) << "the upload never reached its decoding";
        auto flipped = post(other, "/api/set", R"({"key":"nimbraEnabled","value":true})");
        ASSERT_TRUE(flipped);
        EXPECT_EQ(flipped->status, 200);
        // The uploading tab itself still shows its screen.
        auto state = server.client(20).Get("/api/state", {{"X-Nimbra-Session", painter}});
        ASSERT_TRUE(state);
        EXPECT_EQ(state->status, 200);
        EXPECT_EQ(uploaded, 0) << "the upload ended while its decoding was held";
    }
    upload.join();
    EXPECT_EQ(uploaded, 200);
    EXPECT_TRUE(fs::exists(test::under(server.root.path(), "/var/jb/var/mobile/Library/Nimbra/ControlCenterBackgroundLight.png")));
}

TEST(ServeHardening, PicturesOverThePixelLimitAreRefusedByBothHosts)
{
    // 8193 x 8193 declared in the header: refused before a pixel is decoded.
    std::string png = UIImagePNGRepresentation(UIImage(1, 1, {0, 0, 0, 255}));
    auto put32 = [&](std::size_t at, std::uint32_t value) {
        for (int i = 0; i < 4; ++i)
            png[at + static_cast<std::size_t>(i)] = static_cast<char>((value >> (24 - 8 * i)) & 0xff);
    };
    put32(16, 8193);
    put32(20, 8193);
    try {
        Session::decodePicture(png);
        FAIL() << "an 8193 x 8193 picture was decoded";
    } catch (const CommandError& error) {
        EXPECT_EQ(error.kind(), CommandError::Kind::TooLarge) << error.what();
    }
    test::TempDir root;
    fs::path file = root / "huge.png";
    test::writeFile(file, png);
    auto run = test::runScript({"--root", root.path().string()}, "open NIMControlCenterRootPrefsListController\nset enabled true\n"
                                                                  "set backgroundStyle 2\ntap backgroundImageChild1\nimage \"" +
                                                                      file.string() + "\"\n");
    EXPECT_EQ(run.status, 1);
    ASSERT_FALSE(run.lines.empty());
    EXPECT_NE(run.lines.back()["error"].get<std::string>().find("too large"), std::string::npos) << run.lines.back();

    RunningServer server;
    ASSERT_EQ(server.post("/api/open", R"({"class":"NIMControlCenterRootPrefsListController"})")->status, 200);
    ASSERT_EQ(server.post("/api/set", R"({"key":"enabled","value":true})")->status, 200);
    ASSERT_EQ(server.post("/api/set", R"({"key":"backgroundStyle","value":2})")->status, 200);
    ASSERT_EQ(server.post("/api/tap", R"({"id":"backgroundImageChild1"})")->status, 200);
    auto refused = server.client().Post("/api/image", png, "image/png");
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->status, 413) << refused->body;
    EXPECT_NE(refused->body.find("too large"), std::string::npos) << refused->body;
}
