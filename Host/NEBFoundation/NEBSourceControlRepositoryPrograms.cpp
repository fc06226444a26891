#include "NEBFoundation/NEBSourceControlRepositoryPrograms.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <utility>

namespace neb {

namespace {

/// How a setting of the repository loses its effect.
enum class Remedy : std::uint8_t {
    /// If the repository sets it: replaced with the value of the user, else with that of the row.
    replaced,
    /// The same, whether or not the repository sets it.
    alwaysReplaced,
    /// Always replaced with the value of the row.
    fixed,
    /// One of a list, which is emptied and filled with the values of the user.
    listOfUser,
    /// Without effect because of an argument or a variable of each child.
    withoutEffect,
    /// No other setting replaces it: git uses the first value, or the most specific one.
    transport,
};

using enum Remedy;

struct Row {
    /// The name in lower case; "*" stands for any text.
    std::string_view pattern;
    Remedy remedy;
    std::string_view value;
    std::string_view reason;
};

constexpr std::string_view failsAtOnce = "an empty command fails; no reading request starts it";

/// The settings of git-config(1) and gitattributes(5) that name a program, or that decide which
/// server is contacted and how. The first row that matches counts.
constexpr Row rows[] = {
    // what requests that read would start
    {"core.hookspath", fixed, "/dev/null",
     "also those in .git/hooks; the user's may be in the working copy"},
    {"hook.*.command", replaced, "true", "hooks that are settings"},
    {"core.fsmonitor", replaced, "false", "reports changed files"},
    {"filter.*.clean", replaced, "", "an empty filter converts nothing"},
    {"filter.*.smudge", replaced, "", "an empty filter converts nothing"},
    {"filter.*.process", replaced, "", "an empty filter converts nothing"},
    {"filter.*.required", replaced, "false", "an empty filter may be required"},
    {"diff.*.textconv", withoutEffect, "", "--no-textconv; an empty command would fail"},
    {"diff.*.command", replaced, "", "also --no-ext-diff"},
    {"diff.external", replaced, "", "also --no-ext-diff"},
    {"gpg.program", replaced, "gpg", "an exported file may contain $Format:%G?$"},
    {"gpg.openpgp.program", replaced, "gpg", "as gpg.program"},
    {"gpg.x509.program", replaced, "gpgsm", "as gpg.program"},
    {"gpg.ssh.program", replaced, "ssh-keygen", "as gpg.program"},
    {"gpg.ssh.defaultkeycommand", replaced, "", failsAtOnce},
    {"extensions.partialclone", withoutEffect, "", "no child fetches missing objects"},
    {"remote.*.promisor", withoutEffect, "", "no child fetches missing objects"},

    // what a program of the user, such as Git LFS, would start
    {"lfs.customtransfer.*.path", replaced, "", failsAtOnce},
    {"lfs.standalonetransferagent", replaced, "", failsAtOnce},
    {"lfs.extension.*.clean", replaced, "", failsAtOnce},
    {"lfs.extension.*.smudge", replaced, "", failsAtOnce},

    // how a server is contacted
    {"core.sshcommand", replaced, "ssh", "starts the connection"},
    {"core.askpass", replaced, "", "asks for passwords"},
    {"credential.helper", listOfUser, "", "gets and keeps passwords"},
    {"credential.*.helper", listOfUser, "", "gets and keeps passwords"},
    {"credential.*protectprotocol", replaced, "true", "a line end in what helpers are asked"},
    {"credential.*sanitizeprompt", replaced, "true", "control characters in prompts"},
    {"credential.*usehttppath", replaced, "false", "whose passwords helpers are asked for"},
    {"protocol.ext.allow", fixed, "never", "a URL that is a command"},
    {"protocol.fd.allow", fixed, "never", "a URL that is a file descriptor"},
    {"protocol.file.allow", alwaysReplaced, "user", "git's own, despite protocol.allow"},
    {"protocol.git.allow", alwaysReplaced, "always", "git's own, despite protocol.allow"},
    {"protocol.http.allow", alwaysReplaced, "always", "git's own, despite protocol.allow"},
    {"protocol.https.allow", alwaysReplaced, "always", "git's own, despite protocol.allow"},
    {"protocol.ssh.allow", alwaysReplaced, "always", "git's own, despite protocol.allow"},
    {"protocol.*.allow", replaced, "never", "a URL or remote.*.vcs names a program"},
    {"protocol.allow", fixed, "never", "a URL or remote.*.vcs names a program"},
    {"remote.*.uploadpack", transport, "", "a program on the server, or here for a path"},
    {"remote.*.vcs", transport, "", "a program that talks to the server"},
    {"remote.*.proxy*", transport, "", "a server in between"},
    {"core.gitproxy", transport, "", "starts the connection"},
    {"url.*", transport, "", "replaces the server"},
    {"http.*", transport, "", "proxies, certificates, headers, files with cookies"},
    {"ssh.variant", transport, "", "the arguments of ssh"},

    // what only other commands start; pinned in case git starts it where it is not expected
    {"alias.*", replaced, "", "an empty alias fails; a remote helper could be one"},
    {"core.alternaterefscommand", replaced, "", failsAtOnce},
    {"core.editor", replaced, ":", "edits nothing"},
    {"sequence.editor", replaced, ":", "edits nothing"},
    {"core.pager", replaced, "cat", "shows the text unchanged"},
    {"pager.*", replaced, "false", "no pager"},
    {"interactive.difffilter", replaced, "", failsAtOnce},
    {"merge.*.driver", replaced, "", failsAtOnce},
    {"mergetool.*.cmd", replaced, "", failsAtOnce},
    {"mergetool.*.path", replaced, "", failsAtOnce},
    {"difftool.*.cmd", replaced, "", failsAtOnce},
    {"difftool.*.path", replaced, "", failsAtOnce},
    {"guitool.*.cmd", replaced, "", failsAtOnce},
    {"man.*.cmd", replaced, "", failsAtOnce},
    {"man.*.path", replaced, "", failsAtOnce},
    {"browser.*.cmd", replaced, "", failsAtOnce},
    {"browser.*.path", replaced, "", failsAtOnce},
    {"instaweb.httpd", replaced, "", failsAtOnce},
    {"imap.tunnel", replaced, "", failsAtOnce},
    {"sendemail.*cmd", replaced, "", failsAtOnce},
    {"sendemail.*smtpserver", replaced, "", failsAtOnce},
    {"trailer.*.command", replaced, "", failsAtOnce},
    {"trailer.*.cmd", replaced, "", failsAtOnce},
    {"tar.*.command", replaced, "", failsAtOnce},
    {"submodule.*.update", replaced, "checkout", "\"!command\""},
    {"remote.*.receivepack", replaced, "git-receive-pack", "a program on the server"},
    {"receive.procreceiverefs", replaced, "", "a hook"},
    {"uploadpack.packobjectshook", replaced, "", "git reads it only from files of the user"},
    {"gc.recentobjectshook", replaced, "", failsAtOnce},
    {"svn.authors-prog", replaced, "", failsAtOnce},
};

/// The scopes of `git config --show-scope` that are not part of the repository.
constexpr std::string_view scopesOfUser[] = {"system", "global", "command"};

bool matches(std::string_view name, std::string_view pattern) {
    const std::size_t star = pattern.find('*');
    if (star == std::string_view::npos) {
        return name == pattern;
    }
    const std::string_view rest = pattern.substr(star + 1);
    if (!name.starts_with(pattern.substr(0, star))) {
        return false;
    }
    for (std::size_t i = star; i <= name.size(); ++i) {
        if (rest.empty() || matches(name.substr(i), rest)) {
            return true;
        }
    }
    return false;
}

const Row* rowOf(std::string_view name) {
    const auto* row = std::ranges::find_if(
        rows, [name](const Row& other) { return matches(name, other.pattern); });
    return row != std::end(rows) ? row : nullptr;
}

std::string_view takePiece(std::string_view& listing) {
    const std::size_t end = std::min(listing.find('\0'), listing.size());
    const std::string_view piece = listing.substr(0, end);
    listing.remove_prefix(std::min(end + 1, listing.size()));
    return piece;
}

/// Collects the settings of the listing that a row matches, then makes the pins.
class Collector {
public:
    void add(std::string_view scope, std::string_view origin, std::string_view setting) {
        const std::size_t end = std::min(setting.find('\n'), setting.size());
        const std::string name(setting.substr(0, end));
        const bool isOfUser = std::ranges::find(scopesOfUser, scope) != std::end(scopesOfUser);
        constexpr std::string_view filePrefix = "file:";
        if (!isOfUser && _programs.file.empty() && origin.starts_with(filePrefix)) {
            _programs.file = origin.substr(filePrefix.size());
        }
        const Row* row = rowOf(name);
        if (row == nullptr) {
            return;
        }
        if (isOfUser) {
            // A name without a value is true.
            const std::string value(end < setting.size() ? setting.substr(end + 1) : "true");
            _valuesOfUser[name] = value;
            if (row->remedy == listOfUser) {
                _listOfUser.push_back({name, value});
            }
        } else {
            addName(row->remedy == transport ? _programs.transport : _programs.switchedOff, name);
        }
    }

