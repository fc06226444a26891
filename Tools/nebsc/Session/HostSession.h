// HostSession.h - performs requests as a host does: asks whether authentication is required,
// validates the request, rejects values that git would read as options, and creates and runs the
// operation.
//
//     HostSession session(plugIn.makePrincipalClass());
//     const RequestResult requestResult = session.perform(
//         request, [](NEBSourceControlOperation& operation) { operation.start(); });
//     requestResult.outcome->result;
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "NEBFoundation/NEBSourceControlArgumentInjection.h"
#include "NEBFoundation/NEBSourceControlProtocol.h"
#include "Session/Outcome.h"
#include "Session/Trace.h"

namespace neb::nebsc {

/// The program of a plug-in for git.
inline constexpr std::string_view gitProgramName = "git";

/// The result of a request: exactly one of the two members is present.
struct RequestResult {
    std::optional<Outcome> outcome;
    /// The value because of which the request was refused. No operation was created.
    std::optional<NEBSourceControlArgumentInjection> refusedValue;
};

/// Performs requests with the plug-in's principal class. Thread-safe; several requests can run at
/// the same time. Prints nothing but the trace.
class HostSession {
public:
    /// Runs an operation until it ends: calls start() and does what must surround it.
    using Runner = std::function<void(NEBSourceControlOperation&)>;

    /// Takes the plug-in's principal class; null for a session that performs no requests. If the
    /// session is traced, the child processes of all operations are reported on standard error.
    /// With NEBSourceControlTrust::inspect, all requests only inspect their repositories, whatever
    /// they say; otherwise each request decides. `program` is that of the plug-in, see
    /// NEBSourceControlPlugInDescription.
    explicit HostSession(std::unique_ptr<const NEBSourceControlProtocol> controller,
                         bool isTraced = false,
                         NEBSourceControlTrust trust = NEBSourceControlTrust::trusted,
                         std::string_view program = gitProgramName)
        : _controller(std::move(controller)),
          _trace(isTraced),
          _trust(trust),
          _mayRunGit(program == gitProgramName) {}

    /// Performs the request. If `run` is empty, the operation is created but not run. A type for
    /// which the plug-in has no operation is an error of the class "request-invalid". An exception
    /// of the plug-in becomes the outcome's error, without a result.
    ///
    /// The destination of a clone must exist when the operation runs. If it is missing, it is
    /// created first, with its parent folders, and removed again if the clone fails or is
    /// cancelled. A destination that existed before is never removed, and neither is a clone that
    /// lacks only submodules.
    ///
    /// `replacement` may be null. Otherwise it runs instead of the plug-in's operation, after the
    /// same checks of the request.
    [[nodiscard]] RequestResult perform(
        const std::shared_ptr<NEBSourceControlRequest>& request, const Runner& run,
        const std::shared_ptr<NEBSourceControlOperation>& replacement = nullptr) const;

    /// Runs an operation that nebsc implements itself, without the plug-in.
    [[nodiscard]] Outcome performOperation(NEBSourceControlOperation& operation,
                                           const Runner& run) const;

    /// Must not be called if the session has no principal class.
    [[nodiscard]] const NEBSourceControlProtocol& controller() const { return *_controller; }
    /// With NEBSourceControlTrust::inspect, all requests only inspect their repositories.
    [[nodiscard]] NEBSourceControlTrust trust() const { return _trust; }
    [[nodiscard]] bool isInspecting() const { return _trust == NEBSourceControlTrust::inspect; }
    /// Returns whether the plug-in is for git. Only then may commands run git to learn what no
    /// request returns. Otherwise git would report on another repository that contains the folder.
    [[nodiscard]] bool mayRunGit() const { return _mayRunGit; }
    /// Returns the trace, for child processes that do not belong to an operation.
    [[nodiscard]] const Trace& trace() const { return _trace; }

private:
    /// Fills in the outcome. Returns the value because of which the request is refused; absent if
    /// it is not refused.
    [[nodiscard]] std::optional<NEBSourceControlArgumentInjection> validateAndRun(
        const std::shared_ptr<NEBSourceControlRequest>& request, const Runner& run,
        const std::shared_ptr<NEBSourceControlOperation>& replacement, Outcome& outcome) const;

    std::unique_ptr<const NEBSourceControlProtocol> _controller;
    Trace _trace;
    NEBSourceControlTrust _trust;
    bool _mayRunGit;
};

}  // namespace neb::nebsc
