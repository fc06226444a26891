#include "Platform/Data.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace neb {

namespace {

constexpr std::size_t leastCapacity = 256;

#ifdef MREMAP_MAYMOVE
/// From this size on, bytes have pages of their own where the system can move pages to where there
/// is room behind them. malloc() would copy them again and again, and leave holes of all sizes in
/// the memory beside what is made of them meanwhile.
constexpr std::size_t worthMapping = std::size_t{1} << 18;

char* mapped(std::size_t size) {
    void* pages = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return pages == MAP_FAILED ? nullptr : static_cast<char*>(pages);
}
#endif

}  // namespace

Data::Block::~Block() {
    if (isMapped) {
        ::munmap(bytes, capacity);
    } else {
        std::free(bytes);
    }
}

void Data::destroy(const Block* block) {
    delete block;
}

bool Data::Block::resize(std::size_t newCapacity) {
    void* place = nullptr;
#ifdef MREMAP_MAYMOVE
    if (isMapped) {
        place = ::mremap(bytes, capacity, newCapacity, MREMAP_MAYMOVE);
        place = place == MAP_FAILED ? nullptr : place;
    } else if (newCapacity >= worthMapping) {
        place = mapped(newCapacity);
        if (place != nullptr) {
            std::copy_n(bytes, size, static_cast<char*>(place));
            std::free(bytes);
            isMapped = true;
        }
    } else
#endif
        place = std::realloc(bytes, newCapacity);
    if (place == nullptr) {
        return false;
    }
    bytes = static_cast<char*>(place);
    capacity = newCapacity;
    return true;
}

Data::Data(std::string_view bytes) {
    if (!bytes.empty()) {
        GrowingData copy;
        bytes.copy(copy.roomFor(bytes.size()), bytes.size());
        copy.add(bytes.size());
        *this = copy.take();
    }
}

char* GrowingData::roomFor(std::size_t count) {
    if (_data._block == nullptr) {
        _data._block = new Data::Block;
    }
    Data::Block& block = *_data._block;
    if (room() < count &&
        !block.resize(std::max({block.size + count, block.capacity * 2, leastCapacity}))) {
        throw std::bad_alloc();
    }
    return block.bytes + block.size;
}

Data GrowingData::take() {
    if (room() > 0) {
        // Where the smaller one cannot be had, the larger one does.
        static_cast<void>(_data._block->resize(std::max<std::size_t>(_data._block->size, 1)));
    }
    return std::exchange(_data, Data());
}

}  // namespace neb
