#include "Doctor/Checks.h"
#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Terminal/PrintableText.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

namespace {

/// Holds settings, which can be secrets such as http.extraHeader.
constexpr std::string_view settingsVariable = "GIT_CONFIG_PARAMETERS";
/// git sets it for the commands of an alias; ignoring it changes nothing.
constexpr std::string_view aliasVariable = "GIT_PREFIX";

std::string adviceOn(std::string_view name) {
    if (name == "GIT_DIR" || name == "GIT_WORK_TREE") {
        return "Run nebsc in the repository, or 'nebsc -C DIR'.";
    }
    if (name.starts_with("GIT_TRACE")) {
        return "'nebsc --trace' shows which programs run.";
    }
    return "";
}

}  // namespace

void checkEnvironment(Examination& examination) {
    for (const NEBSourceControlIgnoredVariable& variable :
         NEBSourceControlIgnoredVariables(NEBSourceControlInheritedEnvironment())) {
        const auto& [name, value, reason] = variable;
        // The other variables are for terminals and tar, not for git.
        if (!name.starts_with("GIT_") || value.empty() || name == aliasVariable) {
            continue;
        }
        const std::string shown =
            name == settingsVariable ? " is set" : " is " + inQuotes(withoutSecrets(value));
        examination.add(Health::note, "variable",
                        name + shown + ", but is ignored here: it " + std::string(reason),
                        adviceOn(name));
    }
}

}  // namespace neb::nebsc
