#include "record/fax_job_data.h"

#include "base/limits.h"
#include "base/process_heap.h"
#include "base/text.h"

#include <algorithm>
#include <utility>

namespace qx {

namespace {

constexpr INT32 kFirstStringCapacity = 10;

FaxRecipient** AllocateRecipients(INT32 capacity) noexcept
{
    return static_cast<FaxRecipient**>(HeapAllocate(static_cast<std::size_t>(capacity) * sizeof(FaxRecipient*)));
}

// A counted array: the driver expects the element count just ahead of the elements.
FaxString* AllocateStrings(INT32 capacity) noexcept
{
    const auto count = static_cast<std::size_t>(capacity);
    auto* const block = static_cast<std::size_t*>(HeapAllocate(sizeof(std::size_t) + count * sizeof(FaxString)));
    if (block == nullptr)
        return nullptr;
    *block = count;
    return reinterpret_cast<FaxString*>(block + 1);
}

void FreeStrings(FaxString* items, INT32 count) noexcept
{
    if (items == nullptr)
        return;
    for (INT32 i = 0; i < count; ++i)
        HeapRelease(items[i].Text);
    HeapRelease(reinterpret_cast<std::size_t*>(items) - 1);
}

// Stores a copy of the text.
bool SetString(FaxString& item, INT32 id, const wchar_t* text) noexcept
{
    ReplaceOwnedText(item.Text, text);
    item.Id = id;
    return item.Text != nullptr;
}

// The existing texts are copied, not moved: nothing of the old storage is left in the new one.
bool GrowStrings(FaxStringTable& table) noexcept
{
    const INT32 capacity = table.Capacity > 0 ? table.Capacity * 2 : kFirstStringCapacity;
    FaxString* const items = AllocateStrings(capacity);
    if (items == nullptr)
        return false;
    if (table.Items == nullptr)
        table.Count = 0;
    for (INT32 i = 0; i < table.Count; ++i) {
        if (!SetString(items[i], table.Items[i].Id, table.Items[i].Text)) {
            FreeStrings(items, i + 1);
            return false;
        }
    }
    FreeStrings(table.Items, table.Count);
    table.Items = items;
    table.Capacity = capacity;
    return true;
}

} // namespace

void ReplaceOwnedText(wchar_t*& field, const wchar_t* text) noexcept
{
    // The new copy first: the text may be the field's own.
    wchar_t* const copy = HeapText(text);
    HeapRelease(field);
    field = copy;
}

void SetOverlayPath(FaxJobData& record, const wchar_t* text) noexcept
{
    if (record.OverlayPath == nullptr)
        record.OverlayPath = static_cast<wchar_t*>(HeapAllocate(kOverlayUnits * sizeof(wchar_t)));
    if (record.OverlayPath == nullptr || text == record.OverlayPath)
        return;
    SecureZeroMemory(record.OverlayPath, kOverlayUnits * sizeof(wchar_t));
    CopyText({record.OverlayPath, kOverlayLimit + 1}, OrEmpty(text));
}

void MakeRoomForRecipients(FaxJobData& record) noexcept
{
    if (record.Recipients.Items == nullptr) {
        const INT32 capacity = std::max(record.Recipients.Capacity, 0);
        FaxRecipient** const items = AllocateRecipients(capacity);
        record.Recipients = {items != nullptr ? capacity : 0, 0, items};
    }
    record.RecipientCount = static_cast<INT32>(RecipientsOf(record).size());
}

BOOL AddRecipient(FaxJobData& record, FaxRecipient* entry) noexcept
{
    if (entry == nullptr || !MakeRoomForMore(record, 1))
        return FALSE;
    FaxRecipientArray& list = record.Recipients;
    list.Items[list.Count++] = entry;
    record.RecipientCount = list.Count;
    return TRUE;
}

bool MakeRoomForMore(FaxJobData& record, INT32 count) noexcept
{
    FaxRecipientArray& list = record.Recipients;
    const INT32 wanted = list.Count + count;
    if (list.Items != nullptr && wanted <= list.Capacity)
        return true;
    INT32 capacity = std::max(list.Capacity, 1);
    while (capacity < wanted)
        capacity *= 2;
    FaxRecipient** const items = AllocateRecipients(capacity);
    if (items == nullptr)
        return false;
    std::ranges::copy(RecipientsOf(record), items);
    HeapRelease(static_cast<void*>(std::exchange(list.Items, items)));
    list.Capacity = capacity;
    return true;
}

void ExchangeSendSettings(FaxJobData& a, FaxJobData& b) noexcept
{
    std::swap(a.SenderName, b.SenderName);
    std::swap(a.SenderCompany, b.SenderCompany);
    std::swap(a.SenderFaxNo, b.SenderFaxNo);
    std::swap(a.SenderVoiceNo, b.SenderVoiceNo);
    std::swap(a.Resolution, b.Resolution);
    std::swap(a.NotifyOn, b.NotifyOn);
    std::swap(a.NotifyMethod, b.NotifyMethod);
    std::swap(a.NotifyEmail, b.NotifyEmail);
    std::swap(a.ShowPreview, b.ShowPreview);
}

void ExchangeCoverPage(FaxJobData& a, FaxJobData& b) noexcept
{
    std::swap(a.AddCoverPage, b.AddCoverPage);
    std::swap(a.CoverPageNotes, b.CoverPageNotes);
    std::swap(a.CoverPageSubject, b.CoverPageSubject);
    std::swap(a.OverlayPath, b.OverlayPath);
}

bool HasSendSettings(const FaxJobData& record) noexcept
{
    return record.SenderName != nullptr && record.SenderCompany != nullptr && record.SenderFaxNo != nullptr &&
           record.SenderVoiceNo != nullptr && record.NotifyEmail != nullptr;
}

bool HasCoverPage(const FaxJobData& record) noexcept
{
    return record.CoverPageNotes != nullptr && record.CoverPageSubject != nullptr && record.OverlayPath != nullptr;
}

void DeleteRecipient(FaxJobData& record, INT32 index) noexcept
{
    FaxRecipientArray& list = record.Recipients;
    if (index < 0 || index >= list.Count)
        return;
    FaxRecipient* const recipient = list.Items[index];
    std::copy(list.Items + index + 1, list.Items + list.Count, list.Items + index);
    record.RecipientCount = --list.Count;
    QxFaxFreeRecipient(recipient);
}

std::span<FaxRecipient* const> RecipientsOf(const FaxJobData& record) noexcept
{
    if (record.Recipients.Items == nullptr || record.Recipients.Count <= 0)
        return {};
    return {record.Recipients.Items, static_cast<std::size_t>(record.Recipients.Count)};
}

void RestartStrings(FaxJobData& record) noexcept
{
    FreeStrings(record.Strings.Items, record.Strings.Count);
    record.Strings = {kFirstStringCapacity, 0, AllocateStrings(kFirstStringCapacity)};
}

BOOL AppendString(FaxJobData& record, INT32 id, const wchar_t* text) noexcept
{
    FaxStringTable& table = record.Strings;
    if (id == 0 || ((table.Items == nullptr || table.Count >= table.Capacity) && !GrowStrings(table)))
        return FALSE;
    if (!SetString(table.Items[table.Count], id, text))
        return FALSE;
    ++table.Count;
    return TRUE;
}

} // namespace qx
