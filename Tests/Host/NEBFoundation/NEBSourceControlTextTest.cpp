#include "NEBFoundation/NEBSourceControlText.h"

#include <gtest/gtest.h>

namespace neb {
namespace {

struct Case {
    const char* name;
    std::string bytes;
    std::string text;
};

class TextFromData : public testing::TestWithParam<Case> {};

TEST_P(TextFromData, RemovesTheLineEndOfASingleLineOnly) {
    EXPECT_EQ(_nebsc_stringFromData(GetParam().bytes), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Text, TextFromData,
    testing::Values(Case{"Empty", "", ""}, Case{"AnAnswer", "/r/re.git\n", "/r/re.git"},
                    Case{"WithCRLF", "hosts.\r\n", "hosts."}, Case{"NoLineEnd", "abc", "abc"},
                    Case{"TwoLines", "a\nb\n", "a\nb\n"}, Case{"OneAndAHalf", "a\nb", "a\nb"},
                    Case{"OnlyALineEnd", "\n", ""}, Case{"OnlyCRLF", "\r\n", ""},
                    Case{"TwoLineEnds", "\n\n", "\n\n"}, Case{"LoneCR", "a\r", "a\r"},
                    Case{"CRBeforeCRLF", "a\r\r\n", "a\r"},
                    Case{"RowWithTAB", "abc\trefs/heads/main\n", "abc\trefs/heads/main\n"},
                    Case{"RowWithBlank", " M a.txt\n", " M a.txt\n"},
                    Case{"RowWithStar", "* main\n", "* main\n"},
                    Case{"RowWithPlus", "+ other\n", "+ other\n"},
                    Case{"BlankInside", "a b\n", "a b"}, Case{"Untracked", "?? a\n", "?? a"},
                    Case{"Latin1", "J\xFCrgen\n", "J\xEF\xBF\xBDrgen"},
                    Case{"NULInside", std::string("a\0b\n", 4), std::string("a\0b", 3)}),
    [](const auto& parameter) { return parameter.param.name; });

TEST_P(TextFromData, IsTheSameTextAsData) {
    const Data data(GetParam().bytes);
    const Data text = NEBSourceControlTextData(data);
    EXPECT_EQ(text.bytes(), GetParam().text);
    EXPECT_EQ(text.bytes().data() == data.bytes().data(), GetParam().text == GetParam().bytes)
        << "the bytes are shared unless they change";
}

TEST(AbsentText, AbsentDataHasNoText) {
    EXPECT_EQ(_nebsc_stringFromData(std::nullopt), std::nullopt);
}

}  // namespace
}  // namespace neb
