// GitNamedObjectTest.cpp - why a file or folder of a revision cannot be read.
#include "GitExtensions/GitNamedObject.h"

#include <filesystem>

#include "Classes/GitExtensions/ExtensionTest.h"
#include "GitExtensions/GitChanges.h"

namespace neb::test {
namespace {

class NamedObject : public ExtensionTest {
protected:
    /// Returns the error of a request for a path of a revision.
    [[nodiscard]] NEBSourceControlError errorOf(std::int32_t type, const std::string& path,
                                                const std::string& revision = "HEAD") const {
        auto asked = fileRequest(type, path);
        asked->startingRevision = revision;
        const auto operation = perform(asked);
        EXPECT_TRUE(operation->error().has_value()) << path;
        return operation->error().value_or(NEBSourceControlError());
    }
    [[nodiscard]] std::string classOf(std::int32_t type, const std::string& path,
                                      const std::string& revision = "HEAD") const {
        return errorOf(type, path, revision).errorClass.value_or("(none)");
    }

    static constexpr std::int32_t content = NEBSourceControlRequestContent;
    static constexpr std::int32_t tree = NEBSourceControlRequestTree;
};

TEST_F(NamedObject, OfAnUnknownRevisionOrPath) {
    repository.commitFile("dir/a", "1\n");
    for (const std::int32_t type : {content, tree}) {
        EXPECT_EQ(classOf(type, "dir", "nosuch"), "revision-unknown") << type;
        EXPECT_EQ(classOf(type, "nosuch"), "path-unknown") << type;
        EXPECT_EQ(errorOf(type, "nosuch").files, std::vector<std::string>{"nosuch"}) << type;
    }
    EXPECT_EQ(errorOf(tree, "dir", "nosuch").localizedDescription(),
              "There is no such branch, tag or commit.");
    EXPECT_EQ(errorOf(tree, "nosuch").localizedDescription(),
              "There is no such file, or git does not track it.");
}

TEST_F(NamedObject, OfAnotherType) {
    repository.commitFile("dir/a", "1\n");
    const TestRepository other;
    other.commitFile("b", "2\n");
    repository.git(
        {"-c", "protocol.file.allow=always", "submodule", "--quiet", "add", other.path(), "s*b"});
    repository.git({"commit", "-q", "-m", "x"});
    const NEBSourceControlError folder = errorOf(content, "dir");
    EXPECT_EQ(folder.errorClass, "file-type-wrong");
    EXPECT_EQ(folder.localizedDescription(), "\"dir\" is a folder.");
    EXPECT_EQ(folder.files, std::vector<std::string>{"dir"});
    EXPECT_EQ(errorOf(tree, "dir/a").localizedDescription(), "\"dir/a\" is not a folder.");
    EXPECT_EQ(errorOf(content, "s*b").localizedDescription(), "\"s*b\" is a submodule.");
    auto staged =
        fileRequest(content, "s*b", NEBDictionary{{NEBSourceControlRequestOptionStage, 0}});
    EXPECT_EQ(errorClassOf(staged), "file-type-wrong");
}

TEST_F(NamedObject, ThatIsMissing) {
    repository.commitFile("dir/a", "1\n");
    for (const auto& [type, name, path] :
         {std::tuple{content, "HEAD:dir/a", "dir/a"}, std::tuple{tree, "HEAD:dir", "dir"}}) {
        const std::string id = lineOf(repository, {"rev-parse", name});
        std::filesystem::remove(
            repository.path(".git/objects/" + id.substr(0, 2) + "/" + id.substr(2)));
        EXPECT_EQ(classOf(type, path), "objects-damaged") << name;
    }
}

TEST_F(NamedObject, BeforeTheFirstCommit) {
    EXPECT_EQ(classOf(content, "a"), "no-commits-yet");
    EXPECT_EQ(classOf(tree, "a"), "no-commits-yet");
    EXPECT_EQ(errorClassOf(request(tree)), "no-commits-yet");
}

TEST_F(NamedObject, NeedsAName) {
    repository.commitFile("a", "1\n");
    for (const std::int32_t type : {content, std::int32_t{NEBSourceControlRequestAnnotation}}) {
        EXPECT_EQ(errorClassOf(request(type)), "request-invalid") << type;
        EXPECT_EQ(classOf(type, ""), "request-invalid") << type;
    }
}

/// The table of the other types takes both messages for something else.
TEST(ExtensionError, IsDescribedByItsClass) {
    GitChangesOperation operation(requestFor(NEBSourceControlRequestChanges, "/r"));
    const auto denied = operation.errorFromErrorMessage("error: open(\"f\"): Permission denied\n");
    EXPECT_THAT(denied, HasErrorClass(NEBSourceControlPermissionDeniedErrorClass));
    EXPECT_EQ(denied->code, NEBSourceControlNoPermissionError);
    EXPECT_EQ(denied->localizedDescription(),
              "The operating system denied access to a file or folder.");
    const auto unborn = operation.errorFromErrorMessage("fatal: Not a valid object name HEAD\n");
    EXPECT_THAT(unborn, HasErrorClass(NEBSourceControlNoCommitsYetErrorClass));
    EXPECT_EQ(unborn->localizedDescription(), "There are no commits yet.");
}

}  // namespace
}  // namespace neb::test
