// Decodes bytes and URLs.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::string text = neb::textReplacingInvalidBytes(bytes);
    if (!neb::isUTF8(text) || (neb::isUTF8(bytes) && text != bytes)) {
        std::abort();
    }
    const std::string dropped = neb::_nebsc_stringFromData(bytes).value();
    if (text.compare(0, dropped.size(), dropped) != 0 || text.size() - dropped.size() > 2) {
        std::abort();
    }
    const auto path = neb::pathOfFileURL("file://" + bytes);
    if (path && (path->empty() || path->front() != '/')) {
        std::abort();
    }
    static_cast<void>(neb::lastPathComponent(bytes));
    static_cast<void>(neb::pathByAppendingComponent(bytes, bytes));
    return 0;
}
