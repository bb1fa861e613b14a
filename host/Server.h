#pragma once
// `nimbra-prefs serve`: the bundle in a browser. Sessions on the real clock (one per browser tab,
// see SessionPool), shown by the page application in resources/web/ and driven through a small
// JSON API on 127.0.0.1. The browser is only the screen and the finger: every decision stays with
// the session's pages. A gesture's answer carries the events and state it caused; what happens
// later (the respring button's revert, the end of a respring) reaches a waiting /api/events.
//
// Safe by default: the server listens on the loopback address only and refuses requests whose
// Host is not that address and port, whose Origin (when there is one) is another site, whose
// body is over the limit or whose JSON is malformed or nested too deeply. A refused request never
// stops the server, and a client that holds a connection without finishing its request is dropped.

#include "host/ConnectionLimits.h"
#include "host/Session.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

class WebServer {
public:
    struct Options {
        /// The TCP port on 127.0.0.1; 0 picks a free one.
        int port = 8765;
        /// The page application's static files (index.html, app.js, ...).
        std::filesystem::path web;
        /// The bundle's icons, served below /icons/.
        std::filesystem::path icons;
        /// Largest JSON request body (a picture's limit is the session's, Session::kPictureBytes).
        std::size_t jsonLimit = 64 * 1024;
        /// How many events /api/events keeps per session for browsers that are behind, and how many
        /// bytes of JSON they may take together (the newest event is always kept).
        std::size_t eventHistory = 4096;
        std::size_t eventHistoryBytes = 8 * 1024 * 1024;
        /// Deadlines, the connections open at once and the handlers' threads (see ConnectionLimits).
        ConnectionLimits connections;
        /// How many tabs' sessions are kept at most (the least recently used goes first).
        std::size_t sessionLimit = 32;
        /// How often the session's main queue runs what fell due.
        double tickSeconds = 0.05;
    };

    /// Makes the main session (on the real clock, whatever the options say, on the root page) and
    /// the routes.
    WebServer(Session::Options session, Options options);
    ~WebServer();
    WebServer(const WebServer&) = delete;
    WebServer& operator=(const WebServer&) = delete;

    /// Binds 127.0.0.1 and the port; throws std::runtime_error when the port cannot be had (one
    /// another program listens on is never shared). Returns the port bound.
    int bind();
    /// "http://127.0.0.1:PORT/".
    std::string address() const;
    /// Serves (and runs the session's clock) until stop(). Returns false when serving failed.
    bool run();
    /// Ends run() from any thread.
    void stop();

    /// The inside, shared by the files that make it up.
    struct Impl;

private:
    std::unique_ptr<Impl> _impl;
};
