#include "phonebook/duplicate_index.h"

#include "base/text.h"

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
    byKey_.reserve(items.size());
    for (const PhoneBookItem* const item : items) {
        if (const PhoneBookEntry* const entry = AsEntry(item))
            Add(*entry);
    }
}

void DuplicateIndex::Add(const PhoneBookEntry& entry)
{
    if (entry.Name() == nullptr) // never the same as another
        return;
    entries_.push_back(&entry);
    if (const std::optional<Keys> keys = KeysOf(entry))
        byKey_.emplace(entry.FaxNumber() != nullptr ? keys->nameAndFaxNumber : keys->name, &entry);
    else
        withoutKey_.push_back(&entry);
}

bool DuplicateIndex::HoldsSame(const PhoneBookEntry& entry)
{
    if (entry.Name() == nullptr)
        return false;
    const std::optional<Keys> keys = KeysOf(entry);
    if (!keys || entry.FaxNumber() == nullptr)
        return AnyIsSame(entries_, entry);
    return HoldsSameUnder(keys->nameAndFaxNumber, entry) || HoldsSameUnder(keys->name, entry) ||
           AnyIsSame(withoutKey_, entry);
}

bool DuplicateIndex::HoldsSameUnder(Key key, const PhoneBookEntry& entry) const
{
    const auto [first, last] = byKey_.equal_range(key);
    return std::any_of(first, last, [&](const auto& held) { return IsSameButAnother(*held.second, entry); });
}

// None when a text's key proves nothing: texts that compare equal may then have different keys.
std::optional<DuplicateIndex::Keys> DuplicateIndex::KeysOf(const PhoneBookEntry& entry)
{
    const std::hash<std::string_view> hash;
    const std::wstring_view name = entry.Name();
    const std::wstring_view faxNumber = OrEmpty(entry.FaxNumber());
    if (!UserTextKeys::Decide(name) || !UserTextKeys::Decide(faxNumber))
        return std::nullopt;
    buffer_.clear();
    if (!keys_.Append(buffer_, name))
        return std::nullopt;
    const Key nameKey = hash(buffer_);
    if (!keys_.Append(buffer_, faxNumber))
        return std::nullopt;
    return Keys{nameKey, hash(buffer_)};
}

} // namespace qx
