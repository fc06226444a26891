#include "NEBFoundation/NEBDictionary.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <utility>

namespace neb {

// ---- an entry ---------------------------------------------------------------------------------

NEBDictionary::Entry::Entry(const NEBValue::SharedText* key, NEBValue value)
    : _key(key), _value(std::move(value)) {
    _value._bits.noteOfKey = ownKey;
}

NEBDictionary::Entry::Entry(const Entry& other) : _key(other._key), _value(other._value) {
    _value._bits.noteOfKey = other._value._bits.noteOfKey;
    if (hasOwnKey()) {
        NEBValue::retainText(*sharedKey());
    }
}

// ---- the dictionary ---------------------------------------------------------------------------

NEBDictionary::NEBDictionary(std::initializer_list<Entry> entries) {
    for (const Entry& entry : entries) {
        add(entry);
    }
}

NEBDictionary::NEBDictionary(const NEBDictionary& other) : _entries(other._entries) {
    if (other._index) {
        _index = std::make_unique<Index>(*other._index);
    }
}

NEBDictionary& NEBDictionary::operator=(const NEBDictionary& other) {
    if (this != &other) {
        *this = NEBDictionary(other);
    }
    return *this;
}

bool NEBDictionary::isNew(std::string_view key, NEBValue& value) {
    if (!value.isPresent()) {
        return false;
    }
    const Entry* present = find(key);
    if (present != nullptr) {
        _entries[static_cast<std::size_t>(present - _entries.data())]._value = std::move(value);
    }
    return present == nullptr;
}

void NEBDictionary::add(Entry entry) {
    if (isNew(entry.key(), entry._value)) {
        _entries.push_back(std::move(entry));
        noteLast();
    }
}

void NEBDictionary::noteLastInIndex() {
    if (_index && _entries.size() * 4 <= _index->size() * 3) {
        placeInIndex(_entries.back().key()) = static_cast<std::uint32_t>(_entries.size());
    } else {
        buildIndex();
    }
}

void NEBDictionary::buildIndex() {
    _index = std::make_unique<Index>(std::bit_ceil(_entries.size() * 2));
    std::uint32_t number = 0;
    for (const Entry& entry : _entries) {
        placeInIndex(entry.key()) = ++number;
    }
}

/// The place that holds the number of the entry with the key (its position plus one), or the free
/// one (0) that would.
std::uint32_t& NEBDictionary::placeInIndex(std::string_view key) const {
    const std::size_t mask = _index->size() - 1;
    std::size_t place = std::hash<std::string_view>()(key) & mask;
    while ((*_index)[place] != 0 && _entries[(*_index)[place] - 1].key() != key) {
        place = (place + 1) & mask;
    }
    return (*_index)[place];
}

void NEBDictionary::addEntriesFrom(const NEBDictionary& other) {
    for (const Entry& entry : other._entries) {
        add(entry);
    }
}

const NEBDictionary::Entry* NEBDictionary::find(std::string_view key) const {
    if (_index) {
        const std::uint32_t number = placeInIndex(key);
        return number != 0 ? &_entries[number - 1] : nullptr;
    }
    const auto found = std::find_if(_entries.begin(), _entries.end(), [key](const Entry& entry) {
        // Constants are the same key in the same place.
        const std::string_view other = entry.key();
        return other.size() == key.size() && (other.data() == key.data() || other == key);
    });
    return found != _entries.end() ? &*found : nullptr;
}

const NEBValue& NEBDictionary::value(std::string_view key) const {
    static const NEBValue nothing;
    const Entry* entry = find(key);
    return entry != nullptr ? entry->_value : nothing;
}

bool operator==(const NEBDictionary& left, const NEBDictionary& right) {
    return left.size() == right.size() &&
           std::all_of(left.begin(), left.end(), [&right](const NEBDictionary::Entry& entry) {
               return right.value(entry.key()) == entry.value();
           });
}

}  // namespace neb
