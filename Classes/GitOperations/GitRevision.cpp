#include "GitOperations/GitRevision.h"

#include <algorithm>
#include <iterator>

#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

constexpr std::size_t abbreviatedLength = 12;

bool isContinuationByte(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

bool is(const NEBValue& revision, NEBConstant name) {
    return revision.isString() && *revision.string() == name.text();
}

}  // namespace

std::string_view gitAbbreviatedRevision(std::string_view revision) {
    std::size_t characters = 0;
    std::size_t end = 0;
    while (end < revision.size()) {
        if (!isContinuationByte(revision[end]) && ++characters > abbreviatedLength) {
            break;
        }
        ++end;
    }
    return revision.substr(0, end);
}

bool gitIsSymbolicRevision(const NEBValue& revision) {
    constexpr NEBConstant names[] = {
        NEBSourceControlLocalRevisionName, NEBSourceControlInMemoryRevisionName,
        NEBSourceControlHEADRevisionName, NEBSourceControlBASERevisionName};
    return std::any_of(std::begin(names), std::end(names),
                       [&revision](NEBConstant name) { return is(revision, name); });
}

NEBValue gitRevisionOfCommit(const NEBValue& revision) {
    const bool isHEAD = is(revision, NEBSourceControlHEADRevisionName) ||
                        is(revision, NEBSourceControlBASERevisionName);
    return isHEAD ? NEBValue("HEAD") : revision;
}

}  // namespace neb
