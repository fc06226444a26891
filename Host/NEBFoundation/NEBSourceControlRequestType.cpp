#include "NEBFoundation/NEBSourceControlRequestType.h"

#include <array>

namespace neb {

namespace {

constexpr std::size_t typeCount = NEBSourceControlLastRequestType + 1;

constexpr std::array<std::string_view, typeCount> typeNames{
    /*  0 */ "add",
    /*  1 */ "create branch",
    /*  2 */ "delete branch",
    /*  3 */ "commit",
    /*  4 */ "ignore",
    /*  5 */ "remove",
    /*  6 */ "add files",
    /*  7 */ "revert",
    /*  8 */ "make directory",
    /*  9 */ "merge",
    /* 10 */ "copy",
    /* 11 */ "move",
    /* 12 */ "unsupported",
    /* 13 */ "update",
    /* 14 */ "checkout",
    /* 15 */ "status",
    /* 16 */ "unsupported",
    /* 17 */ "list",
    /* 18 */ "log",
    /* 19 */ "info",
    /* 20 */ "export files",
    /* 21 */ "export",
    /* 22 */ "export tree",
    /* 23 */ "unsupported",
    /* 24 */ "list remotes",
    /* 25 */ "list branches",
    /* 26 */ "current branch",
    /* 27 */ "create repository",
    /* 28 */ "blame",
    /* 29 */ "clone",
    /* 30 */ "diff",
    /* 31 */ "list remote branches",
    /* 32 */ "list remote branches (second form)",
    /* 33 */ "push",
    /* 34 */ "add remote",
    /* 35 */ "remove remote",
    /* 36 */ "track remote branch",
    /* 37 */ "fetch",
    /* 38 */ "tracking branch name",
    /* 39 */ "merge base",
};

}  // namespace

std::optional<std::string_view> NEBSourceControlRequestTypeName(std::int32_t type) {
    if (type < NEBSourceControlFirstRequestType || type > NEBSourceControlLastRequestType) {
        return std::nullopt;
    }
    return typeNames[static_cast<std::size_t>(type)];
}

}  // namespace neb
