// NEBSourceControlProgramOperation.h - the base class of operations that run a program other than
// git, for plug-ins. docs/plug-ins.md is the guide.
//
//     constexpr NEBSourceControlProgram hg{.name = "hg"};
//
//     class HgBranchOperation : public NEBSourceControlProgramOperation {
//     public:
//         explicit HgBranchOperation(std::shared_ptr<NEBSourceControlRequest> request)
//             : NEBSourceControlProgramOperation(std::move(request), hg) {
//             setArguments({"branch"});
//         }
//     protected:
//         void readOutput(const Data& output) override { setResult({{…}}); }
//     };
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlOperation.h"
#include "NEBFoundation/NEBSourceControlRecordParser.h"
#include "Platform/Data.h"
#include "Platform/Export.h"

namespace neb {

/// A message of a program, and the error that it stands for.
struct NEBSourceControlProgramMessage {
    /// A part of the output, case-sensitive, in English. Must not be empty.
    std::string_view part;
    /// The class of the error: a constant of NEBSourceControlErrorClassNames.h, or a name of the
    /// plug-in's own.
    std::string_view errorClass;
    /// A sentence that describes the failure to a user. Must not be empty.
    std::string_view description;
    /// What the user can do about it, a sentence. Must not be empty: the host library would add its
    /// own advice for the class, which names commands of git.
    std::string_view suggestion;
    /// A NEBSourceControlErrorCode.
    std::int64_t code = NEBSourceControlGenericError;
};

/// A program that operations run. What it refers to must outlive them; usually constants.
struct NEBSourceControlProgram {
    /// The name of the file, "hg". It is looked up in the absolute folders of PATH, and the first
    /// executable file is run; without one, "/usr/bin" is assumed.
    std::string_view name;
    /// Environment variables, each "NAME=value". The child inherits the environment of the host,
    /// with LC_ALL=C.UTF-8 and an empty LANGUAGE, in which these replace those of the same name.
    std::span<const std::string_view> variables = {};
    /// The first row whose part is in standard error decides; without one, the first whose part is
    /// in standard output. An output without a row becomes an error of the class "unknown".
    std::span<const NEBSourceControlProgramMessage> messages = {};
};

/// Runs one child process in the folder of the request's source tree, and turns its output into
/// records or an error. The host gets everything that operations of git have: a record sink,
/// limits, the command log and cancel(). The child reads /dev/null and leads a session of its own.
///
/// A request that only inspects its repository fails with an error of the class "not-trusted",
/// because the host library cannot keep the program from running others.
class NEB_EXPORT NEBSourceControlProgramOperation : public NEBSourceControlOperation {
public:
    /// Shares ownership of the request, which must not be null. Copies `program`, but not what it
    /// refers to.
    NEBSourceControlProgramOperation(std::shared_ptr<NEBSourceControlRequest> request,
                                     const NEBSourceControlProgram& program);
    ~NEBSourceControlProgramOperation() override;

    [[nodiscard]] std::string className() const override {
        return "NEBSourceControlProgramOperation";
    }

    /// The arguments, without the name of the program.
    [[nodiscard]] const std::vector<std::string>& arguments() const;

    /// Runs the child, and sets the result and the error:
    /// - exit status 0 is success, whatever was printed: readOutput() is called;
    /// - any other end of the child is an error. Records that a parser found before stay in the
    ///   result.
    void main() override;
    /// Ends the child and the processes that it started. Thread-safe.
    void cancel() override;
    /// Returns the command line that main() runs.
    [[nodiscard]] std::optional<NEBSourceControlCommand> command() override;

protected:
    /// Sets the arguments. A value of the request must stand where the program reads no option:
    /// behind "--", or in the same argument as its option.
    void setArguments(std::vector<std::string> arguments);
    /// Sets the bytes of standard input. Absent, as at first: /dev/null.
    void setInput(std::optional<Data> input);

    /// Returns a new parser of a list, so that records reach a record sink while the child runs.
    /// Null, as in the base implementation: the output is no list. The parser may refer to the
    /// operation.
    [[nodiscard]] virtual std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() {
        return nullptr;
    }
    /// Sets the result from the whole standard output. Called after exit status 0, unless there is
    /// a record parser, whose records are the result. The base implementation does nothing.
    virtual void readOutput(const Data& output);

private:
    class Child;
    friend class Child;

    const std::unique_ptr<Child> _child;
};

}  // namespace neb
