#include "Classes/GitExtensions/RepositoryKinds.h"

namespace neb::test {

namespace {

std::string copied(const TestRepository& source, const TemporaryFolder& folder,
                   std::vector<std::string> options) {
    std::vector<std::string> arguments{"clone", "-q"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.insert(arguments.end(), {"file://" + source.path(), folder.path("clone")});
    source.git(arguments);
    return folder.path("clone");
}

/// Stops a merge or rebase of "rival" at a conflict.
std::string stalled(const TestRepository& source, const char* command) {
    source.git({"checkout", "-q", "-b", "rival", "HEAD~1"});
    source.commitFile("f", "rival\n", "Rival");
    source.git({"checkout", "-q", "main"});
    EXPECT_NE(source.gitStatus({command, "-q", "rival"}), 0);
    return source.path();
}

}  // namespace

const std::vector<RepositoryKind>& repositoryKinds() {
    static const std::vector<RepositoryKind> all{
        {"unborn",
         [](const TestRepository& source, const TemporaryFolder& folder) {
             source.git({"init", "-q", folder.path("new")});
             return folder.path("new");
         }},
        {"bare", [](const TestRepository& source,
                    const TemporaryFolder& folder) { return copied(source, folder, {"--bare"}); }},
        {"detached",
         [](const TestRepository& source, const TemporaryFolder& /*folder*/) {
             source.git({"checkout", "-q", "--detach"});
             return source.path();
         }},
        {"shallow",
         [](const TestRepository& source, const TemporaryFolder& folder) {
             return copied(source, folder, {"--depth=1"});
         }},
        {"partial",
         [](const TestRepository& source, const TemporaryFolder& folder) {
             source.git({"config", "uploadpack.allowFilter", "true"});
             return copied(source, folder, {"--filter=blob:none", "--no-checkout"});
         }},
        {"sparse",
         [](const TestRepository& source, const TemporaryFolder& folder) {
             source.commitFile("far/away", "1\n");
             return copied(source, folder, {"--sparse"});
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
                           const TemporaryFolder& /*folder*/) { return stalled(source, "merge"); }},
        {"in a rebase",
         [](const TestRepository& source, const TemporaryFolder& /*folder*/) {
             return stalled(source, "rebase");
         }},
    };
    return all;
}

}  // namespace neb::test
