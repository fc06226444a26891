// GitTag.h - request type 1015 (tag); see git-tag(1).
#pragma once

#include <string>

#include "GitExtensions/GitChange.h"

namespace neb {

/// With the action "create", the default, creates the tag `destination` for the starting revision,
/// HEAD without it: an annotated one if the request has NEBSourceControlRequestOptionMessage. An
/// existing tag is replaced only with NEBSourceControlRequestOptionForce. With the action "delete",
/// deletes the tag.
///
/// The result is one record: NEBSourceControlOperationNameKey, the full name, and
/// NEBSourceControlOperationObjectIDKey, what the tag refers to or, if deleted, did: the id of an
/// annotated tag itself.
class GitTagOperation : public GitChangeComposite {
public:
    using GitChangeComposite::GitChangeComposite;

    [[nodiscard]] std::string className() const override { return "GitTagOperation"; }

protected:
    void perform() override;

private:
    void createTag(const std::string& name);
    void deleteTag(const std::string& name);
    void setRecord(const std::string& name, const std::string& id);
};

}  // namespace neb
