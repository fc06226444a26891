// HygienicTest.h - a fixture that fails if a test leaves a descriptor open, a child running or
// another working directory.
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

/// Returns the open descriptors of this process, each with its target.
std::set<std::string> openDescriptors();

/// Returns whether the process exists and is not a zombie.
bool isLiveProcess(pid_t pid);

/// Whether the process is stopped by a signal.
bool isStoppedProcess(pid_t pid);

/// Waits until the process has ended. The time limit of Tests/run.py ends an endless wait.
void waitUntilGone(pid_t pid);

/// If the test program runs as root, switches to the user 65534 for the lifetime of the object.
/// Processes that are started meanwhile keep that user.
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
