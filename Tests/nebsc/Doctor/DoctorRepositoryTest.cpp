// The damage that `nebsc doctor` finds in a repository.

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "nebsc/Doctor/DoctorTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class DoctorRepository : public DoctorTest {
protected:
    /// Returns the path of a loose object.
    [[nodiscard]] std::string looseObject(const std::string& name) const {
        const std::string id = repository.git({"rev-parse", name});
        return repository.path(".git/objects/" + id.substr(0, 2) + "/" + id.substr(2, 38));
    }
    /// Overwrites some bytes of a packed object's data.
    void damageInPack(const std::string& name) const {
        const std::string id = repository.git({"rev-parse", name}).substr(0, 40);
        for (const auto& file :
             std::filesystem::directory_iterator(repository.path(".git/objects/pack"))) {
            if (file.path().extension() != ".pack") {
                continue;
            }
            std::istringstream lines(repository.git({"verify-pack", "-v", file.path().string()}));
            for (std::string line; std::getline(lines, line);) {
                std::istringstream columns(line);
                std::string object, type, size, packedSize;
                std::streamoff offset = 0;
                if (columns >> object >> type >> size >> packedSize >> offset && object == id) {
                    std::filesystem::permissions(file.path(), std::filesystem::perms::owner_all);
                    std::fstream pack(file.path(), std::ios::in | std::ios::out | std::ios::binary);
                    pack.seekp(offset + 20).write("\xff\xff\xff\xff", 4);
                }
            }
        }
    }
};

// ---- the index --------------------------------------------------------------------------------

TEST_F(DoctorRepository, TheAdviceForADamagedIndexNamesItsPath) {
    repository.commitFile("src/a.c", "1\n");
    repository.git({"worktree", "add", "--quiet", "-b", "other", "../linked"});
    repository.git({"submodule", "--quiet", "add", "./", "sub"});
    const std::string linked =
        std::filesystem::path(repository.path("../linked")).lexically_normal();
    const std::pair<std::string, std::string> indexes[] = {
        {repository.path("src"), repository.path(".git/index")},
        {linked + "/src", repository.path(".git/worktrees/linked/index")},
        {repository.path("sub/src"), repository.path(".git/modules/sub/index")},
    };
    for (const auto& [folder, index] : indexes) {
        EXPECT_THAT(findingsIn(folder, "index"), IsOneFinding("ok", "is readable", ""));
        std::ofstream(index) << "nothing that git knows, and long enough for it";
        EXPECT_THAT(
            findingsIn(folder, "index"),
            IsOneFinding("problem", HasSubstr("git cannot read it: "), HasSubstr("rm " + index)));
    }
}

// ---- the HEAD commit --------------------------------------------------------------------------

TEST_F(DoctorRepository, AHEADCommitDamagedInItsPackIsAProblemEvenIfACommitGraphHasIt) {
    repository.commitFile("a.c", "1\n");
    repository.git({"gc", "--quiet"});
    damageInPack("HEAD");
    EXPECT_THAT(findings("HEAD commit"),
                IsOneFinding("problem", AllOf(HasSubstr("cannot be read: "), HasSubstr("corrupt")),
                             HasSubstr("nebsc doctor --full")));
}

TEST_F(DoctorRepository, AMissingRootTreeIsAProblem) {
    repository.commitFile("a.c", "1\n");
    const std::string tree = repository.git({"rev-parse", "HEAD^{tree}"}).substr(0, 40);
    std::filesystem::remove(looseObject("HEAD^{tree}"));
    EXPECT_THAT(findings("HEAD commit"),
                IsOneFinding("problem", "its root tree " + tree + " is missing",
                             HasSubstr("nebsc doctor --full")));
}

TEST_F(DoctorRepository, ADamagedRootTreeIsAProblem) {
    repository.commitFile("a.c", "1\n");
    repository.git({"gc", "--quiet"});
    damageInPack("HEAD^{tree}");
    EXPECT_THAT(findings("HEAD commit"),
                IsOneFinding("problem", HasSubstr("its root tree cannot be read: "),
                             HasSubstr("nebsc doctor --full")));
}

