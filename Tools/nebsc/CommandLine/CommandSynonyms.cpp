#include "CommandLine/CommandSynonyms.h"

#include <algorithm>
#include <iterator>

namespace neb::nebsc {

namespace {

constexpr CommandSynonym rows[] = {
    // commands of git
    {"restore", "revert"},
    {"annotate", "blame"},
    {"whatchanged", "log --files"},
    {"ls-tree", "ls"},
    {"cat-file", "cat"},
    {"checkout-index", "export-tree"},
    {"fsck", "doctor --full"},
    {"ls-remote", "remote branches"},
    {"init-db", "init"},
    {"version", "--version"},
    {"remote remove", "remote rm"},
    // abbreviations
    {"br", "branch"},
    {"ci", "commit"},
    {"co", "checkout"},
    {"di", "diff"},
    {"st", "status"},
    {"up", "update"},
    // names in other systems
    {"copy", "cp"},
    {"del", "rm"},
    {"delete", "rm"},
    {"history", "log"},
    {"list", "ls"},
    {"move", "mv"},
    {"praise", "blame"},
    {"remove", "rm"},
    {"rename", "mv"},
    // the same for subcommands
    {"branch add", "branch create"},
    {"branch checkout", "checkout"},
    {"branch new", "branch create"},
    {"branch remove", "branch delete"},
    {"branch rm", "branch delete"},
    {"branch switch", "checkout"},
    {"remote del", "remote rm"},
    {"remote delete", "remote rm"},
};

}  // namespace

std::span<const CommandSynonym> commandSynonyms() {
    return rows;
}

std::string_view commandForSynonym(std::string_view synonym) {
    const auto* row =
        std::find_if(std::begin(rows), std::end(rows),
                     [synonym](const CommandSynonym& other) { return other.synonym == synonym; });
    return row == std::end(rows) ? std::string_view() : row->name;
}

}  // namespace neb::nebsc
