#include "Support/HygienicTest.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

namespace neb::test {

namespace {

constexpr uid_t ordinaryUser = 65534;

/// Returns the state letter of /proc/PID/stat, 'X' if there is no such process.
char stateOf(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string text;
    std::getline(file, text);
    const std::size_t end = text.rfind(')');
    return end != std::string::npos ? text.at(end + 2) : 'X';
}

}  // namespace

std::set<std::string> openDescriptors() {
    std::set<std::string> descriptors;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;  // the descriptor of the iterator itself
        const auto target = std::filesystem::read_symlink(entry.path(), gone);
        if (!gone && target.string().find("/proc/") != 0) {
            descriptors.insert(entry.path().filename().string() + " " + target.string());
        }
    }
    return descriptors;
}

bool isLiveProcess(pid_t pid) {
    const char state = stateOf(pid);
    return state != 'Z' && state != 'X';
}

bool isStoppedProcess(pid_t pid) {
    return stateOf(pid) == 'T';
}

void waitUntilGone(pid_t pid) {
    while (isLiveProcess(pid)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void HygienicTest::SetUp() {
    _descriptors = openDescriptors();
    _folder = std::filesystem::current_path().string();
}

void HygienicTest::TearDown() {
    EXPECT_EQ(openDescriptors(), _descriptors) << "a descriptor was left open, or closed";
    EXPECT_EQ(std::filesystem::current_path().string(), _folder);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child process was not reaped";
    EXPECT_EQ(errno, ECHILD);
}

AsOrdinaryUser::AsOrdinaryUser() : _wasRoot(::geteuid() == 0) {
    if (_wasRoot && ::setresuid(ordinaryUser, ordinaryUser, 0) != 0) {
        ADD_FAILURE() << "cannot act as an ordinary user";
    }
}

AsOrdinaryUser::~AsOrdinaryUser() {
    if (_wasRoot && ::setresuid(0, 0, 0) != 0) {
        ADD_FAILURE() << "cannot act as root again";
    }
}

}  // namespace neb::test
