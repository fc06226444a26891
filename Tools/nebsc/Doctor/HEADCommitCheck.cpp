#include "Doctor/Checks.h"
#include "Platform/Text.h"
#include "Session/GitProgram.h"

namespace neb::nebsc {

namespace {

constexpr const char* subject = "HEAD commit";
constexpr const char* commitUnreadable = "cannot be read: ";
constexpr const char* treeUnreadable = "its root tree cannot be read: ";

std::string adviceOnUnreadable() {
    return "'nebsc doctor --full' lists all missing or damaged objects. " +
           std::string(adviceOnLostObjects);
}

/// Adds a finding for a HEAD that git cannot resolve. Usually its branch has no commits yet; git
/// symbolic-ref(1) succeeds then, and fails for a damaged branch.
void addUnresolved(Examination& examination) {
    if (examination.query({"symbolic-ref", "--quiet", "HEAD"}).status.isSuccess()) {
        examination.add(Health::note, subject, "the current branch has no commits yet");
    } else {
        examination.add(Health::problem, subject,
                        "cannot be found: the reference that HEAD names is damaged",
                        "Repair the reference as described above.");
    }
}

bool isPartialClone(Examination& examination) {
    return trimmedOutputOf(examination.query({"config", "--get-regexp",
                                              R"((^extensions\.partialclone|\.promisor)$)"}))
        .has_value();
}

/// Returns the missing object in the output of git rev-list(1) --missing=print; empty without one.
std::string missingObjectIn(std::string_view list) {
    std::string object;
    forEachField(list, '\n', [&object](std::string_view line) {
        if (line.starts_with('?')) {
            object = line.substr(1);
        }
    });
    return object;
}

void addMissingTree(Examination& examination, const std::string& tree) {
    if (isPartialClone(examination)) {
        examination.add(Health::note, subject,
                        "is readable; its root tree is not fetched yet: git fetches it from the "
                        "remote when needed");
    } else {
        examination.add(Health::problem, subject, "its root tree " + tree + " is missing",
                        adviceOnUnreadable());
    }
}

}  // namespace

/// Reads without the commit-graph file: its copy of the commit would hide that the commit is
/// damaged.
void checkHEADCommit(Examination& examination) {
    const ChildOutcome head = examination.query({"rev-parse", "--verify", "--quiet", "HEAD"});
    if (head.status.exitStatus() == 1) {
        addUnresolved(examination);
        return;
    }
    // Lists the commit and its root tree; in a partial clone it fetches neither.
    const ChildOutcome list =
        examination.query({"-c", "core.commitGraph=false", "rev-list", "--objects", "--no-walk",
                           "--filter=tree:1", "--missing=print", "HEAD", "--"});
    if (!list.status.isSuccess()) {
        const bool isCommitReadable =
            examination.query({"cat-file", "commit", "HEAD"}).status.isSuccess();
        examination.add(Health::problem, subject,
                        (isCommitReadable ? treeUnreadable : commitUnreadable) + reasonOf(list),
                        adviceOnUnreadable());
        return;
    }
    if (const std::string object = missingObjectIn(list.output); !object.empty()) {
        // git 2.47 and newer list a missing commit as well.
        const ChildOutcome commit = examination.query({"cat-file", "commit", "HEAD"});
        if (commit.status.isSuccess()) {
            addMissingTree(examination, object);
        } else {
            examination.add(Health::problem, subject, commitUnreadable + reasonOf(commit),
                            adviceOnUnreadable());
        }
        return;
    }
    const ChildOutcome tree = examination.query({"cat-file", "tree", "HEAD"});
    if (!tree.status.isSuccess()) {
        examination.add(Health::problem, subject, treeUnreadable + reasonOf(tree),
                        adviceOnUnreadable());
        return;
    }
    examination.add(Health::ok, subject, "is readable, and so is its root tree");
}

}  // namespace neb::nebsc
