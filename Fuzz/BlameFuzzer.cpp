// The blame of a file: one record a line, and one more.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "GitOperations/GitBlame.h"
#include "NEBFoundation/NEBSourceControlText.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    neb::GitBlameOperation operation(
        neb::NEBSourceControlRequest::initWithType(28, nullptr, std::nullopt, std::nullopt));
    operation.setData(bytes);
    operation.parseData();
    const std::string text = *neb::_nebsc_stringFromData(bytes);
    const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
    if (operation.result().has_value() != !bytes.empty() ||
        (operation.result() && operation.result()->size() != lines)) {
        std::abort();
    }
    return 0;
}
