// Content and settings that git refuses.

#include <filesystem>

#include "Failure.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb::test {

namespace {

Request addOf(Scene& scene, const std::string& file) {
    return scene.request(NEBSourceControlRequestAdd).on({file});
}

const Failure failures[] = {
    {.how = "an add of line endings that core.safecrlf refuses",
     .errorClass = NEBSourceControlLineEndsRefusedErrorClass,
     .exitStatus = 128,
     .files = {"b"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"config", "core.autocrlf", "input"});
         scene.work().git({"config", "core.safecrlf", "true"});
         scene.work().write("b", "1\r\n");
         return addOf(scene, "b");
     }},
    {.how = "an add of a file that does not have the encoding of its attribute",
     .errorClass = NEBSourceControlEncodingFailedErrorClass,
     .exitStatus = 128,
     .files = {"b"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().write(".gitattributes", "b working-tree-encoding=UTF-16\n");
         scene.work().write("b", "1\n");
         return addOf(scene, "b");
     }},
    {.how = "an add of a repository without a commit",
     .errorClass = NEBSourceControlEmbeddedRepositoryErrorClass,
     .exitStatus = 128,
     .files = {"sub/"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"init", "--quiet", "sub"});
         return addOf(scene, "sub");
     }},
    {.how = "a patch to stage that does not fit the file",
     .errorClass = NEBSourceControlPatchFailedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestStage)
             .with(NEBSourceControlRequestOptionPatch,
                   "--- a/a\n+++ b/a\n@@ -1 +1 @@\n-other\n+2\n");
     }},
    {.how = "an annotation of lines beyond the end of the file",
     .errorClass = NEBSourceControlLineUnknownErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestAnnotation)
             .on({"a"})
             .with(NEBSourceControlRequestOptionFirstLine, 100);
     }},
    {.how = "a blame with a missing list of revisions to ignore",
     .errorClass = NEBSourceControlConfiguredFileMissingErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"config", "blame.ignoreRevsFile", "nosuch"});
         return scene.request(NEBSourceControlRequestBlame).on({"a"});
     }},
    {.how = "a diff through a program that does not exist",
     .errorClass = NEBSourceControlProgramMissingErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write(".gitattributes", "a diff=words\n");
         scene.work().git({"config", "diff.words.textconv", "/nosuch/words"});
         scene.work().write("a", "2\n");
         return scene.request(NEBSourceControlRequestDiff);
     }},
    {.how = "a commit with an invalid date",
     .errorClass = NEBSourceControlIdentityInvalidErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write("a", "2\n");
         scene.setVariable("GIT_COMMITTER_DATE", "noon");
         return scene.commit({"a"});
     }},
    {.how = "a merge of an unsigned commit where signatures are required",
     .errorClass = NEBSourceControlSignatureUntrustedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.withTopic("b", "1\n");
         scene.work().git({"config", "merge.verifySignatures", "true"});
         return scene.request(NEBSourceControlRequestMerge).to("topic");
     }},
    {.how = "a commit while a folder has the name of the message file",
     .errorClass = NEBSourceControlFileTypeWrongErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         std::filesystem::remove(scene.work().path(".git/COMMIT_EDITMSG"));
         std::filesystem::create_directory(scene.work().path(".git/COMMIT_EDITMSG"));
         scene.work().write("a", "2\n");
         return scene.commit({"a"});
     }},
    {.how = "a status with an invalid compression level",
     .errorClass = NEBSourceControlConfigurationBrokenErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"config", "core.compression", "99"});
         return scene.request(NEBSourceControlRequestStatus);
     }},
    {.how = "a status with an invalid push.default",
     .errorClass = NEBSourceControlConfigurationBrokenErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"config", "push.default", "everything"});
         return scene.request(NEBSourceControlRequestStatus);
     }},
    {.how = "an update with an invalid pull.rebase",
     .errorClass = NEBSourceControlConfigurationBrokenErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         scene.work().git({"config", "pull.rebase", "perhaps"});
         return scene.pull();
     }},
    {.how = "a checkout with an invalid conflict style",
     .errorClass = NEBSourceControlConfigurationBrokenErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.withTopic("b", "1\n");
         scene.work().git({"config", "merge.conflictStyle", "nosuch"});
         return scene.request(NEBSourceControlRequestCheckout).to("topic");
     }},
};

}  // namespace

Failures contentFailures() {
    return failures;
}

}  // namespace neb::test