TEST_F(DoctorRepository, AMissingRootTreeOfAPartialCloneIsNotedAndNotFetched) {
    repository.commitFile("a.c", "1\n");
    repository.git({"config", "uploadpack.allowFilter", "true"});
    const TemporaryFolder folder;
    repository.git({"clone", "--quiet", "--no-checkout", "--filter=tree:0",
                    "file://" + repository.path(), folder.path("partial")});
    const std::string objects = folder.path("partial/.git/objects");
    const auto countFiles = [&objects] {
        const auto files = std::filesystem::recursive_directory_iterator(objects);
        return std::distance(begin(files), end(files));
    };
    const auto before = countFiles();
    EXPECT_THAT(findingsIn(folder.path("partial"), "HEAD commit"),
                IsOneFinding("note", HasSubstr("its root tree is not fetched yet"), ""));
    EXPECT_EQ(countFiles(), before);
    folder.write("partial/.git/refs/tags/tree", repository.git({"rev-parse", "HEAD^{tree}"}));
    EXPECT_THAT(findingsIn(folder.path("partial"), "references"),
                IsOneFinding("problem", HasSubstr("refs/tags/tree names the object"), testing::_));
    EXPECT_EQ(countFiles(), before);
}

TEST_F(DoctorRepository, ABranchWithoutCommitsIsNoted) {
    EXPECT_THAT(findings("HEAD commit"),
                IsOneFinding("note", "the current branch has no commits yet", ""));
}

// ---- references -------------------------------------------------------------------------------

TEST_F(DoctorRepository, EachReferenceThatCannotBeResolvedIsAProblem) {
    repository.commitFile("a.c", "1\n");
    EXPECT_THAT(findings("references"), IsOneFinding("ok", "all 1 can be resolved", ""));
    repository.git({"branch", "topic"});
    repository.write(".git/refs/heads/topic", "junk\n");
    repository.write(".git/refs/heads/empty", "");
    const auto found = findings("references");
    ASSERT_EQ(found.size(), 2U) << found.dump(2);
    EXPECT_EQ(found[0]["health"], "problem");
    EXPECT_EQ(found[0]["text"], "refs/heads/empty names no object: its file is damaged");
    EXPECT_EQ(found[1]["text"], "refs/heads/topic names no object: its file is damaged");
    EXPECT_THAT(found[1]["advice"].get<std::string>(),
                AllOf(HasSubstr(repository.path(".git/logs/refs/heads/topic")),
                      HasSubstr("rm " + repository.path(".git/refs/heads/topic")),
                      HasSubstr("git update-ref refs/heads/topic COMMIT")));
}

TEST_F(DoctorRepository, TheAdviceForADamagedReferenceRepairsIt) {
    repository.commitFile("a.c", "1\n");
    const std::string commit = repository.git({"rev-parse", "HEAD"}).substr(0, 40);
    repository.write(".git/refs/heads/main", "junk\n");
    EXPECT_THAT(
        findings("HEAD commit"),
        IsOneFinding("problem", HasSubstr("the reference that HEAD names is damaged"), testing::_));
    std::filesystem::remove(repository.path(".git/refs/heads/main"));
    repository.git({"update-ref", "refs/heads/main", commit});
    EXPECT_THAT(findings("HEAD commit"), IsOneFinding("ok", HasSubstr("is readable"), ""));
}

TEST_F(DoctorRepository, AReferenceToAMissingObjectIsAProblem) {
    repository.commitFile("a.c", "1\n");
    const std::string missing(40, '1');
    repository.write(".git/refs/heads/gone", missing + "\n");
    EXPECT_THAT(findings("references"),
                IsOneFinding("problem",
                             "refs/heads/gone names the object " + missing + ", which is missing",
                             HasSubstr("git update-ref -d refs/heads/gone")));
    repository.write(".git/refs/tags/gone", missing + "\n");
    EXPECT_EQ(findings("references").size(), 2U);
}

TEST_F(DoctorRepository, PackedReferencesThatHoldJunkAreAProblem) {
    repository.commitFile("a.c", "1\n");
    repository.git({"pack-refs", "--all"});
    std::ofstream(repository.path(".git/packed-refs"), std::ios::app) << "junk\n";
    EXPECT_THAT(findings("references"),
                IsOneFinding("problem", HasSubstr("unexpected line in .git/packed-refs: junk"),
                             HasSubstr(repository.path(".git/packed-refs"))));
    EXPECT_EQ(findings("HEAD commit")[0]["health"], "problem");
}

TEST_F(DoctorRepository, AFileBelowRefsWithAnInvalidNameIsNoted) {
    repository.commitFile("a.c", "1\n");
    std::filesystem::copy_file(repository.path(".git/refs/heads/main"),
                               repository.path(".git/refs/heads/main (conflicted copy)"));
    EXPECT_THAT(
        findings("references"),
        IsOneFinding("note", HasSubstr("refs/heads/main (conflicted copy)"), HasSubstr("rm ")));
}

