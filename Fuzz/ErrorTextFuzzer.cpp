// Classifies the messages of a failed git.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "GitOperations/GitOperation.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    auto request = neb::NEBSourceControlRequest::initWithType(data[0] % 40, nullptr, std::nullopt,
                                                              std::nullopt);
    neb::GitOperation operation(request);
    const auto error = operation.errorFromErrorMessage(
        std::string(reinterpret_cast<const char*>(data + 1), size - 1));
    if (error && error->domain != neb::NEBSourceControlErrorDomain) {
        std::abort();
    }
    return 0;
}
