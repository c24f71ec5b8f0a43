#include "phonebook/ui/group_members.h"

#include "base/limits.h"
#include "phonebook/book/phone_book.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace qx {

std::vector<const PhoneBookEntry*> MembersInOwnOrder(const PhoneBook& book, std::span<const DWORD> ids)
{
    const auto shown = ids.first(std::min<std::size_t>(ids.size(), kMaxRecipients));
    std::unordered_map<DWORD, std::vector<const PhoneBookEntry*>> found;
    for (const DWORD id : shown)
        found.try_emplace(id);
    for (const PhoneBookItem* const item : book.Items()) {
        const PhoneBookEntry* const entry = AsEntry(item);
        const auto wanted = entry != nullptr ? found.find(entry->GetId()) : found.end();
        if (wanted != found.end())
            wanted->second.push_back(entry);
    }
    std::vector<const PhoneBookEntry*> members;
    for (const DWORD id : shown)
        members.insert(members.end(), found[id].begin(), found[id].end());
    return members;
}

std::vector<const PhoneBookEntry*> MembersInBookOrder(const PhoneBook& book, std::span<const DWORD> ids)
{
    const std::unordered_set<DWORD> wanted(ids.begin(), ids.end());
    std::vector<const PhoneBookEntry*> members;
    for (const PhoneBookItem* const item : book.Items()) {
        if (members.size() >= ids.size())
            break;
        const PhoneBookEntry* const entry = AsEntry(item);
        if (entry != nullptr && wanted.contains(entry->GetId()))
            members.push_back(entry);
    }
    return members;
}

void AddMembers(PhoneBookGroup& group, std::span<PhoneBookItem* const> items)
{
    for (const PhoneBookItem* const item : items) {
        if (group.MemberIds().size() >= kMaxRecipients)
            return;
        if (std::ranges::find(group.MemberIds(), item->GetId()) == group.MemberIds().end())
            group.AddMemberId(item->GetId());
    }
}

bool HoldsSameGroup(const PhoneBook& book, const PhoneBookGroup& group, std::optional<DWORD> ownId) noexcept
{
    return std::ranges::any_of(book.Items(), [&](const PhoneBookItem* item) {
        const PhoneBookGroup* const other = AsGroup(item);
        return other != nullptr && other->GetId() != ownId && IsSameGroup(*other, group);
    });
}

} // namespace qx
