#include "NEBFoundation/NEBSourceControlProgramOperation.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "LOMFoundation/LOMDeveloperPaths.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlInspection.h"
#include "NEBFoundation/NEBSourceControlTaskOperation.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

/// An error that the host library makes for any program. Its advice for the class names git.
struct HostAdvice {
    NEBConstant errorClass;
    std::string_view beforeName, afterName;
};

constexpr HostAdvice hostAdvice[] = {
    {NEBSourceControlNotStartedErrorClass, "Check that ",
     " is installed and on the PATH, and that the folder exists."},
    {NEBSourceControlTimedOutErrorClass, "Check whether ",
     " waits for a server or a hook. If the operation changes something, check what it has done "
     "before you try again with a higher limit."},
};

void adviseAbout(NEBSourceControlError& error, std::string_view program) {
    for (const HostAdvice& row : hostAdvice) {
        if (error.errorClass == row.errorClass.text()) {
            error.userInfo.set(
                NEBLocalizedRecoverySuggestionKey,
                std::string(row.beforeName) + std::string(program) + std::string(row.afterName));
        }
    }
}

}  // namespace

/// The child process. It passes on what the operation decides.
class NEBSourceControlProgramOperation::Child final : public NEBSourceControlTaskOperation {
public:
    Child(NEBSourceControlProgramOperation& owner, const NEBSourceControlProgram& program)
        : NEBSourceControlTaskOperation(owner.request()), _owner(owner), _program(program) {
        const auto& tree = owner.request()->sourceTree;
        if (tree && tree->location) {
            setCurrentDirectoryPath(pathOfLocation(*tree->location));
        }
    }

    [[nodiscard]] const NEBSourceControlProgram& program() const { return _program; }

    [[nodiscard]] std::string className() const override { return _owner.className(); }
    [[nodiscard]] std::string launchPath() override { return LOMPathOfProgram(_program.name); }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override {
        auto parser = _owner.makeRecordParser();
        _hasParser = parser != nullptr;
        return parser;
    }
    void parseData() override {
        if (_hasParser) {
            NEBSourceControlTaskOperation::parseData();
        } else if (terminationStatus()->isSuccess()) {
            _owner.readOutput(data().value_or(Data()));
            setResult(_owner.result());
        }
    }

protected:
    [[nodiscard]] bool runsGit() const override { return false; }
    [[nodiscard]] std::vector<std::string> ownVariables() const override {
        return {_program.variables.begin(), _program.variables.end()};
    }
    [[nodiscard]] NEBSourceControlError errorOfText(const std::string& text) const override {
        const auto row = std::ranges::find_if(_program.messages, [&text](const auto& message) {
            return text.find(message.part) != std::string::npos;
        });
        const bool isKnown = row != _program.messages.end();
        auto error = NEBSourceControlError::withDescription(
            isKnown ? row->code : std::int64_t{NEBSourceControlGenericError},
            isKnown ? std::string(row->description) : text,
            isKnown ? std::optional(std::string(row->suggestion)) : std::nullopt);
        error.errorClass = isKnown ? row->errorClass : NEBSourceControlUnknownErrorClass.text();
        error.text = text;
        return error;
    }
    [[nodiscard]] std::optional<NEBSourceControlError> errorFromUnknownFailure(
        std::optional<NEBSourceControlError> error) override {
        if (error) {
            return error;
        }
        auto silence = NEBSourceControlError::withDescription(
            NEBSourceControlGenericError,
            std::string(_program.name) + " exited with status " +
                std::to_string(terminationStatus()->exitStatus().value_or(0)) +
                " and printed nothing.");
        silence.errorClass = NEBSourceControlUnknownErrorClass;
        return silence;
    }

private:
    NEBSourceControlProgramOperation& _owner;
    const NEBSourceControlProgram _program;
    bool _hasParser = false;
};

NEBSourceControlProgramOperation::NEBSourceControlProgramOperation(
    std::shared_ptr<NEBSourceControlRequest> request, const NEBSourceControlProgram& program)
    : NEBSourceControlOperation(std::move(request)),
      _child(std::make_unique<Child>(*this, program)) {}

NEBSourceControlProgramOperation::~NEBSourceControlProgramOperation() = default;

const std::vector<std::string>& NEBSourceControlProgramOperation::arguments() const {
    return _child->arguments();
}

void NEBSourceControlProgramOperation::setArguments(std::vector<std::string> arguments) {
    _child->setArguments(std::move(arguments));
}

void NEBSourceControlProgramOperation::setInput(std::optional<Data> input) {
    _child->setInput(std::move(input));
}

void NEBSourceControlProgramOperation::readOutput(const Data& output) {
    static_cast<void>(output);
}

void NEBSourceControlProgramOperation::main() {
    if (request()->isInspected()) {
        setError(NEBSourceControlNotTrustedError(
            "The request was refused because the repository \"%@\" is not trusted, and \"%@\" "
            "cannot be kept from running programs that it names.",
            {request()->sourceTreeName(), std::string(_child->program().name)}));
        return;
    }
    _child->setCommandLog(commandLog());
    _child->setBackgroundWork(isBackgroundWork());
    _child->setChildVariables(childVariables());
    _child->inheritLimits(*this);
    deliverRecordsOf(*_child);
    _child->start();
    setOutputWasHeldOpen(_child->outputWasHeldOpen());
    setResult(_child->result());
    auto found = _child->error();
    if (found) {
        adviseAbout(*found, _child->program().name);
    }
    setError(std::move(found));
}

void NEBSourceControlProgramOperation::cancel() {
    NEBSourceControlOperation::cancel();
    _child->cancel();
}

std::optional<NEBSourceControlCommand> NEBSourceControlProgramOperation::command() {
    return _child->command();
}

}  // namespace neb
