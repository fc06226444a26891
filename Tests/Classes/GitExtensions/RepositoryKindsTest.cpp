// Every type that reads, in every kind of repository: it works, or says why not.

#include "Classes/GitExtensions/RepositoryKinds.h"

namespace neb::test {
namespace {

/// The class of the error of a type in a kind of repository. All others work.
struct ReadRefusal {
    std::string kind;
    std::int32_t type;
    std::string errorClass;
};

const ReadRefusal readRefusals[] = {
    {"unborn", NEBSourceControlRequestHistory, "no-commits-yet"},
    {"unborn", NEBSourceControlRequestContent, "no-commits-yet"},
    {"unborn", NEBSourceControlRequestAnnotation, "no-commits-yet"},
    {"unborn", NEBSourceControlRequestTree, "no-commits-yet"},
    {"bare", NEBSourceControlRequestWorkingCopyState, "no-work-tree"},
    {"bare", NEBSourceControlRequestChanges, "no-work-tree"},
    {"bare", NEBSourceControlRequestStash, "no-work-tree"},
    {"partial", NEBSourceControlRequestContent, "objects-missing"},
    {"partial", NEBSourceControlRequestAnnotation, "objects-missing"},
    {"partial", NEBSourceControlRequestTree, "objects-missing"},
};

std::string expectedOfReading(const std::string& kind, std::int32_t type) {
    for (const ReadRefusal& refusal : readRefusals) {
        if (refusal.kind == kind && refusal.type == type) {
            return refusal.errorClass;
        }
    }
    return "(success)";
}

class RepositoryKinds : public HygienicTest {};

TEST_F(RepositoryKinds, AreReadOrRefusedWithTheReason) {
    for (const RepositoryKind& kind : repositoryKinds()) {
        const TestRepository source;
        source.commitFile("f", "1\n", "First");
        source.commitFile("f", "2\n", "Second");
        const TemporaryFolder folder;
        const std::string location = kind.make(source, folder);
        for (const auto& row : NEBSourceControlAllRequestTypes()) {
            const auto request = requestFor(row.type, location);
            if (row.type < NEBSourceControlFirstExtendedRequestType ||
                NEBSourceControlEffectOfRequest(*request) != NEBSourceControlRequestEffect::reads) {
                continue;
            }
            if (!row.requirements.empty()) {
                request->files = valuesOf({"f"});
            }
            EXPECT_EQ(errorClassOf(request), expectedOfReading(kind.name, row.type))
                << kind.name << ": " << row.name;
        }
    }
}

}  // namespace
}  // namespace neb::test
