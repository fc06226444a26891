// MercurialTest.h - a fixture for the plug-in of examples/mercurial-plug-in, with the real hg.
#pragma once

#include <gmock/gmock.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "nebsc/NebscRun.h"

namespace neb::test {

/// A repository with two commits: a.txt of one line, then b.txt, and a second line of a.txt.
class Mercurial : public testing::Test {
protected:
    static constexpr const char* plugIn = NEB_TEST_MODULES "/mercurial.so";

    void SetUp() override {
        static const std::unique_ptr<TemporaryFolder> origin = newRepository();
        std::filesystem::copy(origin->path(), folder.path(),
                              std::filesystem::copy_options::recursive);
    }

    /// Runs hg at the top and returns its output. Fails if hg fails.
    std::string hg(const std::vector<std::string>& arguments) const {
        return runHg(std::filesystem::exists(top) ? top : folder.path(), arguments);
    }
    /// Returns the abbreviated id of a revision.
    [[nodiscard]] std::string idOf(const std::string& revision) const {
        return hg({"log", "--rev=" + revision, "--template={node|short}"});
    }
    /// Runs nebsc with the plug-in, in a folder below that of the test, by default at the top.
    [[nodiscard]] NebscOutcome nebsc(std::vector<std::string> arguments,
                                     std::string_view below = "work") const {
        arguments.insert(arguments.begin(), {"--plugin", plugIn});
        return runNebsc(arguments, {.folder = folder.path(below)});
    }
    /// Returns the outcome of a request about the repository.
    [[nodiscard]] nlohmann::ordered_json request(nlohmann::ordered_json request) const {
        request["sourceTree"]["location"] = top;
        return runNebsc({"request", "--plugin", plugIn}, {.input = request.dump()}).json();
    }
    /// Returns the class of the error of such an outcome; "none" without an error.
    [[nodiscard]] std::string classOf(const nlohmann::ordered_json& request) const {
        const auto error = this->request(request)["error"];
        return error.is_null() ? "none" : error["class"].get<std::string>();
    }
    /// Returns the state of each file that a status lists, by its path.
    [[nodiscard]] std::map<std::string, int> states() const {
        std::map<std::string, int> all;
        const auto outcome = request({{"type", 15}});
        for (const auto& record : outcome["result"]) {
            all[record["NEBSourceControlOperationPathKey"]] =
                record["NEBSourceControlOperationWCStatusKey"];
        }
        return all;
    }

    TemporaryFolder folder;
    const std::string top = folder.path("work");

private:
    static std::string runHg(const std::string& where, const std::vector<std::string>& arguments) {
        std::vector<std::string> all{"HGPLAIN=1", "HGENCODING=UTF-8", "hg"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const NebscOutcome outcome = runProgram("/usr/bin/env", all, {.folder = where});
        EXPECT_EQ(outcome.exitStatus, 0) << outcome.errors;
        return outcome.output;
    }
    /// The repository, of which each test has a copy.
    static std::unique_ptr<TemporaryFolder> newRepository() {
        auto origin = std::make_unique<TemporaryFolder>();
        const std::string work = origin->path("work");
        runHg(origin->path(), {"init", work});
        origin->write("work/.hg/hgrc", "[ui]\nusername = Ann Example <ann@example.org>\n");
        origin->write("work/a.txt", "one\n");
        runHg(work, {"commit", "--addremove", "--quiet", "--date=1772600767 0", "--message=First"});
        origin->write("work/a.txt", "one\ntwo\n");
        origin->write("work/b.txt", "b\n");
        runHg(work, {"commit", "--addremove", "--quiet", "--date=1772600768 0",
                     "--message=Grüße\n\nmore"});
        return origin;
    }
};

}  // namespace neb::test
