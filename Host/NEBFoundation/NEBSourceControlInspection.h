// NEBSourceControlInspection.h - what keeps the programs of a repository from running while its
// requests are carried out; see NEBSourceControlTrust.
//
//     const NEBSourceControlInspectedCommand command(launchPath, arguments, folder);
//     if (!inspection->knows(command)) {
//         inspection->addSettings(command, outputOf(command.settingsArguments()));
//     }
//     const auto programs = inspection->programsOf(command);
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlRepositoryPrograms.h"
#include "NEBFoundation/NEBSourceControlTrust.h"
#include "Platform/Export.h"
#include "Platform/Mutex.h"

namespace neb {

/// A command that git or another program carries out in a folder.
class NEB_EXPORT NEBSourceControlInspectedCommand {
public:
    /// Takes the path of the program, the arguments without its name, and the folder.
    NEBSourceControlInspectedCommand(std::string_view launchPath,
                                     const std::vector<std::string>& arguments, std::string folder);

    [[nodiscard]] const std::string& folder() const { return _folder; }
    /// The arguments of git that list the settings which the command reads, with scope and origin;
    /// see git-config(1). git runs no program for them. Needs git 2.26.
    [[nodiscard]] std::vector<std::string> settingsArguments() const;
    /// The arguments, with those that keep git from running programs which no setting switches off,
    /// and from running in submodules, whose settings name programs, too.
    [[nodiscard]] std::vector<std::string> safeArguments() const;
    /// Whether git examines the working copies of submodules without safeArguments().
    [[nodiscard]] bool examinesSubmodules() const;
    /// Whether git contacts a server.
    [[nodiscard]] bool contactsServer() const;

private:
    std::vector<std::string> _globalArguments;  // before the name of the git command
    std::string _name;                          // of the git command; empty for other programs
    std::vector<std::string> _otherArguments;
    std::string _folder;
};

/// What is known about the repositories of one request. Shared by the operations that carry it out.
/// Thread-safe.
class NEB_EXPORT NEBSourceControlInspection {
public:
    /// Returns the programs of the repository in which the command works; absent until
    /// addSettings() was called for its folder and repository.
    [[nodiscard]] std::optional<NEBSourceControlRepositoryPrograms> programsOf(
        const NEBSourceControlInspectedCommand& command) const;
    /// Takes the output of git with command.settingsArguments() in command.folder(), and notes what
    /// is switched off.
    void addSettings(const NEBSourceControlInspectedCommand& command, std::string_view listing);
    /// Notes that submodules are not examined.
    void addSubmodules();
    /// What the repository names and has no effect; see NEBSourceControlOperation. Each once.
    [[nodiscard]] std::vector<std::string> switchedOff() const;

private:
    void addName(const std::string& name) NEB_REQUIRES(_mutex);

    using Place = std::pair<std::string, std::vector<std::string>>;  // folder, arguments

    mutable Mutex _mutex;
    std::map<Place, NEBSourceControlRepositoryPrograms> _programs NEB_GUARDED_BY(_mutex);
    std::vector<std::string> _switchedOff NEB_GUARDED_BY(_mutex);
};

/// Returns an error of the class "not-trusted". `format` is the description, with "%@" for each of
/// the values; see formattedText(). Thread-safe.
[[nodiscard]] NEB_EXPORT NEBSourceControlError
NEBSourceControlNotTrustedError(std::string_view format, const std::vector<std::string>& values);

}  // namespace neb
