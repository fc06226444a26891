// NEBDictionary.h - a small, flat dictionary that keeps the order in which it was filled.
//
//     NEBDictionary record;
//     record.set(NEBSourceControlOperationPathKey, "/w/a.txt");
//     record.value(NEBSourceControlOperationPathKey).string();   // points to "/w/a.txt"
//     record.value("no such key").isPresent();                   // false
//
// A value: copies are independent, any thread may use its own. A host constant as a key costs
// nothing; another text is copied. Looking up is quick at any size.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "NEBFoundation/NEBConstant.h"
#include "NEBFoundation/NEBValue.h"
#include "Platform/Export.h"

namespace neb {

class NEB_EXPORT NEBDictionary {
public:
    class NEB_EXPORT Entry {
    public:
        Entry(NEBConstant key, NEBValue value) : _key(key), _value(std::move(value)) {}
        Entry(std::string key, NEBValue value)
            : _ownKey(std::make_unique<const std::string>(std::move(key))),
              _key(*_ownKey),
              _value(std::move(value)) {}
        Entry(const Entry& other);
        Entry& operator=(const Entry& other);
        Entry(Entry&&) noexcept = default;
        Entry& operator=(Entry&&) noexcept = default;
        ~Entry() = default;

        [[nodiscard]] std::string_view key() const { return _key; }
        [[nodiscard]] const NEBValue& value() const { return _value; }

    private:
        friend class NEBDictionary;
        std::unique_ptr<const std::string> _ownKey;  // absent for a host constant
        std::string_view _key;
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
    void set(NEBConstant key, NEBValue value) { add(Entry(key, std::move(value))); }
    void set(std::string key, NEBValue value) { add(Entry(std::move(key), std::move(value))); }
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
    using Index = std::unordered_map<std::string_view, std::size_t>;

    void add(Entry entry);
    void buildIndex();
    [[nodiscard]] const Entry* find(std::string_view key) const;

    std::vector<Entry> _entries;
    std::unique_ptr<Index> _index;  // only once a walk through the entries would be slow
};

}  // namespace neb
