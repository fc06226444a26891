#include "GitExtensions/GitPatchChange.h"

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Text.h"

namespace neb {

namespace {

std::vector<std::string> applyArguments(const std::vector<std::string>& options,
                                        std::initializer_list<const char*> further) {
    std::vector<std::string> arguments{"apply", "--whitespace=nowarn"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.insert(arguments.end(), further.begin(), further.end());
    arguments.emplace_back("-");
    return arguments;
}

/// Whether git reports a path that it leaves out.
bool leavesOutPaths(std::string_view text) {
    bool leavesOut = false;
    forEachLine(text, [&leavesOut](std::string_view line) {
        leavesOut = leavesOut || line.starts_with("Skipped patch '");
    });
    return leavesOut;
}

}  // namespace

Data GitPatchComposite::patch() const {
    return gitBytesOfValue(request()->option(NEBSourceControlRequestOptionPatch)).value_or(Data());
}

bool GitPatchComposite::patchFits(const std::vector<std::string>& options) {
    const auto check = runOperation(std::make_shared<GitChangeOperation>(
        request(), applyArguments(options, {"--check", "--verbose"}), patch()));
    if (!goesOnAfter(*check)) {
        return false;
    }
    if (leavesOutPaths(check->errorData().value_or(Data()))) {
        fail(NEBSourceControlPatchFailedErrorClass,
             "The patch changes files outside of the folder of the request. Its paths start at the "
             "top of the working copy.");
        return false;
    }
    return true;
}

void GitPatchComposite::applyFittingPatch(const std::vector<std::string>& options) {
    static_cast<void>(runChange(applyArguments(options, {}), patch()));
}

void GitPatchComposite::applyPatch(const std::vector<std::string>& options) {
    if (patchFits(options)) {
        applyFittingPatch(options);
    }
}

}  // namespace neb
