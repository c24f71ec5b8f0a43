#include "settings/fax_defaults.h"

#include "base/limits.h"
#include "base/number_text.h"
#include "base/text.h"
#include "record/fax_job_data.h"
#include "settings/key_set.h"
#include "settings/registry.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <stdexcept>
#include <string>

namespace qx {

namespace {

struct StoredText {
    const wchar_t* name;
    WCHAR* FaxJobData::* field;
    void (*set)(FaxJobData&, const wchar_t*) noexcept;
    std::size_t limit; // UTF-16 units taken over
    bool isNumber = false;
};

struct StoredNumber {
    const wchar_t* name;
    DWORD FaxJobData::* field;
    DWORD least = 0;
    DWORD most = MAXDWORD;
    DWORD otherwise = 0; // what a stored number outside these becomes
};

// In the order in which they are read and written.
constexpr StoredText kTexts[] = {
    {L"SenderName", &FaxJobData::SenderName, SetSenderName, kNameLimit},
    {L"SenderCompany", &FaxJobData::SenderCompany, SetSenderCompany, kNameLimit},
    {L"SenderFaxNo", &FaxJobData::SenderFaxNo, SetSenderFaxNo, kNameLimit, true},
    {L"SenderVoiceNo", &FaxJobData::SenderVoiceNo, SetSenderVoiceNo, kNameLimit, true},
    {L"CoverPageNotes", &FaxJobData::CoverPageNotes, SetCoverPageNotes, kNotesLimit},
    {L"CoverPageSubject", &FaxJobData::CoverPageSubject, SetCoverPageSubject, kNameLimit},
    {L"OverlayPath", &FaxJobData::OverlayPath, SetOverlayPath, kImagePathLimit}, // the record keeps kOverlayLimit
    {L"NotifyEmail", &FaxJobData::NotifyEmail, SetNotifyEmail, kEmailLimit},
};

constexpr StoredNumber kNumbers[] = {
    {.name = L"Resolution", .field = &FaxJobData::Resolution, .most = 2},
    {.name = L"NotifyOn", .field = &FaxJobData::NotifyOn, .most = 2},
    {.name = L"NotifyMethod", .field = &FaxJobData::NotifyMethod, .least = 1, .most = 2, .otherwise = 1},
    {.name = L"AddCoverPage", .field = &FaxJobData::AddCoverPage},
    {.name = L"ShowPreview", .field = &FaxJobData::ShowPreview},
};

// Its presence tells that the user has stored defaults.
constexpr StoredNumber kApplyDefaults{.name = L"ApplyDefaults", .field = &FaxJobData::ApplyDefaults};

void TakeOver(FaxJobData& record, const StoredText& text, std::wstring stored)
{
    stored.resize(std::char_traits<wchar_t>::length(stored.c_str())); // behind it come the spare terminators
    // For the fax number too, although square brackets can be typed into it: a number with them is stored, but comes
    // back empty.
    if (text.isNumber && !std::ranges::all_of(stored, AllowedInVoiceNumber))
        return;
    text.set(record, std::wstring(Cut(stored, text.limit)).c_str());
    if (record.*text.field == nullptr)
        throw std::bad_alloc();
}

void TakeOver(FaxJobData& record, const StoredNumber& number, DWORD stored)
{
    record.*number.field = stored >= number.least && stored <= number.most ? stored : number.otherwise;
}

bool IsRead(LSTATUS status, UnreadDefaults unread)
{
    if (unread == UnreadDefaults::Refused && !IsAnswer(status))
        throw std::runtime_error("the defaults cannot be read");
    return status == ERROR_SUCCESS;
}

void LoadText(FaxJobData& record, const StoredText& text, UnreadDefaults unread)
{
    std::wstring stored;
    if (IsRead(QueryString(record.hDefaultKey, text.name, stored), unread))
        TakeOver(record, text, std::move(stored));
}

bool LoadNumber(FaxJobData& record, const StoredNumber& number, UnreadDefaults unread)
{
    DWORD stored = 0;
    if (!IsRead(QueryDword(record.hDefaultKey, number.name, stored), unread))
        return false;
    TakeOver(record, number, stored);
    return true;
}

void SaveNumber(const FaxJobData& record, const StoredNumber& number)
{
    WriteDword(record.hDefaultKey, number.name, record.*number.field);
}

} // namespace

bool LoadFaxDefaults(FaxJobData& record, UnreadDefaults unread)
{
    OpenKeys(KeySetOf(record));
    // A printer without a subtree has no defaults; one whose key cannot be opened may have some.
    if (record.hDefaultKey == nullptr &&
        (unread != UnreadDefaults::Refused || !RestrictedUserGuid(record.PrinterHandle)))
        return false;
    for (const StoredText& text : kTexts)
        LoadText(record, text, unread);
    for (const StoredNumber& number : kNumbers)
        LoadNumber(record, number, unread);
    return LoadNumber(record, kApplyDefaults, unread);
}

void SaveFaxDefaults(FaxJobData& record)
{
    OpenKeys(KeySetOf(record));
    for (const StoredText& text : kTexts)
        WriteString(record.hDefaultKey, text.name, record.*text.field, REG_SZ);
    for (const StoredNumber& number : kNumbers)
        SaveNumber(record, number);
    SaveNumber(record, kApplyDefaults);
}

void CopyFaxDefaults(const FaxJobData& from, FaxJobData& to) noexcept
{
    for (const StoredText& text : kTexts)
        text.set(to, from.*text.field);
    for (const StoredNumber& number : kNumbers)
        to.*number.field = from.*number.field;
}

std::vector<FaxDefaultName> FaxDefaultNames()
{
    std::vector<FaxDefaultName> names;
    for (const StoredText& text : kTexts)
        names.push_back({text.name, REG_SZ});
    for (const StoredNumber& number : kNumbers)
        names.push_back({number.name, REG_DWORD});
    names.push_back({kApplyDefaults.name, REG_DWORD});
    return names;
}

std::optional<std::wstring> FaxDefaultTakenOver(std::wstring_view name, const std::wstring& stored)
{
    const auto* const text = std::ranges::find(kTexts, name, &StoredText::name);
    if (text == std::end(kTexts))
        return std::nullopt;
    OwnedFaxJobData record;
    text->set(record.Get(), L"");
    TakeOver(record.Get(), *text, stored);
    const std::wstring taken = OrEmpty(record.Get().*text->field);
    return taken.empty() && !stored.empty() ? std::nullopt : std::optional(taken);
}

DWORD FaxDefaultTakenOver(std::wstring_view name, DWORD stored)
{
    const auto* const number = std::ranges::find(kNumbers, name, &StoredNumber::name);
    if (number == std::end(kNumbers))
        return stored;
    OwnedFaxJobData record;
    TakeOver(record.Get(), *number, stored);
    return record.Get().*number->field;
}

} // namespace qx
