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
    /// How long an idle keep-alive connection is kept for its next request. Default 5 s.
    double idleSeconds = 5;
    /// The connections served at once (the worker threads); more wait for a free worker, which the
    /// deadlines above bound. Default 64; 0 counts as 1.
    std::size_t connections = 64;
    /// Requests served over one connection before it is closed. Default 100; 0 counts as 1.
    std::size_t requestsPerConnection = 100;
};
