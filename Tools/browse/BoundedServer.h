// BoundedServer.h - an HTTP server whose memory no client can fill.
#pragma once

#include <httplib.h>

#include <atomic>
#include <cstddef>

namespace neb::nebsc {

/// An HTTP server for one request per connection. Bounds the bytes and the time of a request, also
/// of a client that has not shown yet that it may make one, and the number of connections.
class BoundedServer : public httplib::Server {
public:
    /// Serves `threads` requests at once, with bodies of at most `longestBody` bytes.
    BoundedServer(std::size_t threads, std::size_t longestBody);

private:
    /// Reads one request and writes the response. Returns whether both succeeded.
    bool serve(httplib::Stream& client);
    bool process_and_close_socket(socket_t socket) override;

    std::size_t _threads;
    std::size_t _longestBody;
    /// Connections that were accepted and have not ended. If they are more than the threads, some
    /// wait. The number of those that no thread has taken yet would not say so: a thread may be
    /// free and not run.
    std::atomic<std::size_t> _connections = 0;
};

}  // namespace neb::nebsc
