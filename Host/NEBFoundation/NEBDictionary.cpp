#include "NEBFoundation/NEBDictionary.h"

#include <algorithm>

namespace neb {

namespace {

/// Up to here a walk through the entries is as quick as an index.
constexpr std::size_t walkedSize = 16;

}  // namespace

NEBDictionary::Entry::Entry(const Entry& other)
    : _ownKey(other._ownKey ? std::make_unique<const std::string>(*other._ownKey) : nullptr),
      _key(_ownKey ? std::string_view(*_ownKey) : other._key),
      _value(other._value) {}

NEBDictionary::Entry& NEBDictionary::Entry::operator=(const Entry& other) {
    if (this != &other) {
        *this = Entry(other);
    }
    return *this;
}

NEBDictionary::NEBDictionary(std::initializer_list<Entry> entries) {
    for (const Entry& entry : entries) {
        add(entry);
    }
}

NEBDictionary::NEBDictionary(const NEBDictionary& other) : _entries(other._entries) {
    if (other._index) {
        buildIndex();
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
    if (const Entry* present = find(entry._key)) {
        _entries[static_cast<std::size_t>(present - _entries.data())]._value =
            std::move(entry._value);
        return;
    }
    _entries.push_back(std::move(entry));
    if (_index) {
        _index->emplace(_entries.back()._key, _entries.size() - 1);
    } else if (_entries.size() > walkedSize) {
        buildIndex();
    }
}

void NEBDictionary::buildIndex() {
    _index = std::make_unique<Index>();
    for (std::size_t i = 0; i < _entries.size(); ++i) {
        _index->emplace(_entries[i]._key, i);
    }
}

void NEBDictionary::addEntriesFrom(const NEBDictionary& other) {
    for (const Entry& entry : other._entries) {
        add(entry);
    }
}

const NEBDictionary::Entry* NEBDictionary::find(std::string_view key) const {
    if (_index) {
        const auto found = _index->find(key);
        return found != _index->end() ? &_entries[found->second] : nullptr;
    }
    const auto found = std::find_if(_entries.begin(), _entries.end(),
                                    [key](const Entry& entry) { return entry._key == key; });
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
