#include "JSON/Base64.h"

#include <gtest/gtest.h>

namespace neb::nebsc {
namespace {

std::string base64Of(std::string_view bytes) {
    std::string text;
    appendBase64(text, bytes);
    return text;
}

/// The test vectors of RFC 4648, section 10.
TEST(Base64, HasTheFormOfTheStandard) {
    const std::pair<const char*, const char*> vectors[] = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"},
    };
    for (const auto& [bytes, text] : vectors) {
        EXPECT_EQ(base64Of(bytes), text);
        EXPECT_EQ(bytesOfBase64(text), bytes);
    }
}

TEST(Base64, KeepsAllBytes) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
        EXPECT_EQ(bytesOfBase64(base64Of(bytes)), bytes);
    }
}

TEST(Base64, RefusesOtherText) {
    for (const char* text : {"Z", "Zg", "Zg=", "Zh==", "Zm9=", "=",
                             "====", "Z===", "Zg==Zg==", "Zm9v\n", "Zm-v", "Z g="}) {
        EXPECT_EQ(bytesOfBase64(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace neb::nebsc
