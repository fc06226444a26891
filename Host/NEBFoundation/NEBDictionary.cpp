#include "NEBFoundation/NEBDictionary.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <utility>

namespace neb {

// ---- a dictionary as a value ------------------------------------------------------------------

struct NEBValue::SharedDictionary : SharedContent {
    explicit SharedDictionary(NEBDictionary held) : dictionary(std::move(held)) {}
    [[nodiscard]] std::string description() const override {
        std::string text = "{";
        for (const NEBDictionary::Entry& entry : dictionary) {
            text.append(text.size() > 1 ? ", " : "").append(entry.key()).append(" = ");
            text += entry.value().description();
        }
        return text + "}";
    }
    [[nodiscard]] bool equals(const SharedContent& other) const override {
        return dictionary == static_cast<const SharedDictionary&>(other).dictionary;
    }
    const NEBDictionary dictionary;
};

NEBValue::NEBValue(NEBDictionary dictionary) {
    hold<const Shared*>(Kind::dictionary, new SharedDictionary(std::move(dictionary)));
}

const NEBDictionary* NEBValue::dictionary() const {
    const auto* content = sharedContent(Kind::dictionary);
    return content != nullptr ? &static_cast<const SharedDictionary*>(content)->dictionary
                              : nullptr;
}

// ---- an entry ---------------------------------------------------------------------------------

NEBDictionary::Entry::Entry(const NEBValue::SharedText* key, NEBValue value)
    : _key(key), _value(std::move(value)) {
    _value._bits.keyLength = ownKey;
}

NEBDictionary::Entry::Entry(const Entry& other) : _key(other._key), _value(other._value) {
    _value._bits.keyLength = other._value._bits.keyLength;
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
        indexLastIfNeeded();
    }
}

void NEBDictionary::indexLast() {
    if (_index && _entries.size() * 4 <= _index->size() * 3) {
        slotForKey(_entries.back().key()) = static_cast<std::uint32_t>(_entries.size());
    } else {
        buildIndex();
    }
}

void NEBDictionary::buildIndex() {
    _index = std::make_unique<Index>(std::bit_ceil(_entries.size() * 2));
    std::uint32_t number = 0;
    for (const Entry& entry : _entries) {
        slotForKey(entry.key()) = ++number;
    }
}

/// Returns the slot that holds the number of the key's entry (its position plus one), or the free
/// slot (0) where it belongs.
std::uint32_t& NEBDictionary::slotForKey(std::string_view key) const {
    const std::size_t mask = _index->size() - 1;
    std::size_t slot = std::hash<std::string_view>()(key) & mask;
    while ((*_index)[slot] != 0 && _entries[(*_index)[slot] - 1].key() != key) {
        slot = (slot + 1) & mask;
    }
    return (*_index)[slot];
}

void NEBDictionary::addEntriesFrom(const NEBDictionary& other) {
    for (const Entry& entry : other._entries) {
        add(entry);
    }
}

const NEBDictionary::Entry* NEBDictionary::find(std::string_view key) const {
    if (_index) {
        const std::uint32_t number = slotForKey(key);
        return number != 0 ? &_entries[number - 1] : nullptr;
    }
    const auto found = std::find_if(_entries.begin(), _entries.end(), [key](const Entry& entry) {
        // The text of a constant has one address.
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
