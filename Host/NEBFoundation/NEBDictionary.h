// NEBDictionary.h - a small, flat dictionary that keeps the order in which it was filled.
//
//     NEBDictionary record;
//     record.set(NEBSourceControlOperationPathKey, "/w/a.txt");
//     record.value(NEBSourceControlOperationPathKey).string();   // "/w/a.txt"
//     record.value("no such key").isPresent();                   // false
//
// A value type: copies are independent, and each thread may use its own copy. A key that is a host
// constant is not copied; any other text is, unless a value shares it. A look-up takes constant
// time at any size.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "NEBFoundation/NEBConstant.h"
#include "NEBFoundation/NEBValue.h"
#include "Platform/Export.h"

namespace neb {

/// Maps text keys to present values, in the order in which the keys were first set.
class NEB_EXPORT NEBDictionary {
public:
    /// A key and its value. Immutable while it is part of a dictionary.
    ///
    ///     for (const NEBDictionary::Entry& entry : record) {
    ///         show(entry.key(), entry.value().description());
    ///     }
    class NEB_EXPORT Entry {
    public:
        /// Creates an entry whose key is a constant, without a copy of its text.
        Entry(NEBConstant key, NEBValue value) : _key(key.text().data()), _value(std::move(value)) {
            _value._bits.keyLength = static_cast<std::uint8_t>(key.text().size());
        }
        /// Creates an entry with a copy of the key's text, which may be empty. Allocates memory.
        Entry(const std::string& key, NEBValue value)
            : Entry(NEBValue::newText(key), std::move(value)) {}
        /// Copies an entry in constant time: the copies share a key that is not a constant.
        Entry(const Entry& other);
        /// Takes over key and value. The other entry can only be destroyed or assigned to.
        Entry(Entry&& other) noexcept : _key(other._key), _value(std::move(other._value)) {
            _value._bits.keyLength = std::exchange(other._value._bits.keyLength, 0);
        }
        /// Replaces key and value.
        Entry& operator=(Entry other) noexcept {
            std::swap(_key, other._key);
            std::swap(_value._bits, other._value._bits);
            return *this;
        }
        /// Frees the text of the key if this is its last owner.
        ~Entry() {
            if (hasOwnKey()) {
                NEBValue::releaseText(sharedKey());
            }
        }

        /// Returns the text of the key, which is valid as long as the entry.
        [[nodiscard]] std::string_view key() const {
            return hasOwnKey()
                       ? NEBValue::textOf(*sharedKey())
                       : std::string_view(static_cast<const char*>(_key), _value._bits.keyLength);
        }
        /// Returns the value. In a dictionary it is never absent.
        [[nodiscard]] const NEBValue& value() const { return _value; }

    private:
        friend class NEBDictionary;
        /// Takes over one reference to the key.
        Entry(const NEBValue::SharedText* key, NEBValue value);

        /// Whether the key is shared content, not a constant.
        [[nodiscard]] bool hasOwnKey() const { return _value._bits.keyLength == ownKey; }
        /// Returns the content of a key that is not a constant.
        [[nodiscard]] const NEBValue::SharedText* sharedKey() const {
            return static_cast<const NEBValue::SharedText*>(_key);
        }

        /// The `keyLength` of an entry with such a key. Constants are shorter.
        static constexpr std::uint8_t ownKey = 0xFF;

        /// The characters of a host constant, whose length is in the value's `keyLength`; or, when
        /// that is `ownKey`, the shared content of a string.
        const void* _key;
        NEBValue _value;
    };

    /// Creates an empty dictionary without allocating memory.
    NEBDictionary() = default;
    /// Creates a dictionary as set() would: of entries with the same key the last value counts, and
    /// entries without a value are left out.
    ///
    ///     const NEBDictionary options{{NEBSourceControlRequestOptionForce, true}};
    NEBDictionary(std::initializer_list<Entry> entries);
    /// Copies all entries. The contents of the values are shared.
    NEBDictionary(const NEBDictionary& other);
    /// The same. On failure (std::bad_alloc) this dictionary is unchanged.
    NEBDictionary& operator=(const NEBDictionary& other);
    /// Take over the entries.
    NEBDictionary(NEBDictionary&&) noexcept = default;
    NEBDictionary& operator=(NEBDictionary&&) noexcept = default;
    ~NEBDictionary() = default;

