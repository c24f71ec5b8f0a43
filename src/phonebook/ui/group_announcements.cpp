#include "phonebook/ui/group_announcements.h"

#include <algorithm>
#include <map>

namespace qx {

namespace {

constexpr unsigned kOneMember = 6108; // also for none
constexpr unsigned kSomeMembers = 6109;

// Empty for an entry, and for a group that cannot be described.
std::wstring GroupName(const PhoneBookDialog& dialog, HWND list, int row)
{
    const PhoneBookGroup* const group = AsGroup(ItemOfRow(list, row, dialog.book));
    if (group == nullptr)
        return {};
    const std::wstring count = MemberCountText(dialog, group->MemberIds().size());
    return count.empty() ? std::wstring() : group->GetName() + (L", " + count);
}

} // namespace

std::wstring MemberCountText(const TextOwner& texts, std::size_t members)
{
    return CountText(texts, members < 2 ? kOneMember : kSomeMembers, static_cast<int>(members));
}

// Not all rows at once: what the system keeps for each comes from a table that all programs share.
void AnnounceGroupRows(const PhoneBookDialog& dialog, const PhoneBookList& list)
{
    Announcements* const announcements = Announcements::Of(dialog.dialog);
    if (announcements == nullptr)
        return;
    std::map<int, std::wstring> names;
    const auto add = [&](int row) {
        if (std::wstring name = GroupName(dialog, list.window, row); !name.empty())
            names[row] = std::move(name);
    };
    const int top = ListView_GetTopIndex(list.window);
    const int behind = std::min(top + ListView_GetCountPerPage(list.window) + 1, RowCount(list.window));
    for (int row = top; row < behind; ++row)
        add(row);
    if (const int focused = ListView_GetNextItem(list.window, -1, LVNI_FOCUSED); focused >= 0)
        add(focused);
    announcements->NameRows(list.window, names);
}

} // namespace qx
