// StatusRecords.h - records of a status as lines that can be read.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlOperation.h"

namespace neb::test {

/// A record as "value path", for reading.
inline std::string textOf(const std::optional<NEBDictionary>& record) {
    if (!record) {
        return "(nothing)";
    }
    EXPECT_EQ(record->size(), 2U);
    return std::to_string(record->value(NEBSourceControlOperationWCStatusKey).integer().value()) +
           " " + record->value(NEBSourceControlOperationPathKey).description();
}

inline std::vector<std::string> textsOf(const std::optional<NEBSourceControlResult>& result) {
    std::vector<std::string> texts;
    for (const NEBDictionary& record : result.value()) {
        texts.push_back(textOf(record));
    }
    return texts;
}

}  // namespace neb::test
