#include "support/user_defaults.h"

#include "dialog/dialog.h"
#include "record/fax_job_data.h"
#include "res/cover_page_ids.h"
#include "res/send_settings_ids.h"
#include "support/test_printer.h"

#include <algorithm>
#include <optional>
#include <span>
#include <vector>

namespace qx::test {

namespace {

struct TextField {
    const wchar_t* name;
    wchar_t* FaxJobData::* field;
    void (*set)(FaxJobData&, const wchar_t*) noexcept;
};
constexpr TextField kTexts[] = {
    {L"SenderName", &FaxJobData::SenderName, SetSenderName},
    {L"SenderCompany", &FaxJobData::SenderCompany, SetSenderCompany},
    {L"SenderFaxNo", &FaxJobData::SenderFaxNo, SetSenderFaxNo},
    {L"SenderVoiceNo", &FaxJobData::SenderVoiceNo, SetSenderVoiceNo},
    {L"CoverPageNotes", &FaxJobData::CoverPageNotes, SetCoverPageNotes},
    {L"CoverPageSubject", &FaxJobData::CoverPageSubject, SetCoverPageSubject},
    {L"OverlayPath", &FaxJobData::OverlayPath, SetOverlayPath},
    {L"NotifyEmail", &FaxJobData::NotifyEmail, SetNotifyEmail},
};

struct NumberField {
    const wchar_t* name;
    DWORD FaxJobData::* field;
};
constexpr NumberField kNumbers[] = {
    {L"Resolution", &FaxJobData::Resolution},     {L"NotifyOn", &FaxJobData::NotifyOn},
    {L"NotifyMethod", &FaxJobData::NotifyMethod}, {L"AddCoverPage", &FaxJobData::AddCoverPage},
    {L"ShowPreview", &FaxJobData::ShowPreview},   {L"ApplyDefaults", &FaxJobData::ApplyDefaults},
};

// A setting, and the fields that show it: a text; or a check box, or buttons of which one is chosen, and the number
// that the first one stands for.
struct ShownSetting {
    const wchar_t* name;
    std::vector<int> controls;
    std::optional<DWORD> first{};
};

const ShownSetting kSenderSettings[] = {
    {L"SenderName", {IDC_SENDER_NAME}},
    {L"SenderFaxNo", {IDC_SENDER_FAX}},
    {L"SenderCompany", {IDC_SENDER_COMPANY}},
    {L"SenderVoiceNo", {IDC_SENDER_VOICE}},
    {L"NotifyEmail", {IDC_EMAIL}},
    {L"Resolution", {IDC_STANDARD, IDC_FINE, IDC_SUPERFINE}, 0},
    {L"NotifyOn", {IDC_NOTIFY_NEVER, IDC_NOTIFY_THIS_JOB, IDC_NOTIFY_ON_ERROR}, 0},
    {L"NotifyMethod", {IDC_NOTIFY_PRINT, IDC_NOTIFY_EMAIL}, 1},
    {L"ShowPreview", {IDC_PREVIEW}, 1},
};
const ShownSetting kCoverPage[] = {
    {L"AddCoverPage", {IDC_COVER_PAGE}, 1},
    {L"CoverPageNotes", {IDC_NOTES}},
    {L"CoverPageSubject", {IDC_SUBJECT}},
    {L"OverlayPath", {IDC_IMAGE}},
};

DefaultValue ValueIn(HWND dialog, const ShownSetting& setting)
{
    if (!setting.first)
        return WindowText(GetDlgItem(dialog, setting.controls.front()));
    const auto chosen = std::ranges::find_if(
        setting.controls, [dialog](int button) { return IsDlgButtonChecked(dialog, button) == BST_CHECKED; });
    return chosen != setting.controls.end() ? *setting.first + static_cast<DWORD>(chosen - setting.controls.begin())
                                            : 0u;
}

UserDefaults SettingsIn(HWND dialog, std::span<const ShownSetting> shown)
{
    UserDefaults settings;
    for (const ShownSetting& setting : shown)
        settings[setting.name] = ValueIn(dialog, setting);
    return settings;
}

DefaultValue ValueOf(const StoredValue& stored)
{
    std::wstring text(stored.bytes.size() / sizeof(wchar_t), L'\0');
    stored.bytes.copy(reinterpret_cast<char*>(text.data()), text.size() * sizeof(wchar_t));
    if (stored.type == REG_SZ && !text.empty() && stored == AsStored(text.substr(0, text.size() - 1)))
        return text.substr(0, text.size() - 1);
    DWORD number = 0;
    stored.bytes.copy(reinterpret_cast<char*>(&number), sizeof number);
    return stored == AsStored(number) ? DefaultValue(number) : DefaultValue(L"<odd>");
}

} // namespace

UserDefaults DefaultsIn(HKEY key)
{
    UserDefaults defaults;
    wchar_t name[256];
    for (DWORD i = 0, units = 256; RegEnumValueW(key, i, name, &units, nullptr, nullptr, nullptr, nullptr) == 0;
         ++i, units = 256)
        defaults[name] = ValueOf(GetStored(key, name));
    return defaults;
}

UserDefaults SampleDefaults()
{
    return {{L"SenderName", L"Ann Lee"},
            {L"SenderCompany", L"\u00c4rzte & S\u00f6hne"},
            {L"SenderFaxNo", L"(555)1*#,-"},
            {L"SenderVoiceNo", L"555-2"},
            {L"CoverPageNotes", L"line 1\r\nline 2"},
            {L"CoverPageSubject", L"Offer"},
            {L"OverlayPath", L"C:\\logo.bmp"},
            {L"NotifyEmail", L"ann@example.com"},
            {L"Resolution", 2u},
            {L"NotifyOn", 1u},
            {L"NotifyMethod", 2u},
            {L"AddCoverPage", 1u},
            {L"ShowPreview", 1u},
            {L"ApplyDefaults", 1u}};
}

UserDefaults DefaultsOf(const FaxJobData& record)
{
    UserDefaults defaults;
    for (const TextField& text : kTexts)
        defaults[text.name] = std::wstring(record.*text.field != nullptr ? record.*text.field : L"<null>");
    for (const NumberField& number : kNumbers)
        defaults[number.name] = record.*number.field;
    return defaults;
}

void SetDefaultsOf(FaxJobData& record, const UserDefaults& defaults)
{
    for (const TextField& text : kTexts) {
        if (const auto found = defaults.find(text.name); found != defaults.end())
            text.set(record, std::get<std::wstring>(found->second).c_str());
    }
    for (const NumberField& number : kNumbers) {
        if (const auto found = defaults.find(number.name); found != defaults.end())
            record.*number.field = std::get<DWORD>(found->second);
    }
}

UserDefaults SenderSettingsIn(HWND dialog)
{
    return SettingsIn(dialog, kSenderSettings);
}

UserDefaults CoverPageIn(HWND dialog)
{
    return SettingsIn(dialog, kCoverPage);
}

UserDefaults ThoseAmong(const UserDefaults& all, const UserDefaults& some)
{
    UserDefaults those = all;
    std::erase_if(those, [&](const auto& setting) { return !some.contains(setting.first); });
    return those;
}

} // namespace qx::test
