#include "NEBFoundation/NEBDictionary.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <utility>

namespace neb {

namespace {

/// Up to here a walk through the entries is as quick as an index.
constexpr std::size_t walkedSize = 16;

}  // namespace

// ---- an entry ---------------------------------------------------------------------------------

NEBDictionary::Entry::Entry(NEBConstant key, NEBValue value)
    : _key(key.text().data()), _value(std::move(value)) {
    _value._noteOfKey = static_cast<std::uint8_t>(key.text().size());
}

NEBDictionary::Entry::Entry(const NEBValue::SharedText* key, NEBValue value)
    : _key(key), _value(std::move(value)) {
    _value._noteOfKey = ownKey;
}

NEBDictionary::Entry::Entry(const Entry& other) : _key(other._key), _value(other._value) {
    _value._noteOfKey = other._value._noteOfKey;
    if (hasOwnKey()) {
        NEBValue::retainText(*sharedKey());
    }
}

NEBDictionary::Entry::Entry(Entry&& other) noexcept
    : _key(other._key), _value(std::move(other._value)) {
    _value._noteOfKey = std::exchange(other._value._noteOfKey, 0);
}

NEBDictionary::Entry& NEBDictionary::Entry::operator=(Entry other) noexcept {
    std::swap(_key, other._key);
    std::swap(_value._noteOfKey, other._value._noteOfKey);
    _value = std::move(other._value);
    return *this;
}

NEBDictionary::Entry::~Entry() {
    if (hasOwnKey()) {
        NEBValue::releaseText(sharedKey());
    }
}

std::string_view NEBDictionary::Entry::key() const {
    return hasOwnKey() ? NEBValue::textOf(*sharedKey())
                       : std::string_view(static_cast<const char*>(_key), _value._noteOfKey);
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

void NEBDictionary::add(Entry entry) {
    if (!entry._value.isPresent()) {
        return;
    }
    if (const Entry* present = find(entry.key())) {
        _entries[static_cast<std::size_t>(present - _entries.data())]._value =
            std::move(entry._value);
        return;
    }
    _entries.push_back(std::move(entry));
    if (_index && _entries.size() * 4 <= _index->size() * 3) {
        placeInIndex(_entries.back().key()) = static_cast<std::uint32_t>(_entries.size());
    } else if (_entries.size() > walkedSize) {
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
    const auto found = std::find_if(_entries.begin(), _entries.end(),
                                    [key](const Entry& entry) { return entry.key() == key; });
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
