#include "Doctor/Checks.h"
#include "Platform/Text.h"
#include "Session/GitProgram.h"

namespace neb::nebsc {

namespace {

constexpr const char* subject = "HEAD commit";
constexpr const char* treeUnreadable = "its root tree cannot be read: ";

std::string adviceOnUnreadable() {
    return "'nebsc doctor --full' lists all that is missing or damaged. " +
           std::string(adviceOnLostObjects);
}

/// git cannot resolve HEAD: most often its branch has no commits yet. git symbolic-ref(1) names a
/// branch without commits, and fails where the branch is damaged.
void addUnresolved(Examination& examination) {
    if (examination.ask({"symbolic-ref", "--quiet", "HEAD"}).status.isSuccess()) {
        examination.add(Health::note, subject, "the current branch has no commits yet");
    } else {
        examination.add(Health::problem, subject,
                        "cannot be found: the reference that HEAD names is damaged",
                        "Repair the reference as described above.");
    }
}

bool isPartialClone(Examination& examination) {
    return answerOf(examination.ask({"config", "--get-regexp",
                                     R"(^(extensions\.partialclone|remote\..*\.promisor)$)"}))
        .has_value();
}

/// The object that the list of rev-list(1), made with --missing=print, marks as missing; empty
/// where it marks none.
std::string missingObjectIn(std::string_view list) {
    std::string object;
    forEachPiece(list, '\n', [&object](std::string_view line) {
        if (line.starts_with('?')) {
            object = line.substr(1);
        }
    });
    return object;
}

void addMissingTree(Examination& examination, const std::string& tree) {
    if (isPartialClone(examination)) {
        examination.add(Health::note, subject,
                        "is readable; its root tree is not here yet: git fetches it from the "
                        "remote as soon as it is needed");
    } else {
        examination.add(Health::problem, subject, "its root tree " + tree + " is missing",
                        adviceOnUnreadable());
    }
}

}  // namespace

/// A commit-graph file holds a copy of what a commit says, which hides that the commit is damaged.
void checkHEADCommit(Examination& examination) {
    const ChildOutcome head = examination.ask({"rev-parse", "--verify", "--quiet", "HEAD"});
    if (head.status.exitStatus() == 1) {
        addUnresolved(examination);
        return;
    }
    // It lists the commit and its root tree, and fetches neither in a partial clone.
    const ChildOutcome list =
        examination.ask({"-c", "core.commitGraph=false", "rev-list", "--objects", "--no-walk",
                         "--filter=tree:1", "--missing=print", "HEAD", "--"});
    if (!list.status.isSuccess()) {
        const bool isCommitReadable =
            examination.ask({"cat-file", "commit", "HEAD"}).status.isSuccess();
        examination.add(Health::problem, subject,
                        (isCommitReadable ? treeUnreadable : "cannot be read: ") + reasonOf(list),
                        adviceOnUnreadable());
        return;
    }
    if (const std::string tree = missingObjectIn(list.output); !tree.empty()) {
        addMissingTree(examination, tree);
        return;
    }
    const ChildOutcome tree = examination.ask({"cat-file", "tree", "HEAD"});
    if (!tree.status.isSuccess()) {
        examination.add(Health::problem, subject, treeUnreadable + reasonOf(tree),
                        adviceOnUnreadable());
        return;
    }
    examination.add(Health::ok, subject, "is readable, and so is its root tree");
}

}  // namespace neb::nebsc
