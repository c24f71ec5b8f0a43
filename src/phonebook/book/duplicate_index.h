// Whether a phone book holds an entry already, for many entries at once.
#pragma once

#include "base/user_text_key.h"
#include "phonebook/book/items.h"

#include <cstddef>
#include <memory_resource>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace qx {

// Gives the answer of comparing with every entry by IsSameEntry, in a time that hardly grows with their number: keys of
// fax numbers and names narrow the search, IsSameEntry decides. The entries have to live as long, unchanged.
class DuplicateIndex {
public:
    // What an entry is looked up by. Texts that compare equal have equal keys, or one of them none.
    static constexpr std::size_t kNoKey = 0;
    struct Keys {
        std::size_t name = kNoKey;
        std::size_t faxNumber = kNoKey;
    };

    explicit DuplicateIndex(std::span<PhoneBookItem* const> items); // groups are passed over

    Keys KeysOf(const PhoneBookEntry& entry);

    // keys are those of the entry.
    void Add(const PhoneBookEntry& entry, const Keys& keys);
    // Whether one of them, with another id, is the same.
    bool HoldsSame(const PhoneBookEntry& entry, const Keys& keys) const;

private:
    struct Held {
        std::size_t nameKey;
        const PhoneBookEntry* entry;
    };
    using HeldEntries = std::pmr::vector<Held>;

    std::size_t KeyOf(const wchar_t* text);
    static bool AnyIsSame(const HeldEntries& held, const PhoneBookEntry& entry, std::size_t nameKey);

    UserTextKeys keys_;
    std::string buffer_;                         // of the key being made
    std::pmr::monotonic_buffer_resource memory_; // for many small lists: an import takes a fifth longer without it
    HeldEntries all_{&memory_};
    std::pmr::unordered_map<std::size_t, HeldEntries> byFaxNumber_{&memory_};
    // Their fax number may be the same as any: it has no key, or there is none at all.
    HeldEntries withoutFaxNumberKey_{&memory_};
};

} // namespace qx
