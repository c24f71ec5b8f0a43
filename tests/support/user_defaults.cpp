#include "support/user_defaults.h"

#include "record/fax_job_data.h"
#include "support/test_printer.h"

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

} // namespace qx::test
