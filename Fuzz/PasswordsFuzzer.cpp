// Texts without the passwords of URLs: none is left, and nothing else is changed.

#include "LOMFoundation/LOMPasswordRedaction.h"

#include "Property.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    const std::string shown = neb::textWithoutPasswords(bytes);
    require(neb::textWithoutPasswords(shown) == shown, "what is shown holds none");
    require(piecesOf(shown, '\n').size() == piecesOf(bytes, '\n').size(), "the lines are kept");
    require(!neb::isUTF8(bytes) || neb::isUTF8(shown), "text stays text");
    if (bytes.find('@') == std::string::npos) {
        require(shown == bytes, "without a password nothing is changed");
    }
    // The input as a password, whatever it holds but what ends a URL.
    std::string password;
    for (const char character : bytes) {
        if (static_cast<unsigned char>(character) > ' ' && character != '/' && character != '?' &&
            character != '#') {
            password += character;
        }
    }
    if (!password.empty()) {
        require(neb::textWithoutPasswords("to 'https://ann:" + password + "@host/x.git': no") ==
                    "to 'https://ann:<redacted>@host/x.git': no",
                "a password is not shown");
    }
    return 0;
}
