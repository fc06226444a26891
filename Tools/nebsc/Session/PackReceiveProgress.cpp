#include "Session/PackReceiveProgress.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "Platform/PathString.h"

namespace neb::nebsc {

namespace fs = std::filesystem;

PackReceiveProgress::PackReceiveProgress(const std::string& folder)
    : _folder(folder), _bytesBefore(bytesNow()) {}

std::uint64_t PackReceiveProgress::bytes() {
    const std::uint64_t now = bytesNow();
    _maximum = std::max(_maximum, now > _bytesBefore ? now - _bytesBefore : 0);
    return _maximum;
}

std::uint64_t PackReceiveProgress::bytesNow() const {
    std::uint64_t bytes = 0;
    for (const char* packFolder : {".git/objects/pack", "objects/pack"}) {
        std::error_code failure;
        for (fs::directory_iterator entry(pathByAppendingComponent(_folder, packFolder), failure),
             end;
             !failure && entry != end; entry.increment(failure)) {
            std::error_code sizeFailure;
            const std::uintmax_t size = entry->path().filename().string().starts_with("tmp_pack_")
                                            ? entry->file_size(sizeFailure)
                                            : 0;
            bytes += sizeFailure ? 0 : size;
        }
    }
    return bytes;
}

}  // namespace neb::nebsc
