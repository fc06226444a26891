// GitLineParser.h - a parser for lists that have one record per line.
#pragma once

#include <memory>
#include <string_view>

#include "NEBFoundation/NEBSourceControlRecordParser.h"

namespace neb {

/// Calls a function for each line, also for the empty one after the last line end of a listing,
/// which makes a record that hosts rely on.
class GitLineParser : public NEBSourceControlLineParser {
public:
    /// Returns the record of a line, which lies within `text`.
    using RecordOf = NEBDictionary (*)(const Data& text, std::string_view line);

    explicit GitLineParser(RecordOf recordOf) : _recordOf(recordOf) {}

protected:
    void parseLine(const Data& text, std::string_view line,
                   NEBSourceControlResult& records) override {
        records.push_back(_recordOf(text, line));
    }

private:
    RecordOf _recordOf;
};

}  // namespace neb
