// HygienicTest.h - a fixture that fails when a test leaves a descriptor, a process or a changed
// working directory behind.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <set>
#include <string>

namespace neb::test {

class HygienicTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

private:
    std::set<std::string> _descriptors;
    std::string _folder;
};

/// The numbers of this process's open descriptors, each with what it is open on.
std::set<std::string> openDescriptors();

/// Whether the process is there and neither dead nor waiting to be reaped.
bool isLiveProcess(pid_t pid);

/// Whether the process is stopped by a signal.
bool isStoppedProcess(pid_t pid);

/// Waits until the process is gone, as it will be; the test program's time limit ends a wait in
/// vain.
void waitUntilGone(pid_t pid);

/// Acts as the user "nobody" for a while, where the test program runs as root; an ordinary user
/// stays what it is. The processes that it starts meanwhile are that user's for good.
class AsOrdinaryUser {
public:
    AsOrdinaryUser();
    AsOrdinaryUser(const AsOrdinaryUser&) = delete;
    AsOrdinaryUser& operator=(const AsOrdinaryUser&) = delete;
    ~AsOrdinaryUser();

private:
    bool _wasRoot;
};

}  // namespace neb::test
