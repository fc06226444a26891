// Splits bytes at NUL bytes.

#include "NSData+GitUtilities.h"
#include "Property.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    std::vector<std::string> expected;
    for (std::string& component : split(bytes, '\0')) {
        if (neb::isUTF8(component)) {
            expected.push_back(std::move(component));
        }
    }
    const bool endsWithNUL = bytes.empty() || bytes.back() == '\0';
    if (endsWithNUL) {
        expected.pop_back();  // there is no component after the last NUL
    }
    require(neb::git_componentsSeparatedByNULLTerminator(bytes) == expected,
            "the components are the expected ones");
    std::size_t count = 0;
    neb::git_forEachComponentSeparatedByNULLTerminator(bytes, [&](std::string_view component) {
        require(count < expected.size() && component == expected[count],
                "the components are visited in order");
        require(component.empty() ||
                    (component.data() >= bytes.data() &&
                     component.data() + component.size() <= bytes.data() + bytes.size()),
                "a component is inside the bytes");
        ++count;
    });
    return 0;
}
