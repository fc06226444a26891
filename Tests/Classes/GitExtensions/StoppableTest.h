// StoppableTest.h - a fixture for changes that can stop at conflicts.
#pragma once

#include <gmock/gmock.h>

#include <string>

#include "Classes/GitExtensions/ChangeRequests.h"

namespace neb::test {

/// A change that can stop, and what finishes it.
class Stoppable : public ChangeTest {
protected:
    [[nodiscard]] Operation integrated(const char* strategy, const NEBValue& destination) const {
        const auto request = requestOf(NEBSourceControlRequestIntegrate,
                                       {{NEBSourceControlRequestOptionStrategy, strategy}});
        request->destination = destination;
        return performed(request);
    }
    [[nodiscard]] Operation finished(const char* action) const {
        return performed(NEBSourceControlRequestFinish,
                         {{NEBSourceControlRequestOptionAction, action}});
    }
    [[nodiscard]] Operation picked(const char* action, const NEBValue& revision,
                                   NEBDictionary options = {}) const {
        options.set(NEBSourceControlRequestOptionAction, action);
        const auto request = requestOf(NEBSourceControlRequestPick, std::move(options));
        request->startingRevision = revision;
        return performed(request);
    }
    /// Expects both ids of the first record, and no conflict.
    void expectMoved(const NEBSourceControlOperation& operation, const std::string& before) const {
        EXPECT_EQ(operation.error(), std::nullopt);
        EXPECT_EQ(operation.result(),
                  NEBSourceControlResult({{{NEBSourceControlOperationKindKey, "head"},
                                           {NEBSourceControlOperationOldObjectIDKey, before},
                                           {NEBSourceControlOperationObjectIDKey, head()}}}));
    }
    /// Expects that the operation stopped at the file "a.c".
    static void expectConflict(const NEBSourceControlOperation& operation) {
        EXPECT_THAT(operation.error(), HasErrorClass(NEBSourceControlConflictErrorClass));
        EXPECT_THAT(textsOf(operation, NEBSourceControlOperationKindKey),
                    testing::ElementsAre("head", "conflict"));
        EXPECT_THAT(textsOf(operation, NEBSourceControlOperationPathKey),
                    testing::ElementsAre("", "a.c"));
        EXPECT_EQ(operation.result()->back().text(NEBSourceControlOperationConflictKey),
                  "both modified");
    }
    void resolve() const {
        repository.write("a.c", "resolved\n");
        repository.git({"add", "a.c"});
    }
    /// Makes the branch "easy", which adds the file "b.c".
    void makeEasyBranch() const {
        repository.git({"checkout", "-q", "-b", "easy", "HEAD~1"});
        repository.commitFile("b.c", "1\n", "Easy");
        repository.git({"checkout", "-q", "main"});
    }
};

}  // namespace neb::test
