// The texts between NUL bytes.

#include "NSData+GitUtilities.h"
#include "Property.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    std::vector<std::string> expected;
    for (std::string& piece : piecesOf(bytes, '\0')) {
        if (neb::isUTF8(piece)) {
            expected.push_back(std::move(piece));
        }
    }
    const bool endsWithNUL = bytes.empty() || bytes.back() == '\0';
    if (endsWithNUL) {
        expected.pop_back();  // the empty piece behind the last NUL is none
    }
    require(neb::git_componentsSeparatedByNULLTerminator(bytes) == expected,
            "the pieces are those of a plain walk");
    std::size_t count = 0;
    neb::git_forEachComponentSeparatedByNULLTerminator(bytes, [&](std::string_view component) {
        require(count < expected.size() && component == expected[count],
                "the pieces are visited in their order");
        require(component.empty() ||
                    (component.data() >= bytes.data() &&
                     component.data() + component.size() <= bytes.data() + bytes.size()),
                "a piece lies inside the bytes");
        ++count;
    });
    return 0;
}