TEST_F(DoctorRepository, ManyBrokenReferencesAreNamedUpToALimitAndThenCounted) {
    repository.commitFile("a.c", "1\n");
    for (int i = 0; i < 30; ++i) {
        repository.write(".git/refs/heads/broken" + std::to_string(i), "junk\n");
    }
    const auto found = findings("references");
    EXPECT_LT(found.size(), 15U);
    EXPECT_THAT(found.back()["text"].get<std::string>(), HasSubstr("20 more"));
}

// ---- the object database ----------------------------------------------------------------------

TEST_F(DoctorRepository, AShallowFileThatHoldsJunkIsAProblem) {
    repository.commitFile("a.c", "1\n");
    EXPECT_THAT(findings("objects"), IsOneFinding("ok", HasSubstr("are complete"), ""));
    repository.write(".git/shallow", "junk\n");
    EXPECT_THAT(findings("objects"), IsOneFinding("problem", HasSubstr("bad shallow line: junk"),
                                                  HasSubstr(repository.path(".git/shallow"))));
}

TEST_F(DoctorRepository, AnAlternateThatDoesNotExistIsAProblem) {
    repository.commitFile("a.c", "1\n");
    repository.write(".git/objects/info/alternates", "/no/such/objects\n");
    EXPECT_THAT(findings("objects"),
                IsOneFinding("problem", HasSubstr("/no/such/objects"),
                             HasSubstr(repository.path(".git/objects/info/alternates"))));
}

TEST_F(DoctorRepository, AnIndexWithoutItsPackIsAProblem) {
    repository.commitFile("a.c", "1\n");
    repository.git({"gc", "--quiet"});
    for (const auto& file :
         std::filesystem::directory_iterator(repository.path(".git/objects/pack"))) {
        if (file.path().extension() == ".pack") {
            std::filesystem::remove(file.path());
            break;
        }
    }
    EXPECT_THAT(findings("objects"), IsOneFinding("problem", HasSubstr("no corresponding .pack"),
                                                  HasSubstr("git fetch --refetch REMOTE")));
}

/// The references are only broken until the pack index is repaired.
TEST_F(DoctorRepository, TheAdviceForADamagedIndexOfAPackRepairsItAndTheReferences) {
    repository.commitFile("a.c", "1\n");
    repository.git({"gc", "--quiet"});
    for (const auto& file :
         std::filesystem::directory_iterator(repository.path(".git/objects/pack"))) {
        if (file.path().extension() == ".idx") {
            std::filesystem::permissions(file.path(), std::filesystem::perms::owner_all);
            std::filesystem::resize_file(file.path(), 40);
        }
    }
    const auto references = findings("references");
    ASSERT_FALSE(references.empty());
    EXPECT_THAT(references[0]["advice"].get<std::string>(), StartsWith("Repair packs"));
    const auto objects = findings("objects");
    ASSERT_EQ(objects.size(), 1U);
    const std::string advice = objects[0]["advice"];
    ASSERT_THAT(advice, StartsWith("Recreate it with: "));
    EXPECT_EQ(std::system(("cd '" + repository.path() + "' && " +
                           advice.substr(advice.find(": ") + 2) + " >/dev/null 2>&1")
                              .c_str()),
              0);
    EXPECT_THAT(findings("objects"), IsOneFinding("ok", HasSubstr("complete"), ""));
    EXPECT_THAT(findings("references"), IsOneFinding("ok", HasSubstr("resolved"), ""));
}

// ---- worktrees --------------------------------------------------------------------------------

TEST_F(DoctorRepository, AMissingWorktreeIsNoted) {
    repository.commitFile("a.c", "1\n");
    repository.git({"worktree", "add", "--quiet", "-b", "other", "../linked"});
    EXPECT_THAT(findings("worktree"), IsEmpty());
    std::filesystem::remove_all(repository.path("../linked"));
    EXPECT_THAT(findings("worktree"),
                IsOneFinding("note", AllOf(HasSubstr("/linked"), HasSubstr("non-existent")),
                             HasSubstr("git worktree prune")));
}

// ---- git fsck ---------------------------------------------------------------------------------

