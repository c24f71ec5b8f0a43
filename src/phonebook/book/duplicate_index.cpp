#include "phonebook/book/duplicate_index.h"

#include "phonebook/book/phone_book.h"

#include <algorithm>
#include <functional>
#include <string_view>

namespace qx {

DuplicateIndex::DuplicateIndex(std::span<PhoneBookItem* const> items)
{
    const std::size_t expected = std::max<std::size_t>(items.size(), kMaxPhoneBookItems);
    all_.reserve(expected);
    byFaxNumber_.reserve(expected);
    for (const PhoneBookItem* const item : items) {
        if (const PhoneBookEntry* const entry = AsEntry(item))
            Add(*entry, KeysOf(*entry));
    }
}

DuplicateIndex::Keys DuplicateIndex::KeysOf(const PhoneBookEntry& entry)
{
    return {KeyOf(entry.Name()), KeyOf(entry.FaxNumber())};
}

std::size_t DuplicateIndex::KeyOf(const wchar_t* text)
{
    buffer_.clear();
    if (text == nullptr || !UserTextKeys::DecideEquality(text) || !keys_.Append(buffer_, text))
        return kNoKey;
    return std::max<std::size_t>(std::hash<std::string_view>()(buffer_), kNoKey + 1);
}

void DuplicateIndex::Add(const PhoneBookEntry& entry, const Keys& keys)
{
    const Held held{keys.name, &entry};
    all_.push_back(held);
    if (keys.faxNumber != kNoKey)
        byFaxNumber_[keys.faxNumber].push_back(held);
    else
        withoutFaxNumberKey_.push_back(held);
}

bool DuplicateIndex::HoldsSame(const PhoneBookEntry& entry, const Keys& keys) const
{
    if (keys.faxNumber == kNoKey)
        return AnyIsSame(all_, entry, keys.name);
    const auto withFaxNumber = byFaxNumber_.find(keys.faxNumber);
    return (withFaxNumber != byFaxNumber_.end() && AnyIsSame(withFaxNumber->second, entry, keys.name)) ||
           AnyIsSame(withoutFaxNumberKey_, entry, keys.name);
}

bool DuplicateIndex::AnyIsSame(const HeldEntries& held, const PhoneBookEntry& entry, std::size_t nameKey)
{
    return std::ranges::any_of(held, [&](const Held& other) {
        const bool namesMayBeEqual = other.nameKey == nameKey || other.nameKey == kNoKey || nameKey == kNoKey;
        return namesMayBeEqual && other.entry->GetId() != entry.GetId() && IsSameEntry(*other.entry, entry);
    });
}

} // namespace qx
