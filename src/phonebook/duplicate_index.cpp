#include "phonebook/duplicate_index.h"

#include "base/text.h"
#include "phonebook/phone_book.h"

#include <algorithm>
#include <functional>
#include <string_view>

namespace qx {

namespace {

bool IsSameButAnother(const PhoneBookEntry& held, const PhoneBookEntry& entry) noexcept
{
    return held.GetId() != entry.GetId() && IsSameEntry(held, entry);
}

bool AnyIsSame(std::span<const PhoneBookEntry* const> held, const PhoneBookEntry& entry) noexcept
{
    return std::ranges::any_of(held, [&](const PhoneBookEntry* other) { return IsSameButAnother(*other, entry); });
}

} // namespace

DuplicateIndex::DuplicateIndex(std::span<PhoneBookItem* const> items)
{
    byKey_.reserve(std::max<std::size_t>(items.size(), kMaxPhoneBookItems));
    for (const PhoneBookItem* const item : items) {
        if (const PhoneBookEntry* const entry = AsEntry(item))
            Add(*entry, KeysOf(*entry));
    }
}

std::optional<DuplicateIndex::Keys> DuplicateIndex::KeysOf(const PhoneBookEntry& entry)
{
    const std::hash<std::string_view> hash;
    const std::wstring_view name = OrEmpty(entry.Name());
    const std::wstring_view faxNumber = OrEmpty(entry.FaxNumber());
    if (!UserTextKeys::DecideEquality(name) || !UserTextKeys::DecideEquality(faxNumber))
        return std::nullopt;
    buffer_.clear();
    if (!keys_.Append(buffer_, name))
        return std::nullopt;
    const std::size_t nameKey = hash(buffer_);
    if (!keys_.Append(buffer_, faxNumber))
        return std::nullopt;
    return Keys{nameKey, hash(buffer_)};
}

void DuplicateIndex::Add(const PhoneBookEntry& entry, const std::optional<Keys>& keys)
{
    if (entry.Name() == nullptr) // never the same as another
        return;
    entries_.push_back(&entry);
    if (keys)
        byKey_.emplace(entry.FaxNumber() != nullptr ? keys->nameAndFaxNumber : keys->name, &entry);
    else
        withoutKeys_.push_back(&entry);
}

bool DuplicateIndex::HoldsSame(const PhoneBookEntry& entry, const std::optional<Keys>& keys) const
{
    if (entry.Name() == nullptr)
        return false;
    if (!keys || entry.FaxNumber() == nullptr)
        return AnyIsSame(entries_, entry);
    return HoldsSameUnder(keys->nameAndFaxNumber, entry) || HoldsSameUnder(keys->name, entry) ||
           AnyIsSame(withoutKeys_, entry);
}

bool DuplicateIndex::HoldsSameUnder(std::size_t key, const PhoneBookEntry& entry) const
{
    const auto [first, last] = byKey_.equal_range(key);
    return std::any_of(first, last, [&](const auto& held) { return IsSameButAnother(*held.second, entry); });
}

} // namespace qx
