#include "CommandLine/GitNames.h"

#include <algorithm>
#include <iterator>

namespace neb::nebsc {

namespace {

constexpr GitName rows[] = {
    {"pull", "update"},
    {"switch", "checkout"},
    {"restore", "revert"},
    {"stage", "add"},
    {"annotate", "blame"},
    {"whatchanged", "log --files"},
    {"ls-tree", "ls"},
    {"checkout-index", "export-tree"},
    {"fsck", "doctor --full"},
    {"ls-remote", "remote branches"},
    {"init-db", "init"},
    {"version", "--version"},
    {"remote remove", "remote rm"},
};

}  // namespace

std::span<const GitName> gitNames() {
    return rows;
}

std::string_view nameOfGitCommand(std::string_view nameInGit) {
    const auto* row =
        std::find_if(std::begin(rows), std::end(rows),
                     [nameInGit](const GitName& other) { return other.nameInGit == nameInGit; });
    return row == std::end(rows) ? std::string_view() : row->name;
}

}  // namespace neb::nebsc