TEST_F(DoctorRepository, WithFullEveryFindingOfFsckIsShown) {
    repository.commitFile("a.c", "1\n");
    EXPECT_THAT(findings("fsck"), IsEmpty());
    EXPECT_THAT(findingsIn(repository.path(), "fsck", {}, {"--full"}),
                IsOneFinding("ok", HasSubstr("git fsck"), ""));
    const std::string blob = repository.git({"rev-parse", "HEAD:a.c"}).substr(0, 40);
    std::filesystem::remove(looseObject("HEAD:a.c"));
    EXPECT_THAT(findings("HEAD commit"), IsOneFinding("ok", HasSubstr("is readable"), ""));
    const NebscOutcome outcome = nebsc({"doctor", "--full"});
    EXPECT_THAT(outcome.output, HasSubstr("problem  fsck         missing blob " + blob));
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST_F(DoctorRepository, TheAdvisedFetchRestoresLostObjects) {
    repository.commitFile("a.c", "1\n");
    const TestRepository clone;
    clone.git({"pull", "--quiet", repository.path(), "main"});
    const std::string object = looseObject("HEAD:a.c");
    std::filesystem::remove(object);
    const auto advice = findingsIn(repository.path(), "fsck", {}, {"--full"}).back()["advice"];
    EXPECT_THAT(advice.get<std::string>(), HasSubstr("'git fetch --refetch REMOTE'"));
    repository.git({"fetch", "--quiet", "--refetch", clone.path()});
    EXPECT_THAT(findingsIn(repository.path(), "fsck", {}, {"--full"}),
                IsOneFinding("ok", HasSubstr("no damage"), ""));
}

TEST_F(DoctorRepository, AnIndexWithAWrongChecksumIsRecreatedAndNotFetched) {
    repository.commitFile("a.c", "1\n");
    std::fstream(repository.path(".git/index"), std::ios::in | std::ios::out | std::ios::binary)
        .seekp(-20, std::ios::end)
        .write("wrong", 5);
    EXPECT_EQ(findingsIn(repository.path(), "fsck", {}, {"--full"}).back()["advice"],
              "Recreate it with: rm " + repository.path(".git/index") +
                  " && git reset (files stay as they are; what was staged is no longer staged)");
}

TEST_F(DoctorRepository, AMessageOfFsckOnTwoLinesIsOneFindingAndAWarningIsANote) {
    repository.commitFile("a.c", "1\n");
    const StandInGit git(repository.path(),
                         "case \"$*\" in *fsck*) echo 'warning in commit 1: missingSpace' >&2; "
                         "echo 'broken link from tree 1'; echo '              to blob 2'; exit 2;; "
                         "*) exec /usr/bin/git \"$@\";; esac");
    const auto found = findingsIn(repository.path(), "fsck", {git.path()}, {"--full"});
    ASSERT_EQ(found.size(), 3U) << found.dump(2);
    EXPECT_EQ(found[0]["health"], "note");
    EXPECT_EQ(found[0]["text"], "warning in commit 1: missingSpace");
    EXPECT_EQ(found[1]["health"], "problem");
    EXPECT_EQ(found[1]["text"], "broken link from tree 1 to blob 2");
}

TEST_F(DoctorRepository, AKilledFsckReportsNoDamage) {
    repository.commitFile("a.c", "1\n");
    const StandInGit git(repository.path(),
                         "case \"$*\" in *fsck*) kill -9 $$;; "
                         "*) exec /usr/bin/git \"$@\";; esac");
    EXPECT_THAT(findingsIn(repository.path(), "fsck", {git.path()}, {"--full"}),
                IsOneFinding("problem", HasSubstr("git fsck did not complete: "), ""));
}

TEST_F(DoctorRepository, ASignalEndsALongFsck) {
    repository.commitFile("a.c", "1\n");
    const StandInGit git(repository.path(),
                         "case \"$*\" in *fsck*) touch started; exec sleep 600;; "
                         "*) exec /usr/bin/git \"$@\";; esac");
    Nebsc nebsc({"doctor", "--full"}, {.folder = repository.path(), .variables = {git.path()}});
    while (!isThere("started")) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    nebsc.send(SIGINT);
    const NebscOutcome outcome = nebsc.outcome();
    EXPECT_EQ(outcome.exitStatus, 130);
    EXPECT_EQ(outcome.output, "");
}

// ---- no changes -------------------------------------------------------------------------------

TEST_F(DoctorRepository, IsNotChanged) {
    repository.commitFile("a.c", "1\n");
    repository.write("a.c", "2\n");
    const auto listing = [this] {
        std::string lines;
        for (const auto& file :
             std::filesystem::recursive_directory_iterator(repository.path(".git"))) {
            // libc++ counts in __int128, which streams do not print.
            const auto written = std::chrono::duration_cast<std::chrono::nanoseconds>(
                file.last_write_time().time_since_epoch());
            lines += file.path().string() + ' ' + std::to_string(written.count()) + '\n';
        }
        return lines;
    };
    const std::string before = listing();
    static_cast<void>(nebsc({"doctor", "--full"}));
    EXPECT_EQ(listing(), before);
}

}  // namespace
}  // namespace neb::test
