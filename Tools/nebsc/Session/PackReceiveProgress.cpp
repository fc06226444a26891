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
    _most = std::max(_most, now > _bytesBefore ? now - _bytesBefore : 0);
    return _most;
}

std::uint64_t PackReceiveProgress::bytesNow() const {
    std::uint64_t bytes = 0;
    for (const char* packs : {".git/objects/pack", "objects/pack"}) {
        std::error_code failure;
        for (fs::directory_iterator entry(pathByAppendingComponent(_folder, packs), failure), end;
             !failure && entry != end; entry.increment(failure)) {
            std::error_code gone;
            const std::uintmax_t size = entry->path().filename().string().starts_with("tmp_pack_")
                                            ? entry->file_size(gone)
                                            : 0;
            bytes += gone ? 0 : size;
        }
    }
    return bytes;
}

}  // namespace neb::nebsc
