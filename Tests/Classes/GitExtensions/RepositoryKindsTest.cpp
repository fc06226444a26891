// Every type that reads, in every kind of repository: it works, or says why not.

#include <functional>

#include "Classes/GitExtensions/ExtensionTest.h"

namespace neb::test {
namespace {

/// A repository of one kind, made from one with two commits of the file "f".
struct Kind {
    std::string name;
    /// Makes the repository in the folder and returns its location.
    std::function<std::string(const TestRepository& source, const TemporaryFolder& folder)> make;
};

std::string cloned(const TestRepository& source, const TemporaryFolder& folder,
                   std::vector<std::string> options) {
    std::vector<std::string> arguments{"clone", "-q"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.insert(arguments.end(), {"file://" + source.path(), folder.path("clone")});
    source.git(arguments);
    return folder.path("clone");
}

/// Stops a merge or rebase of "rival" at a conflict.
std::string stopped(const TestRepository& source, const char* command) {
    source.git({"checkout", "-q", "-b", "rival", "HEAD~1"});
    source.commitFile("f", "rival\n", "Rival");
    source.git({"checkout", "-q", "main"});
    EXPECT_NE(source.gitStatus({command, "-q", "rival"}), 0);
    return source.path();
}

const std::vector<Kind>& kinds() {
    static const std::vector<Kind> all{
        {"unborn",
         [](const TestRepository& source, const TemporaryFolder& folder) {
             source.git({"init", "-q", folder.path("new")});
             return folder.path("new");
         }},
        {"bare", [](const TestRepository& source,
                    const TemporaryFolder& folder) { return cloned(source, folder, {"--bare"}); }},
        {"detached",
         [](const TestRepository& source, const TemporaryFolder& /*folder*/) {
             source.git({"checkout", "-q", "--detach"});
             return source.path();
         }},
        {"shallow",
         [](const TestRepository& source, const TemporaryFolder& folder) {
             return cloned(source, folder, {"--depth=1"});
         }},
        {"partial",
         [](const TestRepository& source, const TemporaryFolder& folder) {
             source.git({"config", "uploadpack.allowFilter", "true"});
             return cloned(source, folder, {"--filter=blob:none", "--no-checkout"});
         }},
        {"sparse",
         [](const TestRepository& source, const TemporaryFolder& folder) {
             source.commitFile("far/away", "1\n");
             return cloned(source, folder, {"--sparse"});
         }},
        {"linked worktree",
         [](const TestRepository& source, const TemporaryFolder& folder) {
             source.git({"worktree", "add", "-q", "-b", "side", folder.path("linked")});
             return folder.path("linked");
         }},
        {"submodule",
         [](const TestRepository& source, const TemporaryFolder& folder) {
             source.git({"init", "-q", folder.path("outer")});
             source.git({"-C", folder.path("outer"), "submodule", "--quiet", "add", source.path(),
                         "inner"});
             return folder.path("outer/inner");
         }},
        {"SHA-256",
         [](const TestRepository& source, const TemporaryFolder& folder) {
             const std::string path = folder.path("new");
             source.git({"init", "-q", "--object-format=sha256", path});
             folder.write("new/f", "1\n");
             source.git({"-C", path, "add", "f"});
             source.git({"-C", path, "commit", "-q", "-m", "First"});
             return path;
         }},
        {"in conflict", [](const TestRepository& source,
                           const TemporaryFolder& /*folder*/) { return stopped(source, "merge"); }},
        {"in a rebase",
         [](const TestRepository& source, const TemporaryFolder& /*folder*/) {
             return stopped(source, "rebase");
         }},
    };
    return all;
}

/// The class of the error of a type in a kind of repository. All others work.
struct Refusal {
    std::string kind;
    std::int32_t type;
    std::string errorClass;
};

const Refusal refusals[] = {
    {"unborn", NEBSourceControlRequestHistory, "no-commits-yet"},
    {"unborn", NEBSourceControlRequestContent, "revision-unknown"},
    {"unborn", NEBSourceControlRequestAnnotation, "no-commits-yet"},
    {"unborn", NEBSourceControlRequestTree, "revision-unknown"},
    {"bare", NEBSourceControlRequestWorkingCopyState, "no-work-tree"},
    {"bare", NEBSourceControlRequestChanges, "no-work-tree"},
    {"partial", NEBSourceControlRequestContent, "objects-missing"},
    {"partial", NEBSourceControlRequestAnnotation, "objects-missing"},
    {"partial", NEBSourceControlRequestTree, "objects-missing"},
};

std::string expectedFor(const std::string& kind, std::int32_t type) {
    for (const Refusal& refusal : refusals) {
        if (refusal.kind == kind && refusal.type == type) {
            return refusal.errorClass;
        }
    }
    return "(success)";
}

class RepositoryKinds : public HygienicTest {};

TEST_F(RepositoryKinds, AreReadOrRefusedWithTheReason) {
    for (const Kind& kind : kinds()) {
        const TestRepository source;
        source.commitFile("f", "1\n", "First");
        source.commitFile("f", "2\n", "Second");
        const TemporaryFolder folder;
        const std::string location = kind.make(source, folder);
        for (const auto& row : NEBSourceControlAllRequestTypes()) {
            if (row.type < NEBSourceControlFirstExtendedRequestType ||
                row.effect != NEBSourceControlRequestEffect::reads) {
                continue;
            }
            const auto request = requestFor(row.type, location);
            if (!row.requirements.empty()) {
                request->files = valuesOf({"f"});
            }
            EXPECT_EQ(errorClassOf(request), expectedFor(kind.name, row.type))
                << kind.name << ": " << row.name;
        }
    }
}

}  // namespace
}  // namespace neb::test
