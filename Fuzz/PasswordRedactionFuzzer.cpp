// Redacts the passwords of URLs: none is left, and nothing else is changed.

#include "LOMFoundation/LOMPasswordRedaction.h"

#include "Property.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    const std::string shown = neb::textWithoutPasswords(bytes);
    require(neb::textWithoutPasswords(shown) == shown, "a redacted text has no password");
    require(split(shown, '\n').size() == split(bytes, '\n').size(), "the number of lines is kept");
    require(!neb::isUTF8(bytes) || neb::isUTF8(shown), "UTF-8 stays UTF-8");
    if (bytes.find('@') == std::string::npos && bytes.find("%40") == std::string::npos) {
        require(shown == bytes, "a text without a password is not changed");
    }
    // Uses the input as a password, without the characters that end a URL.
    std::string password;
    for (const char character : bytes) {
        if (static_cast<unsigned char>(character) > ' ' && character != '/' && character != '?' &&
            character != '#') {
            password += character;
        }
    }
    for (const std::string start : {"https://", "HTTPS:/", "ssh:", "git:///"}) {
        require(password.empty() || neb::textWithoutPasswords("to '" + start + "ann:" + password +
                                                              "@host/x.git': no") ==
                                        "to '" + start + "ann:<redacted>@host/x.git': no",
                "the password is redacted");
    }
    return 0;
}
