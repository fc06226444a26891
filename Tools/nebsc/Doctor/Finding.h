// Finding.h - the result of one check of `nebsc doctor`.
#pragma once

#include <string>

namespace neb::nebsc {

enum class Health {
    ok,
    /// For information only.
    note,
    problem,
};

struct Finding {
    Health health;
    /// What was checked: "git", "lock".
    std::string subject;
    /// One clause. May contain control characters; see printable().
    std::string text;
    /// What to do; may be empty.
    std::string advice = {};
};

}  // namespace neb::nebsc
