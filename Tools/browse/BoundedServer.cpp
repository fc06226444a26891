#include "BoundedServer.h"

#include <unistd.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <utility>

#include "ClientStream.h"

namespace neb::nebsc {

namespace {

/// For connections that were accepted and wait for a thread; the others wait in the kernel, which
/// has room for a few.
constexpr std::size_t mostWaiting = 64;

/// What a chunked body has beside its content.
constexpr std::size_t chunkHeaders = std::size_t{1} << 16;

/// `void` in cpp-httplib 0.11; in 0.18 `bool`, whether the queue took the task.
using Enqueued =
    decltype(std::declval<httplib::TaskQueue&>().enqueue(std::declval<std::function<void()>>()));

/// Threads for connections. enqueue() waits while too many connections wait for a thread;
/// `connections` has the number of those that wait or are served.
class ConnectionQueue : public httplib::TaskQueue {
public:
    ConnectionQueue(std::size_t threads, std::atomic<std::size_t>& connections)
        : _most(threads + mostWaiting), _connections(connections), _threads(threads) {}

    Enqueued enqueue(std::function<void()> task) override {
        {
            std::unique_lock lock(_mutex);
            _hasRoom.wait(lock, [this] { return _connections < _most; });
            ++_connections;
        }
        return _threads.enqueue([this, task = std::move(task)] {
            task();
            {
                const std::lock_guard lock(_mutex);
                --_connections;
            }
            _hasRoom.notify_one();
        });
    }

    void shutdown() override { _threads.shutdown(); }

private:
    std::mutex _mutex;
    std::condition_variable _hasRoom;
    std::size_t _most;
    std::atomic<std::size_t>& _connections;
    httplib::ThreadPool _threads;
};

std::string_view statusOf(ClientStream::Head head) {
    switch (head) {
        case ClientStream::Head::late:
            return "408 Request Timeout";
        case ClientStream::Head::tooLong:
            return "431 Request Header Fields Too Large";
        case ClientStream::Head::withRange:
            return "416 Range Not Satisfiable";
        default:
            return "400 Bad Request";
    }
}

void refuseRequest(ClientStream& client, ClientStream::Head head) {
    const std::string response = "HTTP/1.1 " + std::string(statusOf(head)) +
                                 "\r\nConnection: close\r\nContent-Length: 0\r\n\r\n";
    static_cast<void>(client.write(response.data(), response.size()));
}

}  // namespace

BoundedServer::BoundedServer(std::size_t threads, std::size_t longestBody)
    : _threads(threads), _longestBody(longestBody) {
    set_payload_max_length(longestBody);
    // The server owns it.
    new_task_queue = [this, threads] { return new ConnectionQueue(threads, _connections); };
}

bool BoundedServer::serve(httplib::Stream& client) {
    bool isClosed = false;
#ifdef NEB_HTTPLIB_TAKES_ADDRESSES
    std::string clientAddress;
    std::string ownAddress;
    int clientPort = 0;
    int ownPort = 0;
    client.get_remote_ip_and_port(clientAddress, clientPort);
    client.get_local_ip_and_port(ownAddress, ownPort);
    return process_request(client, clientAddress, clientPort, ownAddress, ownPort, true, isClosed,
                           nullptr);
#else
    return process_request(client, true, isClosed, nullptr);
#endif
}

bool BoundedServer::process_and_close_socket(socket_t socket) {
    ClientStream client(socket, _longestBody + chunkHeaders);
    bool isServed = false;
    const ClientStream::Head head = client.readHead([this] { return _connections > _threads; });
    if (head == ClientStream::Head::complete) {
        isServed = serve(client);
    } else if (head != ClientStream::Head::none) {
        refuseRequest(client, head);
    }
    if (head != ClientStream::Head::none) {
        client.finish();
    }
    ::close(socket);
    return isServed;
}

}  // namespace neb::nebsc
