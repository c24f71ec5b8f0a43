#include "pages/recipient_list.h"

#include "dialog/drawing.h"

#include <algorithm>

namespace qx {

namespace {

constexpr auto kColumns = RecipientColumns(112);

} // namespace

void RecipientList::Attach(const TextOwner& texts, HWND list, FaxJobData& job)
{
    list_ = list;
    job_ = &job;
    SetUpListView(texts, list_, kColumns);
    Fill();
}

bool RecipientList::Append(const FaxRecipient& recipient) noexcept
{
    return AppendRow(list_, {recipient.Name, NumberCell(recipient.FaxNumber), recipient.Company});
}

bool RecipientList::ShowsJob() noexcept
{
    if (!rowsAreOld_ && RowCount(list_) == Count())
        return true;
    Refill();
    return false;
}

void RecipientList::Refill() noexcept
{
    const int before = RowCount(list_);
    Fill();
    if (RowCount(list_) > before)
        ShowLastRow();
}

void RecipientList::Fill() noexcept
{
    const RedrawOff redrawOff(list_);
    rowsAreOld_ = !ListView_DeleteAllItems(list_) && RowCount(list_) > 0;
    if (rowsAreOld_)
        return;
    if (!std::ranges::all_of(RecipientsOf(*job_), [this](const auto* recipient) { return Append(*recipient); }))
        ListView_DeleteAllItems(list_);
}

void RecipientList::ShowLastRow() noexcept
{
    ListView_EnsureVisible(list_, RowCount(list_) - 1, FALSE);
}

bool RecipientList::Add(std::span<UniqueItem<PhoneBookEntry>> entries) noexcept
{
    const int before = RowCount(list_);
    if (!MakeRoomForMore(*job_, static_cast<INT32>(entries.size())))
        return false;
    if (!std::ranges::all_of(entries, [this](const auto& entry) { return Append(*AsRecipient(entry.get())); })) {
        for (int row = RowCount(list_) - 1; row >= before; --row)
            ListView_DeleteItem(list_, row);
        return false;
    }
    for (UniqueItem<PhoneBookEntry>& entry : entries)
        AddRecipient(*job_, AsRecipient(entry.release())); // there is room
    ShowLastRow();
    return true;
}

void RecipientList::RemoveSelected() noexcept
{
    int before = -1;
    for (int left = SelectedCount(list_); left > 0; --left) {
        const int row = NextSelectedRow(list_, before);
        if (row < 0 || !ListView_DeleteItem(list_, row))
            break;
        DeleteRecipient(*job_, row);
        before = row - 1;
    }
    FocusRow(list_, std::min(before + 1, RowCount(list_) - 1)); // where the next one has moved to
}

bool RecipientList::Prepare(UniqueItem<PhoneBookEntry> typed) noexcept
{
    typed_ = std::move(typed);
    return typed_ == nullptr || MakeRoomForMore(*job_, 1);
}

const PhoneBookEntry* RecipientList::Send() noexcept
{
    PhoneBookEntry* const typed = typed_.release();
    AddRecipient(*job_, AsRecipient(typed)); // there is room; nobody is no recipient
    return typed;
}

} // namespace qx
