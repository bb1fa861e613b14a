#pragma once
// A `nimbra-prefs serve` server in the test's own process: on a free port of 127.0.0.1 over a fresh
// root, serving from a thread of its own until the object goes.

#include "TestSupport.h"

#include "host/Server.h"

#include <httplib.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

namespace test {

/// A server on a free port of 127.0.0.1 over a fresh root, serving from a thread of its own.
class RunningServer {
public:
    explicit RunningServer(WebServer::Options options = {})
    {
        options.port = 0;
        options.web = std::filesystem::path(test::resourcesDir()) / "web";
        options.icons = std::filesystem::path(test::resourcesDir()) / "icons";
        _server = std::make_unique<WebServer>(Session::Options{.root = root.path(), .resources = test::resourcesDir()},
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

}  // namespace test
