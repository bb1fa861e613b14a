#pragma once
// The HTTP server of `serve`, guarded against clients that hold a connection without finishing a
// request. cpp-httplib's own read timeout bounds each read only, so a client sending one byte a
// second would keep a worker forever; here every connection is served by a stream that also holds
// a deadline for the whole request (request line, headers and body), and the worker pool is large
// enough that the connections allowed at once cannot starve a normal request.

#include "host/ConnectionLimits.h"

#include <httplib.h>

class GuardedHttpServer : public httplib::Server {
public:
    using Limits = ConnectionLimits;

    explicit GuardedHttpServer(Limits limits);

    const Limits& limits() const { return _limits; }

private:
    bool process_and_close_socket(socket_t sock) override;
    /// Waits for the next request's first byte; false when the client is gone, stays idle past
    /// `idleSeconds`, or the server stops.
    bool awaitRequest(socket_t sock) const;

    Limits _limits;
};
