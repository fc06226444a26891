// Data.h - bytes as a child process wrote them.
//
//     Data data("a\0b", 3);
//     data.bytes();             // the three bytes
//     Data same = data;         // the same bytes in the same place: nothing is copied
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Export.h"

namespace neb {

/// What is held by several, with the number of holders. From any thread.
struct Shared {
    mutable std::atomic<std::uint32_t> holders = 1;

    void retain() const { holders.fetch_add(1, std::memory_order_relaxed); }
    /// Whether that was the last holder, who then has to delete the thing.
    [[nodiscard]] bool release() const {
        return holders.fetch_sub(1, std::memory_order_acq_rel) == 1;
    }
};

/// A byte buffer. It may hold anything: NUL bytes, bytes that are no UTF-8, nothing at all. Where
/// "no buffer" differs from "an empty buffer", the type is std::optional<Data>.
///
/// A value: any thread may use its own. The bytes are shared by the copies and by the texts that
/// are pieces of them (see NEBValue), live as long as one of those, and never change.
class NEB_EXPORT Data {
public:
    /// Empty.
    Data() = default;
    /// A copy of the bytes.
    Data(std::string_view bytes);
    Data(const std::string& bytes) : Data(std::string_view(bytes)) {}
    Data(const char* text) : Data(std::string_view(text)) {}

    Data(const Data& other) : _block(other._block) {
        if (_block != nullptr) {
            _block->retain();
        }
    }
    Data(Data&& other) noexcept : _block(std::exchange(other._block, nullptr)) {}
    Data& operator=(Data other) noexcept {
        std::swap(_block, other._block);
        return *this;
    }
    ~Data() { release(_block); }

    /// Good as long as this or a copy of it lives.
    [[nodiscard]] std::string_view bytes() const {
        return _block != nullptr ? std::string_view(_block->bytes, _block->size)
                                 : std::string_view();
    }
    operator std::string_view() const { return bytes(); }
    [[nodiscard]] std::size_t size() const { return bytes().size(); }
    [[nodiscard]] bool empty() const { return bytes().empty(); }

    friend bool operator==(const Data& left, const Data& right) {
        return left.bytes() == right.bytes();
    }

private:
    friend class GrowingData;
    friend class NEBValue;

    struct NEB_EXPORT Block : Shared {
        Block() = default;
        Block(const Block&) = delete;
        Block& operator=(const Block&) = delete;
        ~Block();

        /// Changes the capacity, and as a rule the place of the bytes. False, with all as it was,
        /// when there is no memory.
        [[nodiscard]] bool resize(std::size_t newCapacity);

        char* bytes = nullptr;
        std::size_t size = 0;
        std::size_t capacity = 0;
        bool isMapped = false;  // in pages of its own
    };

    static void release(const Block* block) {
        if (block != nullptr && block->release()) {
            destroy(block);
        }
    }
    static void destroy(const Block* block);

    Block* _block = nullptr;
};

/// Data that is still on its way. It grows without being copied, as far as the system can do that.
/// One thread at a time.
class NEB_EXPORT GrowingData {
public:
    /// Room for `count` bytes more, at least, behind those that there are. Throws std::bad_alloc.
    [[nodiscard]] char* roomFor(std::size_t count);
    /// How many bytes can be put there.
    [[nodiscard]] std::size_t room() const {
        return _data._block != nullptr ? _data._block->capacity - _data._block->size : 0;
    }
    /// So many bytes have been put there.
    void add(std::size_t count) { _data._block->size += count; }

    /// What has come so far. It and its copies grow with this, and their bytes move: those are good
    /// until the next call of roomFor().
    [[nodiscard]] const Data& data() const { return _data; }
    /// All of it, with no more room than it needs; nothing is left here.
    [[nodiscard]] Data take();

private:
    Data _data;
};

}  // namespace neb
