// The log, with and without files: one record for each piece of text between NUL bytes that is not
// empty, each with all its keys.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "GitOperations/GitLog.h"
#include "NSData+GitUtilities.h"
#include "Platform/Text.h"

namespace {

bool isText(const neb::NEBValue& value) {
    return value.isString() && neb::isUTF8(*value.string());
}

void check(const neb::NEBDictionary& record) {
    if (!isText(record.value(neb::NEBSourceControlOperationRevisionKey)) ||
        record.value(neb::NEBSourceControlOperationRevisionKey).string().value().size() > 48 ||
        !isText(record.value(neb::NEBSourceControlOperationAuthorKey)) ||
        !isText(record.value(neb::NEBSourceControlOperationAuthorEmailKey)) ||
        !isText(record.value(neb::NEBSourceControlOperationMessageKey)) ||
        !record.value(neb::NEBSourceControlOperationDateKey).date()) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    std::size_t blocks = 0;
    neb::git_forEachComponentSeparatedByNULLTerminator(
        bytes, [&blocks](std::string_view block) { blocks += block.empty() ? 0U : 1U; });
    for (const bool withFiles : {false, true}) {
        neb::GitLogOperation operation(neb::NEBSourceControlRequest::initWithType(
            18, nullptr, std::nullopt,
            neb::NEBDictionary{
                {neb::NEBSourceControlRequestOptionLogOutputFilesChanged, withFiles}}));
        operation.setData(bytes);
        operation.parseData();
        if (!operation.result() || operation.result()->size() != blocks) {
            std::abort();
        }
        for (const neb::NEBDictionary& record : *operation.result()) {
            check(record);
        }
    }
    return 0;
}
