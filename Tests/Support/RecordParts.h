// RecordParts.h - the records of an output that arrives in parts.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "NEBFoundation/NEBSourceControlTaskOperation.h"
#include "Support/Matchers.h"

namespace neb::test {

/// Returns the records of the operation's parser for the bytes. Expects the same records for an
/// output that is cut at any byte, and for one that arrives byte by byte.
template <typename Op>
NEBSourceControlResult recordsOf(const std::shared_ptr<NEBSourceControlRequest>& request,
                                 const std::string& bytes) {
    Op operation(request);
    const auto parser = [&operation] { return operation.makeRecordParser(); };
    NEBSourceControlResult whole;
    parser()->parseToEnd(bytes, 0, whole);
    const auto slow = parser();
    NEBSourceControlResult slowRecords;
    std::size_t slowPosition = 0;
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        const std::string part = bytes.substr(0, size);
        slowPosition = slow->parse(part, slowPosition, std::string_view::npos, slowRecords);
        const auto cut = parser();
        NEBSourceControlResult records;
        const std::size_t position = cut->parse(part, 0, std::string_view::npos, records);
        // A sink does not keep what was parsed.
        cut->parseToEnd(bytes.substr(position), 0, records);
        EXPECT_EQ(records, whole) << "cut at byte " << size;
    }
    slow->parseToEnd(bytes, slowPosition, slowRecords);
    EXPECT_EQ(slowRecords, whole);
    return whole;
}

}  // namespace neb::test
