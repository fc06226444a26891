#include "Platform/ErrnoText.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace neb {
namespace {

TEST(ErrnoText, IsTheTextOfTheNumber) {
    EXPECT_EQ(textOfErrno(ENOENT), "No such file or directory");
    EXPECT_EQ(textOfErrno(EACCES), "Permission denied");
    EXPECT_NE(textOfErrno(123456).find("123456"), std::string::npos);
}

}  // namespace
}  // namespace neb
