#include "phonebook/ui/seen_item.h"

#include "base/text.h"
#include "phonebook/book/phone_book.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace qx {

namespace {

const wchar_t* NumberOf(const PhoneBookItem& item) noexcept
{
    const PhoneBookEntry* const entry = AsEntry(&item);
    return entry != nullptr ? OrEmpty(entry->FaxNumber()) : L"";
}

bool IsStill(const std::optional<SeenItem>& seen, const PhoneBookEntry* entry) noexcept
{
    return seen && entry != nullptr ? seen->Is(*entry) : !seen && entry == nullptr;
}

} // namespace

SeenItem::SeenItem(const PhoneBookItem& item)
    : isGroup_(item.IsGroup()), name_(item.GetName()), faxNumber_(NumberOf(item))
{
}

bool SeenItem::Is(const PhoneBookItem& other) const noexcept
{
    return other.IsGroup() == isGroup_ && EqualUserText(other.GetName(), name_.c_str()) &&
           EqualUserText(NumberOf(other), faxNumber_.c_str());
}

std::optional<DWORD> IndexOf(const PhoneBook& book, const PhoneBookItem& item, const SeenItem& seen) noexcept
{
    const bool replaced = std::ranges::find(book.Items(), &item) == book.Items().end();
    for (DWORD index = book.GetCount(); index-- > 0;) {
        const PhoneBookItem* const found = book.GetAt(index);
        if (found->GetId() == item.GetId() && (!replaced || seen.Is(*found)))
            return index;
    }
    return std::nullopt;
}

std::optional<DWORD> IdIn(const PhoneBook& book, const PhoneBookItem& item)
{
    return IndexOf(book, item, SeenItem(item)) ? std::optional(item.GetId()) : std::nullopt;
}

bool SeenMembers::Update(PhoneBookGroup& group, const PhoneBook& book)
{
    std::unordered_map<DWORD, std::optional<SeenItem>> present;
    std::vector<DWORD> ids;
    for (const DWORD id : group.MemberIds()) {
        const PhoneBookEntry* const entry = book.FindEntry(id);
        const auto before = seen_.find(id);
        if (before != seen_.end() && !IsStill(before->second, entry))
            continue;
        if (auto& seen = present[id]; entry != nullptr)
            seen.emplace(*entry);
        ids.push_back(id);
    }
    const bool anyLeft = ids.size() < group.MemberIds().size();
    group.SetMemberIds(std::move(ids));
    seen_ = std::move(present);
    return anyLeft;
}

} // namespace qx
