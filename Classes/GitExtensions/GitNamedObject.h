// GitNamedObject.h - the base of the operations that read one object by its name.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "GitExtensions/GitExtension.h"
#include "GitExtensions/GitQuery.h"
#include "GitOperations/GitComposite.h"

namespace neb {

/// Runs a git command that reads the object "REVISION:PATH"; see gitrevisions(7). What git prints
/// when it fails depends on the command and can hide the cause. The operation then asks for the
/// type of the object, and its error is of one of these classes:
///
/// - "revision-unknown" or "no-commits-yet": there is no such revision
/// - "path-unknown": the revision has no such path
/// - "file-type-wrong": there is an object of another type
/// - "objects-damaged": the object is missing
class GitNamedObjectOperation : public GitComposite<GitReadingOperation> {
public:
    using GitComposite::GitComposite;

    [[nodiscard]] std::optional<NEBSourceControlCommand> command() override {
        // NOLINTNEXTLINE(bugprone-parent-virtual-call): the command is the one of this operation
        return GitReadingOperation::command();
    }

protected:
    /// The object of a revision, or of a stage of the index, ":2".
    struct ObjectName {
        std::string revision;
        std::string path;  // from the top of the repository; empty for the top

        [[nodiscard]] std::string text() const { return revision + ":" + path; }
    };

    /// Declares what is read: a "blob" or a "tree". For constructors.
    void setObject(ObjectName name, std::string_view type);
    void main() override;

private:
    void explainFailure();
    /// Asks for the entry of the object in its tree or in the index; its mode comes first.
    [[nodiscard]] std::shared_ptr<GitQueryOperation> queriedEntry();
    /// Sets the error for an object of another type: "is a folder".
    void failForType(std::string_view description);

    ObjectName _object;
    std::string_view _type;
};

}  // namespace neb
