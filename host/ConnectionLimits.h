#pragma once
// How long and how many connections the HTTP server of `serve` gives its clients, so that clients
// that hold a connection without finishing a request cannot starve the others.

#include <cstddef>

struct ConnectionLimits {
    /// The longest one read may wait for a byte before the connection is dropped. Default 1 s.
    double readSeconds = 1;
    /// The longest a request (line, headers and body) may take to arrive, counted from its first
    /// byte; a connection over it is dropped without an answer. Default 10 s.
    double requestSeconds = 10;
    /// The longest one write of an answer may wait for the client to take bytes. Default 5 s.
    double writeSeconds = 5;
    /// How long a connection may wait before its first request begins, counted from its accept,
    /// and an idle keep-alive connection for its next one. Default 5 s.
    double idleSeconds = 5;
    /// The connections open at once. One more closes the oldest that has not begun a request (or is
    /// itself closed when every one has). Default 2048; 0 counts as 1.
    std::size_t connections = 2048;
    /// The threads that run requests' handlers at most, started as they are needed. Default 16.
    std::size_t workers = 16;
    /// Requests served over one connection before it is closed. Default 100; 0 counts as 1.
    std::size_t requestsPerConnection = 100;
};
