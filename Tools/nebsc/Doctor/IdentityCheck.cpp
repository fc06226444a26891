#include "Doctor/Checks.h"
#include "Session/GitProgram.h"

namespace neb::nebsc {

namespace {

constexpr const char* subject = "identity";

/// The author or the committer of a commit.
struct Role {
    const char* name;
    const char* variable;
    const char* nameVariable;
    const char* addressVariable;
};
constexpr Role roles[] = {
    {"author", "GIT_AUTHOR_IDENT", "GIT_AUTHOR_NAME", "GIT_AUTHOR_EMAIL"},
    {"committer", "GIT_COMMITTER_IDENT", "GIT_COMMITTER_NAME", "GIT_COMMITTER_EMAIL"},
};

/// Returns the command that sets a setting in the scope that takes effect.
std::string commandFor(const Examination& examination, const char* key, const char* value) {
    const std::string scope = examination.settings ? examination.settings->lastScope(key) : "";
    const std::string option = scope == "local" || scope == "worktree" ? scope : "global";
    return "git config --" + option + " " + key + " " + value;
}

std::string adviceOn(const Examination& examination, const Role& role) {
    if (!environmentVariable(role.nameVariable).empty() ||
        !environmentVariable(role.addressVariable).empty()) {
        return std::string("Correct or unset ") + role.nameVariable + " and " +
               role.addressVariable + ".";
    }
    const std::string commands = commandFor(examination, "user.name", "'YOUR NAME'") + " && " +
                                 commandFor(examination, "user.email", "YOU@EXAMPLE.ORG");
    return commands.find("--global") != std::string::npos ? globalSettingAdvice("Run", commands)
                                                          : "Run: " + commands;
}

/// Returns whether git derived the author's address from the names of the user and the machine.
bool isAddressGuessed(const Examination& examination) {
    return examination.settings && examination.settings->lastValue("user.email").empty() &&
           examination.settings->lastValue("author.email").empty() &&
           environmentVariable("GIT_AUTHOR_EMAIL").empty() && environmentVariable("EMAIL").empty();
}

}  // namespace

/// Adds nothing if git cannot read the settings: checkSettings() has reported that.
void checkIdentity(Examination& examination) {
    if (!examination.settings) {
        return;
    }
    std::string author;
    for (const Role& role : roles) {
        const ChildOutcome outcome = examination.query({"var", role.variable});
        const auto identity = trimmedOutputOf(outcome);
        if (!identity) {
            examination.add(
                Health::problem, subject,
                std::string("git rejects the ") + role.name + " for commits: " + reasonOf(outcome),
                adviceOn(examination, role));
            return;
        }
        if (author.empty()) {
            author = identity->substr(0, identity->rfind('>') + 1);  // without the time
        }
    }
    if (isAddressGuessed(examination)) {
        examination.add(
            Health::note, subject,
            author + ", with an address that git guessed from the name of this machine",
            globalSettingAdvice("Run", "git config --global user.email YOU@EXAMPLE.ORG"));
    } else {
        examination.add(Health::ok, subject, author);
    }
}

}  // namespace neb::nebsc
