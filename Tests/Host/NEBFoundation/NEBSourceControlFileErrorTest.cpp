#include "NEBFoundation/NEBSourceControlFileError.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace neb {
namespace {

TEST(FileError, HasTheSystemsNumberAndTheFailuresSentence) {
    const auto error = NEBSourceControlErrorFromFileFailure({ENOSPC, "It could not be written."});
    EXPECT_EQ(error.domain, "NEBPOSIXErrorDomain");
    EXPECT_EQ(error.code, ENOSPC);
    EXPECT_EQ(error.localizedDescription(), "It could not be written.");
    EXPECT_EQ(error.localizedRecoverySuggestion(), std::nullopt);
    EXPECT_EQ(error.text, std::nullopt);
}

TEST(FileError, HasTheClassOfItsNumber) {
    const std::pair<int, const char*> classes[] = {
        {EACCES, "permission-denied"}, {EPERM, "permission-denied"}, {EROFS, "permission-denied"},
        {ENOSPC, "disk-full"},         {EDQUOT, "disk-full"},        {EEXIST, "destination-exists"},
        {ENOENT, "path-unknown"},      {ENOTDIR, "path-unknown"},    {ENAMETOOLONG, "path-invalid"},
        {EINVAL, "path-invalid"},      {ECANCELED, "cancelled"},     {EIO, "unknown"},
    };
    for (const auto& [number, errorClass] : classes) {
        EXPECT_EQ(NEBSourceControlErrorFromFileFailure({number, "x"}).errorClass, errorClass);
    }
}

}  // namespace
}  // namespace neb