    /// Adds an entry, or replaces the value of an existing entry, which keeps its position. Does
    /// nothing when the value is absent, so entries cannot be removed. Invalidates all references
    /// and iterators. Throws std::bad_alloc.
    void set(NEBConstant key, NEBValue value) {
        if (isNew(key, value)) {
            _entries.emplace_back(key, std::move(value));
            indexLastIfNeeded();
        }
    }
    /// The same for a key that is not a constant. Copies its text.
    void set(const std::string& key, NEBValue value) { add(Entry(key, std::move(value))); }
    /// Like set(), with the text of a string value as the key. A long text is shared, not copied.
    /// Does nothing when the key is not a string.
    void setWithSharedKey(const NEBValue& key, NEBValue value) {
        if (key.isString()) {
            add(Entry(key.sharedText(), std::move(value)));
        }
    }
    /// Calls set() for each entry of `other`, in order. The text of a key is shared, not copied.
    void addEntriesFrom(const NEBDictionary& other);

    /// Returns the value of a key; the absent value when the key is missing. The reference is valid
    /// until the next change.
    [[nodiscard]] const NEBValue& value(std::string_view key) const;
    /// Returns the text of a key's string value; empty when the value is absent or of another kind.
    /// The characters are valid until the next change.
    [[nodiscard]] std::string_view text(std::string_view key) const {
        return value(key).string().value_or("");
    }
    /// Whether there is an entry with that key.
    [[nodiscard]] bool contains(std::string_view key) const { return find(key) != nullptr; }

    /// The number of entries.
    [[nodiscard]] std::size_t size() const { return _entries.size(); }
    /// Whether there is no entry.
    [[nodiscard]] bool isEmpty() const { return _entries.empty(); }
    /// Allocates memory for that many entries in all. Throws std::bad_alloc.
    void reserve(std::size_t count) { _entries.reserve(count); }
    /// Iterates over the entries in order. A change invalidates the iterators.
    [[nodiscard]] auto begin() const { return _entries.begin(); }
    /// Returns the end of the iteration.
    [[nodiscard]] auto end() const { return _entries.end(); }

    /// Compares the entries in any order: equal dictionaries have the same keys, with equal values.
    friend NEB_EXPORT bool operator==(const NEBDictionary& left, const NEBDictionary& right);

private:
    /// The positions of the entries by key: a hash table with open addressing. Its size is a power
    /// of two; at least a quarter of the slots are free.
    using Index = std::vector<std::uint32_t>;
    /// Up to this size a linear search is as fast as an index.
    static constexpr std::size_t linearSearchSize = 16;

    /// Does what set() does.
    void add(Entry entry);
    /// Returns whether an entry must be added. If the key exists, replaces its value and returns
    /// false; also returns false when the value is absent.
    [[nodiscard]] bool isNew(std::string_view key, NEBValue& value);
    /// Adds the last entry to the index if the dictionary is large enough to have one.
    void indexLastIfNeeded() {
        if (_entries.size() > linearSearchSize) {
            indexLast();
        }
    }
    /// Adds the last entry to the index, which grows if it is too full.
    void indexLast();
    /// Creates the index of all entries.
    void buildIndex();
    /// Returns the slot of the key in the index, or the free slot where it belongs.
    [[nodiscard]] std::uint32_t& slotForKey(std::string_view key) const;
    /// Returns the entry with that key, or null.
    [[nodiscard]] const Entry* find(std::string_view key) const;

    std::vector<Entry> _entries;
    std::unique_ptr<Index> _index;  // null while a linear search is fast enough
};

}  // namespace neb
