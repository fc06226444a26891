// PackReceiveProgress.h - the number of bytes that a fetch or clone has received so far. git
// reports it only to a terminal, so it is measured by the size of the temporary file that git
// writes.
#pragma once

#include <cstdint>
#include <string>

namespace neb::nebsc {

/// Measures the pack data received into a repository. Not thread-safe.
class PackReceiveProgress {
public:
    /// `folder` is the top of a working copy or a bare repository; it need not exist yet. Temporary
    /// files of earlier git processes do not count.
    explicit PackReceiveProgress(const std::string& folder);

    /// Returns the largest number of bytes seen so far; 0 if git stores the data elsewhere.
    [[nodiscard]] std::uint64_t bytes();

private:
    [[nodiscard]] std::uint64_t bytesNow() const;

    std::string _folder;
    std::uint64_t _bytesBefore;
    std::uint64_t _maximum = 0;
};

}  // namespace neb::nebsc
