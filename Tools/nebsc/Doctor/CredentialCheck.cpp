#include <sys/stat.h>

#include "Doctor/Checks.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// Checks a helper: a shell command after "!", a path, or NAME for the program
/// "git-credential-NAME". Shows only the program, because its arguments can contain secrets.
void checkHelper(Examination& examination, const Setting& setting) {
    const std::string which = "helper of the " + setting.scope + " configuration";
    if (setting.value.starts_with('!')) {
        examination.add(Health::note, "credentials", which + ": a shell command");
        return;
    }
    const std::string name = setting.value.substr(0, setting.value.find(' '));
    const bool isPath = name.starts_with('/');  // git does not expand "~" here
    const std::string program = isPath ? name : "git-credential-" + name;
    if (examination.isReachable(program)) {
        examination.add(Health::ok, "credentials", which + ": " + program);
    } else {
        examination.add(Health::problem, "credentials",
                        which + ": there is no program " + inQuotes(program),
                        "Install it, or remove it from the configuration: git config --" +
                            setting.scope + " --edit");
    }
}

void checkHelpers(Examination& examination) {
    const std::vector<Setting> helpers = examination.settings->credentialHelpers();
    if (helpers.empty()) {
        examination.add(
            Health::note, "credentials", "no helper is configured, so git cannot look up passwords",
            globalSettingAdvice("For example", "git config --global credential.helper cache"));
    }
    for (const Setting& helper : helpers) {
        checkHelper(examination, helper);
    }
}

void checkAgent(Examination& examination) {
    const std::string socket = environmentVariable("SSH_AUTH_SOCK");
    struct stat attributes {};
    if (socket.empty()) {
        examination.add(Health::note, "ssh agent", "SSH_AUTH_SOCK is not set",
                        "Start an agent, and add keys with a passphrase with 'ssh-add'.");
    } else if (::stat(socket.c_str(), &attributes) == 0 && S_ISSOCK(attributes.st_mode)) {
        examination.add(Health::ok, "ssh agent", socket);
    } else {
        examination.add(Health::note, "ssh agent",
                        "SSH_AUTH_SOCK names " + inQuotes(socket) + ", which does not exist",
                        "Restart the agent.");
    }
}

/// Returns a setting; empty if git cannot read the settings.
std::string settingNamed(const Examination& examination, std::string_view key) {
    return examination.settings ? examination.settings->lastValue(key) : "";
}

void checkAskpass(Examination& examination) {
    std::string program = environmentVariable("GIT_ASKPASS");
    program = program.empty() ? settingNamed(examination, "core.askpass") : program;
    program = program.empty() ? environmentVariable("SSH_ASKPASS") : program;
    if (!program.empty() && !examination.isReachable(program)) {
        examination.add(Health::problem, "askpass", "there is no program " + inQuotes(program),
                        "Remove it from GIT_ASKPASS, core.askPass or SSH_ASKPASS, or install it.");
    } else if (!program.empty()) {
        examination.add(Health::ok, "askpass", program);
    }
}

void checkSSH(Examination& examination) {
    if (!examination.isReachable("ssh") && environmentVariable("GIT_SSH").empty() &&
        environmentVariable("GIT_SSH_COMMAND").empty() &&
        settingNamed(examination, "core.sshcommand").empty()) {
        examination.add(Health::note, "ssh", "there is no program 'ssh'",
                        "Install it for repositories over ssh.");
    }
}

}  // namespace

void checkCredentials(Examination& examination) {
    if (examination.settings) {
        checkHelpers(examination);
    }
    checkAgent(examination);
    checkAskpass(examination);
    checkSSH(examination);
}

}  // namespace neb::nebsc
