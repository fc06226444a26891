// ListOperation.h - an operation whose records are the lines that a shell script prints.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlTaskOperation.h"
#include "Support/Matchers.h"

namespace neb::test {

/// Lists the lines that a shell script prints.
class ListOperation : public NEBSourceControlTaskOperation {
public:
    explicit ListOperation(std::string script)
        : NEBSourceControlTaskOperation(requestFor(NEBSourceControlRequestLog, std::nullopt)) {
        setArguments({"-c", std::move(script)});
    }
    std::string launchPath() override { return "/bin/sh"; }
    std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override {
        return std::make_unique<Parser>();
    }

private:
    class Parser : public NEBSourceControlRecordParser {
    public:
        Parser() : NEBSourceControlRecordParser('\n') {}

    protected:
        void parsePiece(const Data& output, std::string_view piece,
                        NEBSourceControlResult& records) override {
            records.push_back({{NEBSourceControlOperationNameKey, NEBValue(output, piece)}});
        }
        void parseLastPiece(const Data& output, std::string_view piece,
                            NEBSourceControlResult& records) override {
            if (!piece.empty()) {
                parsePiece(output, piece, records);
            }
        }
    };
};

/// Returns the lines of the records.
inline std::vector<std::string> namesOf(const NEBSourceControlResult& records) {
    std::vector<std::string> names;
    for (const NEBDictionary& record : records) {
        names.push_back(record.value(NEBSourceControlOperationNameKey).description());
    }
    return names;
}

}  // namespace neb::test
