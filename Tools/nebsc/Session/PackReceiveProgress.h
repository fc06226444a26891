// PackReceiveProgress.h - how much a git that fetches or clones has received so far. It says
// nothing about that but to a terminal; what came, however, it keeps in a file of its own until it
// is whole.
#pragma once

#include <cstdint>
#include <string>

namespace neb::nebsc {

/// Of one thread at a time.
class PackReceiveProgress {
public:
    /// `folder` is the top of a working copy or a bare repository; it need not be there yet. What
    /// an earlier git has left there does not count.
    explicit PackReceiveProgress(const std::string& folder);

    /// The most that there was at any time; 0 where git keeps what comes elsewhere.
    [[nodiscard]] std::uint64_t bytes();

private:
    [[nodiscard]] std::uint64_t bytesNow() const;

    std::string _folder;
    std::uint64_t _bytesBefore;
    std::uint64_t _most = 0;
};

}  // namespace neb::nebsc
