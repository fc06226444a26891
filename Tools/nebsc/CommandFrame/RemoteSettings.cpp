#include "CommandFrame/RemoteSettings.h"

#include <algorithm>

#include "CommandFrame/BranchQueries.h"
#include "Session/GitProgram.h"
#include "Session/Paths.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

/// With --null, an entry is the name, a line end and the value; without a value, the name alone.
const RemoteSettings::Values& RemoteSettings::values() const {
    if (!_values) {
        _values.emplace();
        const ChildOutcome settings =
            _git.run({"config", "--null", "--get-regexp", "^(remote|branch)\\."});
        for (const std::string& entry : splitAtNUL(settings.output)) {
            const std::size_t end = std::min(entry.find('\n'), entry.size());
            _values->insert_or_assign(entry.substr(0, end),
                                      entry.substr(std::min(end + 1, entry.size())));
        }
    }
    return *_values;
}

std::optional<std::string> RemoteSettings::value(const std::string& name) const {
    const auto found = values().find(name);
    return found == values().end() || found->second.empty() ? std::nullopt
                                                            : std::optional(found->second);
}

/// Any setting of a remote makes it one, as in `git remote`. A name cannot begin with "/".
bool RemoteSettings::isRemote(const std::string& name) const {
    const std::string section = "remote." + name + ".";
    const auto isSetting = [&section](const auto& entry) {
        return entry.first.starts_with(section) &&
               entry.first.find('.', section.size()) == std::string::npos;
    };
    return !name.starts_with('/') &&
           std::any_of(values().lower_bound(section), values().end(), isSetting);
}

std::string RemoteSettings::remoteOrLocation(const std::string& text) const {
    const std::string location = repositoryLocation(_git.workingCopy().currentFolder, text);
    const bool isPath = text.find('/') != std::string::npos || isAnythingAt(location);
    return isPath && !isRemote(text) ? location : text;
}

std::optional<TrackedBranch> RemoteSettings::trackedBranchOf(const std::string& branch) const {
    const auto remote = value("branch." + branch + ".remote");
    const auto reference = value("branch." + branch + ".merge");
    if (!remote || !reference) {
        return std::nullopt;
    }
    return TrackedBranch{*remote, withoutPrefix(*reference, localBranchPrefix)};
}

std::string RemoteSettings::shownBranch(const TrackedBranch& tracked) const {
    const std::string& remote = tracked.remote;
    if (remote == ".") {
        return printable(inQuotes(tracked.branch));
    }
    return printable(isRemote(remote) ? inQuotes(remote + "/" + tracked.branch)
                                      : inQuotes(tracked.branch) + " of " + inQuotes(remote));
}

}  // namespace neb::nebsc
