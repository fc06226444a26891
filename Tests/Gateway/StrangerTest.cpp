// Requests of programs without the cookie, and untracked files, which need it.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <httplib.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include "Platform/ErrnoText.h"
#include "Platform/FileDescriptor.h"
#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// `nebsc browse`, and connections to it.
class StrangerTest : public testing::Test {
protected:
    void SetUp() override {
        repository.commitFile("a.txt", "text\n");
        nebsc.emplace(std::vector<std::string>{"browse", "--no-open"},
                      NebscSurroundings{.folder = repository.path(),
                                        .variables = {{"DISPLAY", std::nullopt}},
                                        .output = NebscOutput::pipe});
        url = nebsc->awaitLine();
        origin = url.substr(0, url.find("/?"));
    }
    [[nodiscard]] FileDescriptor connect() const {
        FileDescriptor client(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port =
            htons(static_cast<std::uint16_t>(std::stoi(origin.substr(origin.rfind(':') + 1))));
        EXPECT_EQ(
            ::connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
            0);
        return client;
    }
    /// The server has time to accept each connection: the kernel has room for a few, and the client
    /// of another one waits for a second.
    [[nodiscard]] std::vector<FileDescriptor> connectOften(int count) const {
        std::vector<FileDescriptor> clients;
        for (int i = 0; i < count; ++i) {
            clients.push_back(connect());
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return clients;
    }
    /// Sends bytes until the server ends the connection. Returns the number that were sent.
    static std::size_t flood(const FileDescriptor& client, std::string_view first,
                             const std::string& bytes) {
        constexpr std::size_t most = std::size_t{256} << 20;
        std::size_t sum = 0;
        ssize_t count = ::send(client.get(), first.data(), first.size(), MSG_NOSIGNAL);
        while (count > 0 && sum < most) {
            count = ::send(client.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
            sum += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        }
        return sum;
    }
    /// Waits until the server ends the connection. Returns what it sent.
    static std::string received(const FileDescriptor& client) {
        std::string response;
        std::array<char, 4096> buffer{};
        ssize_t count = 0;
        while ((count = ::recv(client.get(), buffer.data(), buffer.size(), 0)) > 0) {
            response.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return response;
    }
    std::string responseTo(std::string_view request) const {
        const FileDescriptor client = connect();
        static_cast<void>(::send(client.get(), request.data(), request.size(), MSG_NOSIGNAL));
        return received(client);
    }
    /// The most memory that the server has used, in MiB.
    [[nodiscard]] std::size_t mostMegabytes() const {
        std::ifstream status("/proc/" + std::to_string(nebsc->pid()) + "/status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with("VmHWM:")) {
                return std::stoul(line.substr(line.find_first_of("0123456789"))) >> 10U;
            }
        }
        ADD_FAILURE() << "no VmHWM";
        return 0;
    }
    /// Gets a path with the cookie.
    [[nodiscard]] httplib::Result get(const std::string& path) {
        httplib::Client client(origin);
        const auto opened = client.Get(url.substr(origin.size()));
        if (!opened) {
            return httplib::Client(origin).Get(path);
        }
        const std::string cookie = opened->get_header_value("Set-Cookie");
        return httplib::Client(origin).Get(path, {{"Cookie", cookie.substr(0, cookie.find(';'))}});
    }
    /// Returns the content of an untracked file, or the sentence of the refusal.
    std::string untracked(const std::string& path) {
        const auto response = get("/untracked?path=" + httplib::detail::encode_query_param(path));
        return response ? response->body : "no response";
    }

    TestRepository repository;
    std::optional<Nebsc> nebsc;
    std::string url, origin;
};

TEST_F(StrangerTest, CannotFillTheMemory) {
    const std::size_t before = mostMegabytes();
    const std::string letters(std::size_t{1} << 20, 'x');
    std::string headers;
    while (headers.size() < letters.size()) {
        headers += "a: b\r\n";
    }
    const std::pair<std::string_view, const std::string&> attempts[] = {
        {"GET /", letters},
        {"GET / HTTP/1.1\r\nA: ", letters},
        {"GET / HTTP/1.1\r\n", headers},
        {"POST /messages HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n", letters},
        {"POST /messages HTTP/1.1\r\nContent-Length: 999999999\r\n\r\n", letters},
    };
    for (const auto& [first, bytes] : attempts) {
        const FileDescriptor client = connect();
        EXPECT_LT(flood(client, first, bytes), std::size_t{64} << 20) << first;
    }
    EXPECT_LT(mostMegabytes(), before + 32);
    EXPECT_EQ(get("/repository")->status, 200);
}

TEST_F(StrangerTest, IsDisconnectedIfItsRequestDoesNotEnd) {
    const FileDescriptor client = connect();
    pollfd ended{.fd = client.get(), .events = POLLRDHUP, .revents = 0};
    for (int sent = 0; sent < 300 && ::poll(&ended, 1, 100) == 0; ++sent) {
        static_cast<void>(::send(client.get(), "x", 1, MSG_NOSIGNAL));
    }
    EXPECT_NE(ended.revents & POLLRDHUP, 0);
    EXPECT_THAT(received(client), StartsWith("HTTP/1.1 408 "));
}

TEST_F(StrangerTest, IsRefusedIfItsRequestIsTooLong) {
    EXPECT_THAT(responseTo("GET / HTTP/1.1\r\nA: " + std::string(20'000, 'x')),
                StartsWith("HTTP/1.1 431 "));
}

/// Each of many ranges would repeat the response.
TEST_F(StrangerTest, IsRefusedIfItNamesRanges) {
    std::string ranges = "bytes=0-";
    for (int i = 0; i < 2000; ++i) {
        ranges += ",0-";
    }
    for (const char* name : {"Range", "rANGE", "A\nRange"}) {
        const std::string request =
            "GET / HTTP/1.1\r\n" + std::string(name) + ": " + ranges + "\r\n\r\n";
        const std::string response = responseTo(request);
        EXPECT_THAT(response, StartsWith("HTTP/1.1 416 ")) << name;
        EXPECT_LT(response.size(), 1000U);
    }
    EXPECT_THAT(responseTo("GET / HTTP/1.1\r\nA-Range: b\r\n\r\nRange: c"),
                StartsWith("HTTP/1.1 403 "));
}

TEST_F(StrangerTest, DoesNotKeepAPageOutWithManyConnections) {
    const auto silent = connectOften(60);
    const auto response = get("/repository");
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 200);
}

TEST_F(StrangerTest, HasLessTimeWhileOthersWait) {
    const auto timeUntil = [](const auto& work) {
        const auto start = std::chrono::steady_clock::now();
        work();
        return std::chrono::steady_clock::now() - start;
    };
    const auto alone = timeUntil([&] { EXPECT_EQ(received(connect()), ""); });
    const auto silent = connectOften(90);
    EXPECT_LT(timeUntil([&] { EXPECT_TRUE(get("/repository")); }), alone);
}

/// A browser on a busy machine sends its request late. Others do not wait while threads are free.
TEST_F(StrangerTest, HasAllItsTimeWhileThreadsAreFree) {
    const auto late = connectOften(20);
    std::vector<std::thread> others(4);
    for (std::thread& other : others) {
        other = std::thread([this] {
            const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(700);
            while (std::chrono::steady_clock::now() < end) {
                static_cast<void>(connect());
            }
        });
    }
    for (std::thread& other : others) {
        other.join();
    }
    const std::string request = "GET /repository HTTP/1.1\r\n\r\n";
    for (const FileDescriptor& client : late) {
        static_cast<void>(::send(client.get(), request.data(), request.size(), MSG_NOSIGNAL));
        EXPECT_THAT(received(client), StartsWith("HTTP/1.1 403 "));
    }
}

TEST_F(StrangerTest, ReadsNoUntrackedFile) {
    repository.write("new.txt", "new\n");
    EXPECT_EQ(httplib::Client(origin).Get("/untracked?path=new.txt")->status, 403);
}

TEST_F(StrangerTest, UntrackedFilesAreReadWithTheCookie) {
    repository.write("folder/new file+.txt", std::string("new\n\0bytes", 10));
    repository.write("b\xE4r.txt", "latin\n");
    EXPECT_EQ(untracked("folder/new file+.txt"), std::string("new\n\0bytes", 10));
    EXPECT_EQ(untracked("b\xE4r.txt"), "latin\n");
}

TEST_F(StrangerTest, UntrackedFilesLieInTheWorkingCopy) {
    const TestRepository other;
    other.write("secret.txt", "secret\n");
    const auto link = [this](const std::string& target, const std::string& name) {
        std::filesystem::create_symlink(target, repository.path(name));
    };
    link(other.path("secret.txt"), "link");
    link(other.path(), "folder");
    repository.write(".git/secret", "secret\n");
    ASSERT_EQ(::mkfifo(repository.path("pipe").c_str(), 0600), 0);
    for (const std::string& path :
         {std::string("link"), std::string("folder/secret.txt"), other.path("secret.txt"),
          "../" + std::filesystem::path(other.path("secret.txt"))
                      .lexically_relative(std::filesystem::path(repository.path()).parent_path())
                      .string(),
          std::string(".git/secret"), std::string(".GIT/secret"), std::string("./.git/secret"),
          std::string("pipe"), std::string(), std::string("missing"), std::string("a.txt\0x", 7)}) {
        EXPECT_THAT(untracked(path), HasSubstr("cannot be shown")) << path;
    }
}

TEST_F(StrangerTest, TheReasonOfARefusalIsNamed) {
    std::filesystem::create_symlink(".", repository.path("folder"));
    EXPECT_THAT(untracked("folder"), HasSubstr("it is a symbolic link, or behind one"));
    EXPECT_THAT(untracked("folder/a.txt"), HasSubstr("it is a symbolic link, or behind one"));
    EXPECT_THAT(untracked("a.txt/b"), HasSubstr(textOfErrno(ENOTDIR)));
}

TEST_F(StrangerTest, ALargeUntrackedFileIsNotRead) {
    repository.write("large.bin", std::string(std::size_t{5} << 20, 'x'));
    EXPECT_THAT(untracked("large.bin"), HasSubstr("it has 5242880 bytes"));
}

}  // namespace
}  // namespace neb::test
