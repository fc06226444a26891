// Data.h - an immutable byte buffer that copies share, and a buffer that grows.
//
//     Data data(std::string_view("a\0b", 3));
//     data.bytes();             // the three bytes
//     Data same = data;         // shares the bytes; nothing is copied
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Export.h"

namespace neb {

/// The base of objects with a reference count. Thread-safe.
///
/// A new object has one owner. Each owner calls retain() for every further owner and release() once
/// when it is done.
struct Shared {
    mutable std::atomic<std::uint32_t> holders = 1;

    /// Adds an owner.
    void retain() const { holders.fetch_add(1, std::memory_order_relaxed); }
    /// Whether the caller is the only owner.
    [[nodiscard]] bool hasOneHolder() const { return holders.load(std::memory_order_acquire) == 1; }
    /// Removes an owner. Returns true to the last one, which must then delete the object.
    [[nodiscard]] bool release() const {
        return holders.fetch_sub(1, std::memory_order_acq_rel) == 1;
    }
};

/// A byte buffer, for example the output of a child process. It may contain NUL bytes and bytes
/// that are not UTF-8. Where "no buffer" differs from "an empty buffer", the type is
/// std::optional<Data>.
///
/// A value: different threads may use different copies at the same time. All copies, and the
/// NEBValues that are substrings of them, share the bytes. The bytes never change and live as long
/// as one of those. Copying costs one atomic increment.
class NEB_EXPORT Data {
public:
    /// Creates an empty buffer without allocating memory.
    Data() = default;
    /// Copies the bytes. Throws std::bad_alloc.
    Data(std::string_view bytes);
    /// Copies the bytes of the string, NUL bytes included.
    Data(const std::string& bytes) : Data(std::string_view(bytes)) {}
    /// Copies the characters before the terminating NUL. `text` must not be null.
    Data(const char* text) : Data(std::string_view(text)) {}

    /// Shares the bytes of the other buffer. Throws nothing.
    Data(const Data& other) : _block(other._block) {
        if (_block != nullptr) {
            _block->retain();
        }
    }
    /// Takes over the bytes and leaves the other buffer empty.
    Data(Data&& other) noexcept : _block(std::exchange(other._block, nullptr)) {}
    /// Gives up the old bytes and shares or takes over the new ones.
    Data& operator=(Data other) noexcept {
        std::swap(_block, other._block);
        return *this;
    }
    /// Frees the bytes if this is their last owner.
    ~Data() { release(_block); }

    /// Returns a view that is valid as long as this object or a copy of it lives.
    [[nodiscard]] std::string_view bytes() const {
        return _block != nullptr ? std::string_view(_block->bytes, _block->size)
                                 : std::string_view();
    }
    /// Returns bytes(), so that Data can be used as a text.
    operator std::string_view() const { return bytes(); }
    /// Returns the number of bytes.
    [[nodiscard]] std::size_t size() const { return bytes().size(); }
    /// Whether there are no bytes.
    [[nodiscard]] bool empty() const { return bytes().empty(); }

    /// Compares the bytes.
    friend bool operator==(const Data& left, const Data& right) {
        return left.bytes() == right.bytes();
    }

private:
    // GrowingData fills the block; NEBValue owns it for substrings of the bytes.
    friend class GrowingData;
    friend class NEBValue;

    /// The shared bytes.
    struct NEB_EXPORT Block : Shared {
        /// Creates a block without memory.
        Block() = default;
        Block(const Block&) = delete;
        Block& operator=(const Block&) = delete;
        /// Frees the bytes with munmap or free.
        ~Block();

        /// Changes the capacity and usually moves the bytes. Returns false, with nothing changed,
        /// if there is not enough memory.
        [[nodiscard]] bool resize(std::size_t newCapacity);

        /// The memory of `capacity` bytes, of which the first `size` are in use. Null without any.
        char* bytes = nullptr;
        std::size_t size = 0;
        std::size_t capacity = 0;
        bool isMapped = false;  // allocated with mmap, not malloc
    };

    /// Removes an owner and deletes the block after the last one. Null is allowed.
    static void release(const Block* block) {
        if (block != nullptr && block->release()) {
            destroy(block);
        }
    }
    /// Deletes the block.
    static void destroy(const Block* block);

    /// Null for an empty buffer.
    Block* _block = nullptr;
};

/// A buffer that grows while data arrives. Large buffers grow without being copied where the system
/// can move pages. Not thread-safe.
///
///     GrowingData buffer;
///     const ssize_t count = read(fd, buffer.roomFor(4096), 4096);
///     buffer.add(count);
///     Data data = buffer.take();
class NEB_EXPORT GrowingData {
public:
    /// Makes room for at least `count` bytes after the existing ones and returns its address. It is
    /// valid until the next call. Throws std::bad_alloc.
    [[nodiscard]] char* roomFor(std::size_t count);
    /// Returns the number of bytes that can be written there.
    [[nodiscard]] std::size_t room() const {
        return _data._block != nullptr ? _data._block->capacity - _data._block->size : 0;
    }
    /// Adds the first `count` bytes of that room to the data. `count` must not exceed room().
    void add(std::size_t count) { _data._block->size += count; }

    /// Returns the data so far. This Data and its copies grow with the buffer, so views of their
    /// bytes are valid only until the next call of roomFor().
    [[nodiscard]] const Data& data() const { return _data; }
    /// Returns the data, without unused room, and leaves the buffer empty.
    [[nodiscard]] Data take();

    /// Removes the first `count` bytes, which must not exceed the size. Values that share them keep
    /// them alive; otherwise their memory is used again. Throws std::bad_alloc.
    void removeFirst(std::size_t count);

private:
    Data _data;
};

}  // namespace neb
