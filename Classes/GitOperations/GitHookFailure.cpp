#include "GitOperations/GitHookFailure.h"

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlOutputExcerpt.h"
#include "Platform/Text.h"

namespace neb {

std::string_view gitLastLine(std::string_view text) {
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    if (last == std::string_view::npos) {
        return {};
    }
    const std::string_view lines = text.substr(0, last + 1);
    return lines.substr(lines.rfind('\n') + 1);
}

NEBSourceControlError gitErrorOfHook(const std::string& description, std::string_view stderrText) {
    auto refusal =
        NEBSourceControlError::withDescription(NEBSourceControlGenericError, description);
    refusal.errorClass = NEBSourceControlLocalHookRefusedErrorClass;
    if (!gitLastLine(stderrText).empty()) {
        refusal.text = stderrText;
    }
    return refusal;
}

NEBSourceControlError gitErrorOfPushHook(const Data& output, std::string_view stderrText) {
    std::string text = textReplacingInvalidBytes(NEBSourceControlOutputExcerpt(output.bytes()));
    text += text.empty() || text.ends_with('\n') ? "" : "\n";
    return gitErrorOfHook("A hook of the repository refused the push.", text.append(stderrText));
}

/// When the hook that runs before a push refuses, git itself prints only its last line. A branch
/// that cannot be sent and a failed transfer end with the same line, after the cause.
bool gitReportsRefusalBeforeSending(std::string_view text) {
    constexpr std::string_view failed = "error: failed to push some refs to '";
    constexpr std::string_view causes[] = {"To ",
                                           " ! ",
                                           "error: src refspec ",
                                           "error: The destination you provided ",
                                           "error: dst refspec ",
                                           "error: unable to ",
                                           "error: SSL certificate problem",
                                           "error: RPC failed",
                                           "send-pack: ",
                                           "fatal: the remote end hung up ",
                                           "fatal: The remote end hung up "};
    std::string_view last;
    bool isCauseTold = false;
    forEachField(text, '\n', [&](std::string_view line) {
        if (line.empty()) {
            return;
        }
        last = line;
        for (const std::string_view cause : causes) {
            isCauseTold = isCauseTold || line.starts_with(cause);
        }
    });
    return last.starts_with(failed) && !isCauseTold;
}

}  // namespace neb
