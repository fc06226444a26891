// NEBDictionary.h - a small, flat dictionary that keeps the order in which it was filled.
//
//     NEBDictionary record;
//     record.set(NEBSourceControlOperationPathKey, "/w/a.txt");
//     record.value(NEBSourceControlOperationPathKey).string();   // "/w/a.txt"
//     record.value("no such key").isPresent();                   // false
//
// A value: copies are independent, any thread may use its own. A host constant as a key costs
// nothing; another text is copied, unless a value holds it already. Looking up is quick at any
// size.
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

class NEB_EXPORT NEBDictionary {
public:
    class NEB_EXPORT Entry {
    public:
        Entry(NEBConstant key, NEBValue value) : _key(key.text().data()), _value(std::move(value)) {
            _value._bits.noteOfKey = static_cast<std::uint8_t>(key.text().size());
        }
        Entry(const std::string& key, NEBValue value)
            : Entry(NEBValue::newText(key), std::move(value)) {}
        Entry(const Entry& other);
        Entry(Entry&& other) noexcept : _key(other._key), _value(std::move(other._value)) {
            _value._bits.noteOfKey = std::exchange(other._value._bits.noteOfKey, 0);
        }
        Entry& operator=(Entry other) noexcept {
            std::swap(_key, other._key);
            std::swap(_value._bits, other._value._bits);
            return *this;
        }
        ~Entry() {
            if (hasOwnKey()) {
                NEBValue::releaseText(sharedKey());
            }
        }

        [[nodiscard]] std::string_view key() const {
            return hasOwnKey()
                       ? NEBValue::textOf(*sharedKey())
                       : std::string_view(static_cast<const char*>(_key), _value._bits.noteOfKey);
        }
        [[nodiscard]] const NEBValue& value() const { return _value; }

    private:
        friend class NEBDictionary;
        /// Takes over one hold on the key.
        Entry(const NEBValue::SharedText* key, NEBValue value);

        [[nodiscard]] bool hasOwnKey() const { return _value._bits.noteOfKey == ownKey; }
        [[nodiscard]] const NEBValue::SharedText* sharedKey() const {
            return static_cast<const NEBValue::SharedText*>(_key);
        }

        static constexpr std::uint8_t ownKey = 0xFF;

        /// Of a host constant the characters, as many as are noted with the value; or, when ownKey
        /// is noted there, a text as values share it.
        const void* _key;
        NEBValue _value;
    };

    NEBDictionary() = default;
    NEBDictionary(std::initializer_list<Entry> entries);
    NEBDictionary(const NEBDictionary& other);
    NEBDictionary& operator=(const NEBDictionary& other);
    NEBDictionary(NEBDictionary&&) noexcept = default;
    NEBDictionary& operator=(NEBDictionary&&) noexcept = default;
    ~NEBDictionary() = default;

    /// Adds an entry, or replaces the value of the one there is, which keeps its place. An absent
    /// value changes nothing.
    void set(NEBConstant key, NEBValue value) {
        if (isNew(key, value)) {
            _entries.emplace_back(key, std::move(value));
            noteLast();
        }
    }
    void set(const std::string& key, NEBValue value) { add(Entry(key, std::move(value))); }
    /// The same, with the text that a string value holds for a key: shared, not copied, when it is
    /// long. A key of another kind changes nothing.
    void setWithSharedKey(const NEBValue& key, NEBValue value) {
        if (key.isString()) {
            add(Entry(key.sharedText(), std::move(value)));
        }
    }
    /// Sets all entries of `other`, in their order.
    void addEntriesFrom(const NEBDictionary& other);

    /// The value under the key, the absent value when there is none. Good until the next change.
    [[nodiscard]] const NEBValue& value(std::string_view key) const;
    [[nodiscard]] bool contains(std::string_view key) const { return find(key) != nullptr; }

    [[nodiscard]] std::size_t size() const { return _entries.size(); }
    [[nodiscard]] bool isEmpty() const { return _entries.empty(); }
    void reserve(std::size_t count) { _entries.reserve(count); }
    [[nodiscard]] auto begin() const { return _entries.begin(); }
    [[nodiscard]] auto end() const { return _entries.end(); }

    /// Equal entries, in whatever order.
    friend NEB_EXPORT bool operator==(const NEBDictionary& left, const NEBDictionary& right);

private:
    /// Where the entries stand, by their keys: a table with open addressing, of a power of two
    /// places, of which at least a quarter are free.
    using Index = std::vector<std::uint32_t>;
    /// Up to here a walk through the entries is as quick as an index.
    static constexpr std::size_t walkedSize = 16;

    void add(Entry entry);
    /// Whether an entry with the key and value is to be added. False for an absent value; also for
    /// a key that there is, whose entry then has the value.
    [[nodiscard]] bool isNew(std::string_view key, NEBValue& value);
    void noteLast() {
        if (_entries.size() > walkedSize) {
            noteLastInIndex();
        }
    }
    void noteLastInIndex();
    void buildIndex();
    [[nodiscard]] std::uint32_t& placeInIndex(std::string_view key) const;
    [[nodiscard]] const Entry* find(std::string_view key) const;

    std::vector<Entry> _entries;
    std::unique_ptr<Index> _index;  // only once a walk through the entries would be slow
};

}  // namespace neb
