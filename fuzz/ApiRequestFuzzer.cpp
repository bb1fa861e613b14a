// A request body for the JSON API of `serve`, sent to a running server over 127.0.0.1: the first
// byte picks the endpoint, the rest is the body. Every answer is JSON; an answer of 500 "internal
// error" (an exception that escaped a handler) is a finding, as is a crash or a hang.

#include "FuzzRoot.h"

#include "host/Server.h"

#include <httplib.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace {

const char* const kEndpoints[] = {"/api/set",  "/api/open",   "/api/tap",    "/api/call",   "/api/alert",
                                  "/api/pick", "/api/move",   "/api/scroll", "/api/cancel", "/api/back",
                                  "/api/reload", "/api/button", "/api/relaunch"};

struct RunningServer {
    fuzz::FuzzRoot root;
    WebServer server;
    int port;
    std::thread thread;
    httplib::Client client;

    static WebServer::Options options()
    {
        WebServer::Options options;
        options.port = 0;
        options.web = fuzz::FuzzRoot::shippedResources() / "web";
        options.icons = fuzz::FuzzRoot::shippedResources() / "icons";
        return options;
    }

    RunningServer()
        : server(Session::Options{.root = root.path() / "served", .resources = fuzz::FuzzRoot::shippedResources()}, options())
        , port(server.bind())
        , thread([this] { server.run(); })
        , client("127.0.0.1", port)
    {
        client.set_read_timeout(20);
        for (int attempt = 0; attempt < 200 && !client.Get("/api/state"); ++attempt)
            std::this_thread::sleep_for(std::chrono::milliseconds(25));
    }
    ~RunningServer()
    {
        server.stop();
        thread.join();
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static RunningServer running;
    if (size == 0)
        return 0;
    const char* endpoint = kEndpoints[data[0] % std::size(kEndpoints)];
    std::string body(reinterpret_cast<const char*>(data) + 1, size - 1);
    auto answer = running.client.Post(endpoint, body, "application/json");
    if (!answer) {
        std::fprintf(stderr, "no answer from %s\n", endpoint);
        std::abort();
    }
    if (answer->status == 500 && answer->body.find("internal error") != std::string::npos) {
        std::fprintf(stderr, "%s: %s\n", endpoint, answer->body.c_str());
        std::abort();
    }
    return 0;
}
