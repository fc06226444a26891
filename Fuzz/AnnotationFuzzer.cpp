// Parses groups of annotated lines.

#include "GitExtensions/GitAnnotation.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Property.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitAnnotationOperation operation(requestOf(neb::NEBSourceControlRequestAnnotation));
    const auto records = parsed(operation, bytes).value();
    std::size_t texts = 0;
    for (const std::string& line : split(bytes, '\n')) {
        texts += line.starts_with('\t') ? 1 : 0;
    }
    std::size_t lines = 0;
    for (const neb::NEBDictionary& record : records) {
        const auto* group = record.value(neb::NEBSourceControlOperationLinesKey).array();
        require(group != nullptr, "a group has lines");
        lines += group->size();
        require(record.contains(neb::NEBSourceControlOperationObjectIDKey) !=
                    record.contains(neb::NEBSourceControlOperationIsUncommittedKey),
                "a group has a commit, or none");
    }
    require(lines <= texts, "a line of a group begins with TAB");
    return 0;
}
