#include "NEBFoundation/NEBSourceControlFileError.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb {
namespace {

TEST(FileError, HasTheNumberAndTheSentenceOfTheFailure) {
    const auto error = NEBSourceControlErrorFromFileFailure({ENOSPC, "It could not be written."});
    EXPECT_EQ(error.domain, "NEBPOSIXErrorDomain");
    EXPECT_EQ(error.code, ENOSPC);
    EXPECT_EQ(error.localizedDescription(), "It could not be written.");
    EXPECT_EQ(error.localizedRecoverySuggestion(), std::nullopt);
    EXPECT_EQ(error.text, std::nullopt);
}

TEST(FileError, HasTheClassOfTheNumber) {
    const std::pair<int, std::string_view> classes[] = {
        {EACCES, NEBSourceControlPermissionDeniedErrorClass},
        {EPERM, NEBSourceControlPermissionDeniedErrorClass},
        {EROFS, NEBSourceControlPermissionDeniedErrorClass},
        {ENOSPC, NEBSourceControlDiskFullErrorClass},
        {EDQUOT, NEBSourceControlDiskFullErrorClass},
        {EEXIST, NEBSourceControlDestinationExistsErrorClass},
        {ENOENT, NEBSourceControlPathUnknownErrorClass},
        {ENOTDIR, NEBSourceControlPathUnknownErrorClass},
        {ENAMETOOLONG, NEBSourceControlPathInvalidErrorClass},
        {EINVAL, NEBSourceControlPathInvalidErrorClass},
        {ECANCELED, NEBSourceControlCancelledErrorClass},
        {EIO, NEBSourceControlUnknownErrorClass},
    };
    for (const auto& [number, errorClass] : classes) {
        EXPECT_EQ(NEBSourceControlErrorFromFileFailure({number, "x"}).errorClass, errorClass);
    }
}

}  // namespace
}  // namespace neb
