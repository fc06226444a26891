// NEBSourceControlPlugIn.h - the description that a plug-in exports, and the loader of plug-ins.
//
//     const NEBSourceControlPlugInLoad load = NEBSourceControlPlugIn::load("/path/NEBGit.so");
//     if (!load.plugIn) {
//         fail(load.failure);
//     }
//     const auto controller = load.plugIn->makePrincipalClass();
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "NEBFoundation/NEBSourceControlABIStamp.h"
#include "NEBFoundation/NEBSourceControlProtocol.h"
#include "Platform/Export.h"

namespace neb {

/// The description of a plug-in. A host has compared the stamp in the file of the plug-in before it
/// gets the description. The contract version always comes first: a host reads nothing else unless
/// it equals its own.
struct NEBSourceControlPlugInDescription {
    std::uint32_t contractVersion;
    /// &NEBSourceControlABIStamp. Without it, the file of the plug-in has no stamp and is refused.
    const NEBSourceControlABINote* stamp;
    /// The name and version of the plug-in, for people. Both texts live until the process ends.
    const char* name;
    const char* version;
    /// The name of the program whose repositories the plug-in works with: "git", "hg". A host may
    /// ask git itself only if this is "git". Lives until the process ends.
    const char* program;
    /// Returns a new instance of the principal class. The caller owns it.
    NEBSourceControlProtocol* (*makePrincipalClass)();
};

/// The C function that a plug-in exports. The description that it returns lives until the process
/// ends.
using NEBSourceControlPlugInFunction = const NEBSourceControlPlugInDescription* (*)();
/// The name of that function.
inline constexpr const char* NEBSourceControlPlugInFunctionName = "NEBSourceControlDescribePlugIn";

struct NEBSourceControlPlugInLoad;

/// A loaded plug-in. It stays loaded until the process ends, so that operations may outlive this
/// object. Thread-safe.
class NEB_EXPORT NEBSourceControlPlugIn {
public:
    /// Loads the file at `path`. First compares the stamp of the calling program with that of the
    /// host library, then the stamp in the file, and refuses what does not fit before any code of
    /// the plug-in runs. Then checks the description of the plug-in. Throws nothing.
    [[nodiscard, gnu::visibility("hidden")]] static NEBSourceControlPlugInLoad load(
        const std::string& path);

    /// As the plug-in describes itself.
    [[nodiscard]] std::string name() const { return _description->name; }
    [[nodiscard]] std::string version() const { return _description->version; }
    /// The name of the program whose repositories the plug-in works with, "git".
    [[nodiscard]] std::string program() const { return _description->program; }
    /// Returns a new instance of the principal class; null when the plug-in has none. Its methods
    /// throw nothing: an exception of the plug-in, now or later, becomes an error.
    [[nodiscard]] std::unique_ptr<NEBSourceControlProtocol> makePrincipalClass() const;

private:
    /// load() for a program that fits. The name of this function contains no type of the standard
    /// library, so that programs which do not fit can be linked and get as far as the comparison.
    [[nodiscard]] static NEBSourceControlPlugInLoad loadFile(const char* path);

    explicit NEBSourceControlPlugIn(const NEBSourceControlPlugInDescription* description)
        : _description(description) {}

    const NEBSourceControlPlugInDescription* _description;
};

/// The result of loading: the plug-in, or a sentence that names the file and states the problem.
struct NEBSourceControlPlugInLoad {
    /// Absent after a failure.
    std::optional<NEBSourceControlPlugIn> plugIn;
    /// Empty on success.
    std::string failure;
};

inline NEBSourceControlPlugInLoad NEBSourceControlPlugIn::load(const std::string& path) {
    if (const char* mismatch = NEBSourceControlHostMismatch()) {
        return {std::nullopt, mismatch};
    }
    return loadFile(path.c_str());
}

}  // namespace neb
