// Interceptor.h - intercepts what a thread does outside the process: child processes and files.
//
//     const Interceptor::Scope scope(recorder);
//     operation->start();   // recorder sees each child process and each question about files
//
// Code that reads or changes files asks through the functions at the end of this header, so that an
// interceptor can record the answer, or give it without the file. The hosts of an operation need
// only Interceptor::Scope.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Export.h"
#include "Platform/FileFailure.h"

namespace neb {

// Only for a derived class; hosts use those in NEBSourceControlRecording.h, which need no
// definition of these.
class ChildProcess;
struct ChildLaunch;
struct ChildObservers;
struct ChildOutcome;

/// The base of objects that record or replace child processes and answers about files. Derived
/// classes must be thread-safe: an operation may use several threads.
class NEB_EXPORT Interceptor {
public:
    /// Creates an interceptor that no thread has yet.
    Interceptor() = default;
    /// Not copyable, because threads share it.
    Interceptor(const Interceptor&) = delete;
    Interceptor& operator=(const Interceptor&) = delete;
    /// The last scope or work that refers to it destroys it.
    virtual ~Interceptor() = default;

    /// Runs the children, calls the observers meanwhile, and returns one outcome for each child, in
    /// order.
    using Run = std::function<std::vector<ChildOutcome>(const ChildObservers&)>;
    /// Called instead of ChildProcess::run(), with the same meaning of the parameters and of the
    /// result. `run` starts the processes; an override may return other outcomes without calling
    /// it.
    [[nodiscard]] virtual std::vector<ChildOutcome> runChildren(
        const ChildProcess& process, const std::vector<ChildLaunch>& launches,
        const ChildObservers& observers, const Run& run) = 0;

    /// Returns the answer to a question about files; `ask` reads or changes them. The question is
    /// a constant, such as "exists", the subject usually a path. An empty answer means: false,
    /// absent, or success.
    [[nodiscard]] virtual std::string answer(std::string_view question, std::string_view subject,
                                             const std::function<std::string()>& ask) = 0;

    /// Whether no process runs, so that it is pointless to wait for one: the pauses before git is
    /// started again are left out.
    [[nodiscard]] virtual bool replacesProcesses() const = 0;

    /// Returns the interceptor of the calling thread; null if it has none. A new thread has none,
    /// except those of an OperationQueue.
    [[nodiscard]] static std::shared_ptr<Interceptor> ofThread();

    /// Sets the interceptor of the calling thread as long as the object lives, then restores the
    /// former one. Work that the thread adds to an OperationQueue meanwhile is intercepted, too.
    class NEB_EXPORT Scope {
    public:
        /// Null: nothing is intercepted.
        explicit Scope(std::shared_ptr<Interceptor> interceptor);
        /// Not copyable: scopes of a thread end in the reverse order of their begin.
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        /// Must be called by the same thread.
        ~Scope();

    private:
        /// Null if the thread had none.
        std::shared_ptr<Interceptor> _former;
    };
};

/// The functions below cost nothing but the call of `ask` if the thread has no interceptor.

/// Each returns what `ask` returns, or what the interceptor of the thread answers instead. `ask` is
/// called at most once, on this thread. Throws what `ask` throws.
[[nodiscard]] NEB_EXPORT std::string interceptedText(std::string_view question,
                                                     std::string_view subject,
                                                     const std::function<std::string()>& ask);
/// The same for a question that is answered with yes or no.
[[nodiscard]] NEB_EXPORT bool interceptedFact(std::string_view question, std::string_view subject,
                                              const std::function<bool()>& ask);
/// The same for a change, which may fail; the failure has the recorded number and description.
[[nodiscard]] NEB_EXPORT std::optional<FileFailure> interceptedChange(
    std::string_view question, std::string_view subject,
    const std::function<std::optional<FileFailure>()>& ask);

}  // namespace neb
