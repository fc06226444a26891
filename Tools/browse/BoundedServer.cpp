#include "BoundedServer.h"

#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <utility>

#include "ClientStream.h"

namespace neb::nebsc {

namespace {

/// Connections that were accepted and wait for a thread; the others wait in the kernel, which has
/// room for a few.
constexpr std::size_t mostWaiting = 64;

/// What a chunked body has beside its content.
constexpr std::size_t chunkHeaders = std::size_t{1} << 16;

/// Threads for connections. enqueue() waits while too many connections wait for a thread.
class ConnectionQueue : public httplib::TaskQueue {
public:
    explicit ConnectionQueue(std::size_t threads) : _threads(threads) {}

    void enqueue(std::function<void()> task) override {
        {
            std::unique_lock lock(_mutex);
            _hasRoom.wait(lock, [this] { return _waiting < mostWaiting; });
            ++_waiting;
        }
        _threads.enqueue([this, task = std::move(task)] {
            {
                const std::lock_guard lock(_mutex);
                --_waiting;
            }
            _hasRoom.notify_one();
            task();
        });
    }

    void shutdown() override { _threads.shutdown(); }

private:
    std::mutex _mutex;
    std::condition_variable _hasRoom;
    std::size_t _waiting = 0;
    httplib::ThreadPool _threads;
};

/// Ends a connection whose request is too long or late.
void refuseRequest(ClientStream& client) {
    constexpr std::string_view response =
        "HTTP/1.1 431 Request Header Fields Too Large\r\nConnection: close\r\n"
        "Content-Length: 0\r\n\r\n";
    static_cast<void>(client.write(response.data(), response.size()));
}

}  // namespace

BoundedServer::BoundedServer(std::size_t threads, std::size_t longestBody)
    : _longestBody(longestBody) {
    set_payload_max_length(longestBody);
    new_task_queue = [threads] { return new ConnectionQueue(threads); };  // the server owns it
}

bool BoundedServer::process_and_close_socket(socket_t socket) {
    ClientStream client(socket, _longestBody + chunkHeaders);
    bool isServed = false;
    if (client.readHead()) {
        bool isClosed = false;
        isServed = process_request(client, true, isClosed, nullptr);
    } else if (client.hasRequest()) {
        refuseRequest(client);
    }
    client.finish();
    ::close(socket);
    return isServed;
}

}  // namespace neb::nebsc
