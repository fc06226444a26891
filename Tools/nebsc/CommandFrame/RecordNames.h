// RecordNames.h - names in the records of the request types from 1000 on, which keep every byte.
#pragma once

#include <string>
#include <string_view>

#include "NEBFoundation/NEBDictionary.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb::nebsc {

/// The keys of a name: its text, and its bytes if they are not UTF-8.
struct NameKeys {
    NEBConstant text, bytes;
};

inline constexpr NameKeys nameKeys{NEBSourceControlOperationNameKey,
                                   NEBSourceControlOperationNameBytesKey};
inline constexpr NameKeys pathKeys{NEBSourceControlOperationPathKey,
                                   NEBSourceControlOperationPathBytesKey};
inline constexpr NameKeys originalPathKeys{NEBSourceControlOperationOriginalPathKey,
                                           NEBSourceControlOperationOriginalPathBytesKey};
inline constexpr NameKeys upstreamKeys{NEBSourceControlOperationUpstreamKey,
                                       NEBSourceControlOperationUpstreamBytesKey};

/// Returns the text or the bytes of a value that is one of the two; empty for any other. Valid as
/// long as the value. Thread-safe, as is the next function.
[[nodiscard]] inline std::string_view bytesOfValue(const NEBValue& value) {
    const Data* bytes = value.bytes();
    return bytes != nullptr ? bytes->bytes() : value.string().value_or("");
}

/// Returns the bytes of the name; empty if the record has none. Valid as long as the record.
[[nodiscard]] inline std::string_view bytesOfName(const NEBDictionary& record,
                                                  const NameKeys& keys) {
    const NEBValue& bytes = record.value(keys.bytes);
    return bytesOfValue(bytes.isPresent() ? bytes : record.value(keys.text));
}

}  // namespace neb::nebsc
