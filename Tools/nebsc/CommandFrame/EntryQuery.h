// EntryQuery.h - the base of queries for a list whose entries have more details than records.
//
//     class TagQuery : public EntryQuery<std::string> {
//     public:
//         explicit TagQuery(std::shared_ptr<NEBSourceControlRequest> request)
//             : EntryQuery(std::move(request)) { setArguments({"for-each-ref", …}); }
//     protected:
//         std::optional<std::string> entryIn(std::string_view text) override {
//             return std::string(text);
//         }
//     };
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "NEBFoundation/NEBSourceControlRecordParser.h"
#include "NEBFoundation/NEBSourceControlTaskOperation.h"
#include "Session/GitProgram.h"

namespace neb::nebsc {

/// Runs a git whose output is a list, each text of which ends with a NUL or a line end. With a
/// record sink, each entry has an empty record, and takeEntries() returns the entries of the
/// records that the sink gets. Without one, the result has the records of all entries. Not
/// thread-safe, like all operations.
template <typename Entry>
class EntryQuery : public NEBSourceControlTaskOperation {
public:
    explicit EntryQuery(std::shared_ptr<NEBSourceControlRequest> request, char separator = '\0')
        : NEBSourceControlTaskOperation(std::move(request)), _separator(separator) {}

    [[nodiscard]] std::string launchPath() override { return gitPath(); }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override {
        return std::make_unique<Parser>(*this);
    }
    /// Removes and returns the entries that were read since the last call, in git's order. Call it
    /// within the sink, or after the end of the operation.
    [[nodiscard]] std::vector<Entry> takeEntries() { return std::exchange(_entries, {}); }

protected:
    /// Reads the next text, without its end. Returns the entry that it completes; absent if the
    /// entry continues or the text has none.
    [[nodiscard]] virtual std::optional<Entry> entryIn(std::string_view text) = 0;
    /// Returns the record of an entry, for --json.
    [[nodiscard]] virtual NEBDictionary recordOf(const Entry& /*entry*/) const { return {}; }

private:
    class Parser : public NEBSourceControlRecordParser {
    public:
        explicit Parser(EntryQuery& query)
            : NEBSourceControlRecordParser(query._separator), _query(query) {}

    protected:
        void parsePiece(const Data& /*output*/, std::string_view text,
                        NEBSourceControlResult& records) override {
            if (auto entry = _query.entryIn(text)) {
                _query.add(std::move(*entry), records);
            }
        }
        /// A text without its end is incomplete.
        void parseLastPiece(const Data& /*output*/, std::string_view /*text*/,
                            NEBSourceControlResult& /*records*/) override {}

    private:
        EntryQuery& _query;
    };

    void add(Entry entry, NEBSourceControlResult& records) {
        records.push_back(hasRecordSink() ? NEBDictionary() : recordOf(entry));
        _entries.push_back(std::move(entry));
    }

    char _separator;
    std::vector<Entry> _entries;
};

}  // namespace neb::nebsc
