// nebsc on a system that lacks what Linux offers beyond POSIX: /proc, and watched folders.

#include <gmock/gmock.h>

#include "Support/HygienicTest.h"
#include "Support/Sanitizers.h"
#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

using testing::HasSubstr;

class OtherSystem : public HygienicTest {
protected:
    /// Runs nebsc as root of a namespace of its own, after the shell command. Returns nothing if
    /// that fails; then `obstacle` is what it printed.
    std::optional<NebscOutcome> nebscAfter(const std::string& command,
                                           const std::string& argument) {
        const std::string build = NEB_BUILD_FOLDER;
        // Without /proc, the loader does not find libraries relative to the program.
        NebscOutcome outcome = runProgram(
            "/usr/bin/unshare",
            {"-rm", "/bin/sh", "-c", command + " || exit 99; exec \"$@\"", "sh",
             build + "/bin/nebsc", argument},
            {.folder = repository.path(), .variables = {{"LD_LIBRARY_PATH", build + "/lib"}}});
        if (outcome.exitStatus == 99 || outcome.errors.starts_with("unshare")) {
            obstacle = outcome.errors;
            return std::nullopt;
        }
        return outcome;
    }
    TestRepository repository;
    std::string obstacle;
};

TEST_F(OtherSystem, WithoutProcNebscWorksAndDoctorSaysWhatIsMissing) {
    if (hasSanitizer) {
        GTEST_SKIP() << "a sanitizer reads /proc";
    }
    repository.commitFile("file", "text", "Say hello");
    const auto log = nebscAfter("mount -t tmpfs none /proc", "log");
    if (!log) {
        GTEST_SKIP() << "no file system can be mounted here: " << obstacle;
    }
    EXPECT_THAT(log->output, HasSubstr("Say hello"));
    EXPECT_EQ(log->errors, "");
    const auto doctor = nebscAfter("mount -t tmpfs none /proc", "doctor");
    EXPECT_THAT(doctor->output, HasSubstr("note     processes "));
    EXPECT_THAT(doctor->output, HasSubstr("/proc is not readable"));
}

TEST_F(OtherSystem, DoctorSaysThatFoldersCannotBeWatched) {
    const auto doctor = nebscAfter("echo 0 >/proc/sys/user/max_inotify_instances", "doctor");
    if (!doctor) {
        GTEST_SKIP() << "no limit can be set here: " << obstacle;
    }
    EXPECT_THAT(doctor->output, HasSubstr("note     watching "));
    EXPECT_THAT(doctor->output, HasSubstr("not informed of changes"));
}

TEST_F(OtherSystem, DoctorIsSilentAboutWhatTheSystemHas) {
    const NebscOutcome doctor = runNebsc({"doctor"}, {.folder = repository.path()});
    EXPECT_THAT(doctor.output, testing::Not(HasSubstr("processes ")));
    EXPECT_THAT(doctor.output, testing::Not(HasSubstr("watching ")));
}

}  // namespace
}  // namespace neb::test
