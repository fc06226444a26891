// HostSession.h - takes requests the way a host does: the question of authentication, validation,
// the look for values that git would take for options, the operation, its run.
//
//     HostSession session(plugIn.makePrincipalClass());
//     const RequestResult requestResult = session.perform(request, [](NEBSourceControlOperation&
//     work)
//     {
//         work.start();
//     });
//     requestResult.outcome->result;
//
// From any thread, several at once. Nothing is printed.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "NEBFoundation/NEBSourceControlArgumentInjection.h"
#include "NEBFoundation/NEBSourceControlProtocol.h"
#include "Session/Outcome.h"
#include "Session/Trace.h"

namespace neb::nebsc {

/// What came of a request: the one or the other.
struct RequestResult {
    std::optional<Outcome> outcome;
    /// A value for whose sake the request was refused, before an operation was made.
    std::optional<NEBSourceControlArgumentInjection> refusedValue;
};

class HostSession {
public:
    /// Runs an operation to its end: start(), and whatever belongs around it.
    using Runner = std::function<void(NEBSourceControlOperation&)>;

    /// Takes the plug-in's principal class; null for a session that performs no requests. If the
    /// session is traced, the child processes of all operations are reported on standard error.
    explicit HostSession(std::unique_ptr<const NEBSourceControlProtocol> controller,
                         bool isTraced = false)
        : _controller(std::move(controller)), _trace(isTraced) {}

    /// Carries the request out. Without a runner the operation is made and not run. A type for
    /// which the plug-in has no operation is an error of the class "request-invalid". What the
    /// plug-in throws is the outcome's error, without a result.
    ///
    /// A clone needs its destination to be there: where it is missing it is made, with the folders
    /// on the way, before the operation runs, and removed again when that fails or is cancelled. A
    /// destination that was there is never removed, nor is a clone that lacks nothing but
    /// submodules.
    ///
    /// `replacement`, unless absent, is run in place of the plug-in's operation, once the request
    /// is valid and holds no value that git would take for an option.
    [[nodiscard]] RequestResult perform(
        const std::shared_ptr<NEBSourceControlRequest>& request, const Runner& run,
        const std::shared_ptr<NEBSourceControlOperation>& replacement = nullptr) const;

    /// Runs an operation of nebsc's own, in which the plug-in has no part.
    [[nodiscard]] Outcome carryOut(NEBSourceControlOperation& operation, const Runner& run) const;

    [[nodiscard]] const NEBSourceControlProtocol& controller() const { return *_controller; }
    /// For children that are no part of an operation.
    [[nodiscard]] const Trace& trace() const { return _trace; }

private:
    /// Fills in the outcome. Returns the value for whose sake the request is refused.
    [[nodiscard]] std::optional<NEBSourceControlArgumentInjection> askAndRun(
        const std::shared_ptr<NEBSourceControlRequest>& request, const Runner& run,
        const std::shared_ptr<NEBSourceControlOperation>& replacement, Outcome& outcome) const;

    std::unique_ptr<const NEBSourceControlProtocol> _controller;
    Trace _trace;
};

}  // namespace neb::nebsc
