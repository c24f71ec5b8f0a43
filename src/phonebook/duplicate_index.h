// Whether a phone book holds an entry already, for many entries at once.
#pragma once

#include "base/user_text_key.h"
#include "phonebook/items.h"

#include <cstddef>
#include <memory_resource>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace qx {

// Gives the answer of comparing with every entry by IsSameEntry, in a time that hardly grows with their number: a key
// made of name and fax number narrows the search, IsSameEntry decides. An entry with a text whose key proves nothing
// is compared with all, and all with it. The entries have to live as long, unchanged.
class DuplicateIndex {
public:
    // What an entry is looked up by. None when the keys of its texts prove nothing.
    struct Keys {
        std::size_t name;
        std::size_t nameAndFaxNumber; // meaningless without a fax number
    };

    explicit DuplicateIndex(std::span<PhoneBookItem* const> items); // groups are passed over

    std::optional<Keys> KeysOf(const PhoneBookEntry& entry);

    // keys are those of the entry.
    void Add(const PhoneBookEntry& entry, const std::optional<Keys>& keys);
    // Whether one of them, with another id, is the same.
    bool HoldsSame(const PhoneBookEntry& entry, const std::optional<Keys>& keys) const;

private:
    bool HoldsSameUnder(std::size_t key, const PhoneBookEntry& entry) const;

    UserTextKeys keys_;
    std::string buffer_; // of the key being made
    std::pmr::monotonic_buffer_resource memory_;
    // An entry without fax number is the same as any of its name: it stands under its name alone.
    std::pmr::unordered_multimap<std::size_t, const PhoneBookEntry*> byKey_{&memory_};
    std::vector<const PhoneBookEntry*> entries_;
    std::vector<const PhoneBookEntry*> withoutKeys_;
};

} // namespace qx
