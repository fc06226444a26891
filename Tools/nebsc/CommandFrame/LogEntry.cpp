#include "CommandFrame/LogEntry.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <string_view>

#include "CommandFrame/RecordNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlPathQuoting.h"
#include "NEBFoundation/NEBSourceControlStatus.h"
#include "Terminal/StatusLabels.h"

namespace neb::nebsc {

namespace {

std::vector<std::string> textsIn(const NEBValue& value) {
    std::vector<std::string> texts;
    if (const std::vector<NEBValue>* array = value.array()) {
        for (const NEBValue& element : *array) {
            texts.emplace_back(bytesOfValue(element));
        }
    }
    return texts;
}

ChangedFile fileOf(const NEBDictionary& change) {
    const bool isRenamed = change.text(NEBSourceControlOperationStateKey) == "renamed";
    return {.status = statusOfState(change.text(NEBSourceControlOperationStateKey)),
            .path = std::string(bytesOfName(change, isRenamed ? originalPathKeys : pathKeys))};
}

}  // namespace

LogEntry entryOfLogRecord(const NEBDictionary& record) {
    LogEntry entry{.id = std::string(record.text(NEBSourceControlOperationRevisionKey)),
                   .author = std::string(record.text(NEBSourceControlOperationAuthorKey)),
                   .authorEmail = std::string(record.text(NEBSourceControlOperationAuthorEmailKey)),
                   .date = record.value(NEBSourceControlOperationDateKey).date(),
                   .message = std::string(record.text(NEBSourceControlOperationMessageKey))};
    if (const NEBDictionary* files = record.value(NEBSourceControlOperationFilesKey).dictionary()) {
        for (const NEBDictionary::Entry& file : *files) {
            entry.files.push_back({.status = file.value().integer().value_or(0),
                                   .path = NEBSourceControlUnquotedPath(file.key())});
        }
    }
    return entry;
}

LogEntry entryOfHistoryRecord(const NEBDictionary& record) {
    LogEntry entry{.id = std::string(record.text(NEBSourceControlOperationObjectIDKey)),
                   .author = std::string(record.text(NEBSourceControlOperationAuthorKey)),
                   .authorEmail = std::string(record.text(NEBSourceControlOperationAuthorEmailKey)),
                   .message = std::string(record.text(NEBSourceControlOperationSubjectKey)),
                   .parents = textsIn(record.value(NEBSourceControlOperationParentsKey)),
                   .references = textsIn(record.value(NEBSourceControlOperationReferencesKey)),
                   .isHEAD = record.value(NEBSourceControlOperationIsHEADKey).boolValue()};
    if (const auto time = record.value(NEBSourceControlOperationAuthorTimeKey).integer()) {
        entry.date = NEBDate(std::chrono::seconds(*time));
    }
    if (const std::string_view body = record.text(NEBSourceControlOperationBodyKey);
        !body.empty()) {
        entry.message.append("\n\n").append(body);
    }
    const std::vector<NEBValue>* changes =
        record.value(NEBSourceControlOperationChangesKey).array();
    if (changes != nullptr && entry.parents.size() < 2) {
        for (const NEBValue& change : *changes) {
            entry.files.push_back(fileOf(*change.dictionary()));
        }
    }
    return entry;
}

}  // namespace neb::nebsc
