#include "GitExtensions/GitReferences.h"

#include "GitExtensions/GitRecordFields.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Platform/Scanner.h"

namespace neb {

namespace {

/// Reads "ahead 2, behind 1", "ahead 2", "behind 1", "gone"; nothing if there is no difference.
void setTrack(NEBDictionary& record, std::string_view track) {
    if (!record.contains(NEBSourceControlOperationUpstreamKey)) {
        return;
    }
    if (track == "gone") {
        record.set(NEBSourceControlOperationUpstreamIsGoneKey, true);
        return;
    }
    const auto countAfter = [track](std::string_view name) {
        const std::size_t start = track.find(name);
        return start == std::string_view::npos
                   ? 0
                   : Scanner(track.substr(start + name.size())).takeInteger().value_or(0);
    };
    record.set(NEBSourceControlOperationAheadKey, countAfter("ahead "));
    record.set(NEBSourceControlOperationBehindKey, countAfter("behind "));
}

template <const GitNameKeys& keys>
void setName(NEBDictionary& record, const Data& output, std::string_view field) {
    gitSetName(record, keys, output, field);
}

template <const NEBConstant& key>
void setText(NEBDictionary& record, const Data& output, std::string_view field) {
    gitSetText(record, key, output, field);
}

/// A field of a reference, and how it is written into the record.
struct Field {
    std::string_view format;
    void (*set)(NEBDictionary& record, const Data& output, std::string_view field);
};

/// The fields of a reference, each on a line of its own; a NUL byte ends the last one, the only one
/// that can contain a line end. The upstream comes before the difference to it.
constexpr Field fields[] = {
    {"%(refname)", setName<gitNameKeys>},
    {"%(objectname)", setText<NEBSourceControlOperationObjectIDKey>},
    {"%(objecttype)", setText<NEBSourceControlOperationObjectTypeKey>},
    {"%(*objectname)", setText<NEBSourceControlOperationPeeledIDKey>},
    {"%(symref)", setText<NEBSourceControlOperationSymbolicTargetKey>},
    {"%(creatordate:raw)", [](NEBDictionary& record, const Data& /*output*/,
                              std::string_view field) { gitSetTime(record, gitTimeKeys, field); }},
    {"%(HEAD)",
     [](NEBDictionary& record, const Data& /*output*/, std::string_view field) {
         if (field == "*") {
             record.set(NEBSourceControlOperationIsCurrentKey, true);
         }
     }},
    {"%(upstream)", setName<gitUpstreamKeys>},
    {"%(upstream:track,nobracket)", [](NEBDictionary& record, const Data& /*output*/,
                                       std::string_view field) { setTrack(record, field); }},
    {"%(contents:subject)", setText<NEBSourceControlOperationSubjectKey>},
    {"%(worktreepath)", setName<gitWorktreeKeys>},
};

std::string formatOption() {
    std::string format = "--format=";
    for (const Field& field : fields) {
        format.append(field.format).append(&field == std::end(fields) - 1 ? "%00" : "%0a");
    }
    return format;
}

class ReferenceParser : public GitNULRecordParser {
protected:
    /// A field that is missing counts as empty. git prints a line end after each reference.
    void parsePiece(const Data& output, std::string_view text,
                    NEBSourceControlResult& records) override {
        NEBDictionary& record = records.emplace_back();
        Scanner scanner(text);
        scanner.skipOne('\n');
        for (const Field& field : fields) {
            const bool isLast = &field == std::end(fields) - 1;
            field.set(record, output, isLast ? scanner.rest() : scanner.takeUpTo('\n'));
            scanner.skipOne('\n');
        }
    }
};

}  // namespace

GitReferencesOperation::GitReferencesOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitReadingOperation(std::move(request)) {
    std::vector<std::string> arguments{"for-each-ref", formatOption(), "--"};
    const NEBValue& destination = this->request()->destination;
    // git takes these characters, which no reference can have, for a pattern; see
    // git-for-each-ref(1)
    if (destination.isPresent() &&
        destination.description().find_first_of("*?[\\") != std::string::npos) {
        auto refusal = NEBSourceControlError::withDescription(
            NEBSourceControlGenericError,
            "\"" + destination.description() + "\" is not the name of a reference.");
        refusal.errorClass = NEBSourceControlRequestInvalidErrorClass;
        setError(std::move(refusal));
    }
    if (destination.isPresent()) {
        arguments.push_back(destination.description());
    } else {
        arguments.insert(arguments.end(), {"refs/heads", "refs/remotes", "refs/tags"});
    }
    setArgumentsBehindDefaults(arguments);
}

std::unique_ptr<NEBSourceControlRecordParser> GitReferencesOperation::makeRecordParser() {
    return std::make_unique<ReferenceParser>();
}

}  // namespace neb
