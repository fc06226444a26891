// Content that git refuses, and settings that make it refuse.

#include <filesystem>

#include "Failure.h"

namespace neb::test {

namespace {

Request addOf(Scene& scene, const std::string& file) {
    return scene.ask(NEBSourceControlRequestAdd).on({file});
}

}  // namespace

Failures contentFailures() {
    return {
        {"an add of line ends that the settings refuse",
         "line-ends-refused",
         -1,
         128,
         {"b"},
         [](Scene& scene) -> Request {
             scene.work().git({"config", "core.autocrlf", "input"});
             scene.work().git({"config", "core.safecrlf", "true"});
             scene.work().write("b", "1\r\n");
             return addOf(scene, "b");
         }},
        {"an add of a file that is not in the encoding of its attribute",
         "encoding-failed",
         -1,
         128,
         {"b"},
         [](Scene& scene) -> Request {
             scene.work().write(".gitattributes", "b working-tree-encoding=UTF-16\n");
             scene.work().write("b", "1\n");
             return addOf(scene, "b");
         }},
        {"an add of a repository without a commit",
         "embedded-repository",
         -1,
         128,
         {"sub/"},
         [](Scene& scene) -> Request {
             scene.work().git({"init", "--quiet", "sub"});
             return addOf(scene, "sub");
         }},
        {"a blame with a list of revisions to ignore that is not there",
         "configured-file-missing",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"config", "blame.ignoreRevsFile", "nosuch"});
             return scene.ask(NEBSourceControlRequestBlame).on({"a"});
         }},
        {"a difference by way of a program that is not there",
         "program-missing",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write(".gitattributes", "a diff=words\n");
             scene.work().git({"config", "diff.words.textconv", "/nosuch/words"});
             scene.work().write("a", "2\n");
             return scene.ask(NEBSourceControlRequestDiff);
         }},
        {"a commit at a date that is none",
         "identity-invalid",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write("a", "2\n");
             scene.setVariable("GIT_COMMITTER_DATE", "noon");
             return scene.commit({"a"});
         }},
        {"a merge of a commit without a signature where one is wanted",
         "signature-untrusted",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.withTopic("b", "1\n");
             scene.work().git({"config", "merge.verifySignatures", "true"});
             return scene.ask(NEBSourceControlRequestMerge).to("topic");
         }},
        {"a commit while a folder has the name of the file for its message",
         "file-type-wrong",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             std::filesystem::remove(scene.work().path(".git/COMMIT_EDITMSG"));
             std::filesystem::create_directory(scene.work().path(".git/COMMIT_EDITMSG"));
             scene.work().write("a", "2\n");
             return scene.commit({"a"});
         }},
        {"a status with a level of compression that there is not",
         "configuration-broken",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"config", "core.compression", "99"});
             return scene.ask(NEBSourceControlRequestStatus);
         }},
        {"a status with a way to push that there is not",
         "configuration-broken",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"config", "push.default", "everything"});
             return scene.ask(NEBSourceControlRequestStatus);
         }},
        {"an update with a way to rebase that there is not",
         "configuration-broken",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             scene.work().git({"config", "pull.rebase", "perhaps"});
             return scene.pull();
         }},
        {"a checkout with a style of conflicts that there is not",
         "configuration-broken",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.withTopic("b", "1\n");
             scene.work().git({"config", "merge.conflictStyle", "nosuch"});
             return scene.ask(NEBSourceControlRequestCheckout).to("topic");
         }},
    };
}

}  // namespace neb::test
