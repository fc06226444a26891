#include "Platform/Data.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

// The thread sanitizer does not follow mremap(): it would take memory that moved to the address of
// another thread's former buffer for a data race.
#if defined(MREMAP_MAYMOVE) && !defined(__SANITIZE_THREAD__)
#define NEB_GROWS_MAPPINGS
#endif

namespace neb {

namespace {

constexpr std::size_t minimumCapacity = 256;

#ifdef NEB_GROWS_MAPPINGS
/// Buffers of at least this size get their own pages, which mremap() can grow without copying.
/// realloc() would copy them repeatedly and fragment the heap.
constexpr std::size_t mappingThreshold = std::size_t{1} << 18;

char* mapPages(std::size_t size) {
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
    void* resized = nullptr;
#ifdef NEB_GROWS_MAPPINGS
    if (isMapped) {
        resized = ::mremap(bytes, capacity, newCapacity, MREMAP_MAYMOVE);
        resized = resized == MAP_FAILED ? nullptr : resized;
    } else if (newCapacity >= mappingThreshold) {
        resized = mapPages(newCapacity);
        if (resized != nullptr) {
            std::copy_n(bytes, size, static_cast<char*>(resized));
            std::free(bytes);
            isMapped = true;
        }
    } else
#endif
        resized = std::realloc(bytes, newCapacity);
    if (resized == nullptr) {
        return false;
    }
    bytes = static_cast<char*>(resized);
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
        !block.resize(std::max({block.size + count, block.capacity * 2, minimumCapacity}))) {
        throw std::bad_alloc();
    }
    return block.bytes + block.size;
}

Data GrowingData::take() {
    if (room() > 0) {
        // If this fails, the larger block is used.
        static_cast<void>(_data._block->resize(std::max<std::size_t>(_data._block->size, 1)));
    }
    return std::exchange(_data, Data());
}

void GrowingData::removeFirst(std::size_t count) {
    if (count == 0) {
        return;
    }
    Data::Block& block = *_data._block;
    const std::size_t left = block.size - count;
    if (block.hasOneHolder()) {
        std::memmove(block.bytes, block.bytes + count, left);
        block.size = left;
    } else {
        GrowingData rest;
        if (left > 0) {
            std::memcpy(rest.roomFor(left), block.bytes + count, left);
            rest.add(left);
        }
        *this = std::move(rest);
    }
}

}  // namespace neb
