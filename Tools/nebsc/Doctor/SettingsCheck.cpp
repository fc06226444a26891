#include "Doctor/Checks.h"
#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Session/GitProgram.h"
#include "Terminal/PrintableText.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

void checkSettings(Examination& examination) {
    const ChildOutcome outcome = examination.query({"config", "--list", "--show-scope", "-z"});
    if (!outcome.status.isSuccess()) {
        examination.add(Health::problem, "settings", "git cannot read them: " + reasonOf(outcome),
                        "Fix or remove the line or value in git's message.");
        return;
    }
    examination.settings = UserSettings(outcome.output);
    bool isOverridden = false;
    for (const NEBSourceControlPinnedSetting& pinned : NEBSourceControlPinnedSettings()) {
        const std::string own = examination.settings->lastValue(pinned.key);
        if (!own.empty() && !isSameSetting(own, pinned.value)) {
            isOverridden = true;
            examination.add(Health::note, "setting",
                            std::string(pinned.key) + " is " + inQuotes(withoutSecrets(own)) +
                                ", but nebsc overrides it with " + inQuotes(pinned.value));
        }
    }
    if (!isOverridden) {
        examination.add(Health::ok, "settings", "none is overridden");
    }
}

}  // namespace neb::nebsc
