// StateText.h - the records of request type 1000 (working copy state) as text for a person.
//
//     StateText state(isInColour);
//     operation->setRecordSink([&](const auto& records) { state.add(records, workingCopy); });
//     operation->start();
//     std::cout << state.branchLine() << state.changeLists();
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "CommandFrame/WorkingCopyLocation.h"
#include "NEBFoundation/NEBDictionary.h"
#include "NEBFoundation/NEBSourceControlOperation.h"
#include "Terminal/Colour.h"

namespace neb::nebsc {

/// Keeps the lines of the records, not the records. Not thread-safe.
class StateText {
public:
    explicit StateText(bool isColoured) : _isColoured(isColoured) {}

    /// Adds records of one state, in order; may be called repeatedly.
    void add(const NEBSourceControlResult& records, const WorkingCopyLocation& workingCopy);

    /// Returns a line for the branch: "On branch main, 2 ahead of and 1 behind origin/main"; empty
    /// if the records describe none.
    [[nodiscard]] std::string branchLine() const;
    /// Whether any path was added.
    [[nodiscard]] bool hasChanges() const;
    /// Returns a list of paths below a title for each kind of change, each with an empty line
    /// before it: conflicts, staged, not staged, untracked and ignored; then the number of stashes.
    /// Empty if there is nothing of the kind.
    [[nodiscard]] std::string changeLists() const;

private:
    void addPath(const NEBDictionary& record, const WorkingCopyLocation& workingCopy);
    void addChange(const NEBDictionary& record, const std::string& path,
                   const WorkingCopyLocation& workingCopy);
    /// Adds a line to one of the lists.
    void addLine(std::string& list, std::initializer_list<std::string_view> parts,
                 Colour colour) const;

    bool _isColoured;
    /// The record of the branch. Empty until it arrives.
    NEBDictionary _head;
    std::string _conflicts, _staged, _notStaged, _untracked, _ignored;
};

}  // namespace neb::nebsc
