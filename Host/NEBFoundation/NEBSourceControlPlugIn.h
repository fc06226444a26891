// NEBSourceControlPlugIn.h - how a plug-in describes itself, and how a host loads one.
//
//     const NEBSourceControlPlugInLoad load = NEBSourceControlPlugIn::load("/path/NEBGit.so");
//     if (!load.plugIn) { tell(load.failure); }
//     const std::unique_ptr<NEBSourceControlProtocol> controller =
//     load.plugIn->makePrincipalClass();
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "NEBFoundation/NEBSourceControlProtocol.h"
#include "Platform/Export.h"

namespace neb {

/// Raised whenever a plug-in built against an older host library could no longer be used.
inline constexpr std::uint32_t NEBSourceControlContractVersion = 2;

/// A plug-in's answer about itself. The contract version stands first for good: a host reads
/// nothing else before it has found that version to be its own.
struct NEBSourceControlPlugInDescription {
    std::uint32_t contractVersion;
    /// With the life of the process.
    const char* name;
    const char* version;
    /// Makes an instance of the principal class, which the caller owns.
    NEBSourceControlProtocol* (*makePrincipalClass)();
};

/// The C function that a plug-in exports: takes nothing, answers a description with the life of the
/// process.
using NEBSourceControlPlugInFunction = const NEBSourceControlPlugInDescription* (*)();
inline constexpr const char* NEBSourceControlPlugInFunctionName = "NEBSourceControlDescribePlugIn";

struct NEBSourceControlPlugInLoad;

/// A loaded plug-in. It stays loaded until the process ends, so its operations may outlive this
/// object. May be used from any thread.
class NEB_EXPORT NEBSourceControlPlugIn {
public:
    /// Loads the file at `path` and looks at its description.
    [[nodiscard]] static NEBSourceControlPlugInLoad load(const std::string& path);

    [[nodiscard]] std::string name() const { return _description->name; }
    [[nodiscard]] std::string version() const { return _description->version; }
    /// An instance of the principal class; null where the plug-in has none. Its calls throw
    /// nothing: what the plug-in throws, here or then, is an error that says so.
    [[nodiscard]] std::unique_ptr<NEBSourceControlProtocol> makePrincipalClass() const;

private:
    explicit NEBSourceControlPlugIn(const NEBSourceControlPlugInDescription* description)
        : _description(description) {}

    const NEBSourceControlPlugInDescription* _description;
};

/// What came of loading: the plug-in, or one sentence that names the file and what is wrong with
/// it.
struct NEBSourceControlPlugInLoad {
    std::optional<NEBSourceControlPlugIn> plugIn;
    std::string failure;
};

}  // namespace neb