    NEBSourceControlRepositoryPrograms finish() {
        for (const Row& row : rows) {
            if (row.remedy == fixed || row.remedy == alwaysReplaced) {
                pin(row, std::string(row.pattern));
            }
        }
        bool isListReplaced = false;
        for (const std::string& name : _programs.switchedOff) {
            const Row& row = *rowOf(name);
            if (row.remedy == replaced) {
                pin(row, name);
            }
            isListReplaced = isListReplaced || row.remedy == listOfUser;
        }
        if (isListReplaced) {
            _programs.pinned.push_back({"credential.helper", ""});
            _programs.pinned.insert(_programs.pinned.end(), _listOfUser.begin(), _listOfUser.end());
        }
        return std::move(_programs);
    }

private:
    static void addName(std::vector<std::string>& names, const std::string& name) {
        if (std::ranges::find(names, name) == names.end()) {
            names.push_back(name);
        }
    }

    /// The policy of the user for all protocols holds for those without one of their own.
    void pin(const Row& row, const std::string& name) {
        std::string value(row.value);
        if (row.remedy == alwaysReplaced && _valuesOfUser.contains("protocol.allow")) {
            value = _valuesOfUser["protocol.allow"];
        }
        const auto ofUser = _valuesOfUser.find(name);
        if (row.remedy != fixed && ofUser != _valuesOfUser.end()) {
            value = ofUser->second;
        }
        _programs.pinned.push_back({name, value});
    }

    NEBSourceControlRepositoryPrograms _programs;
    std::map<std::string, std::string> _valuesOfUser;  // the last value counts
    std::vector<NEBSourceControlSetting> _listOfUser;
};

}  // namespace

NEBSourceControlRepositoryPrograms NEBSourceControlProgramsInSettings(std::string_view listing) {
    Collector collector;
    while (!listing.empty()) {
        const std::string_view scope = takePiece(listing);
        const std::string_view origin = takePiece(listing);
        collector.add(scope, origin, takePiece(listing));
    }
    return collector.finish();
}

}  // namespace neb
