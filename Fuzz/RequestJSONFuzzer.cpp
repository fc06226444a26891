// Reads arbitrary requests.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "JSON/RequestJSON.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto reading =
        neb::nebsc::requestFromJSON(std::string_view(reinterpret_cast<const char*>(data), size));
    // The result is a request, or one line with the reason.
    if ((reading.request == nullptr) == reading.refusal.empty() ||
        reading.refusal.find('\n') != std::string::npos) {
        std::abort();
    }
    return 0;
}
