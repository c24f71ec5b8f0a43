#include "admin/registry_files.h"

#include "admin/contacts/text_encoding.h"
#include "host/utf8.h"

namespace qx::admin {

namespace {

std::wstring Hex(std::uint64_t number, int digits)
{
    std::wstring hex;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        hex += L"0123456789ABCDEF"[number >> shift & 0xF];
    return hex;
}

const wchar_t* NameOf(Hive hive) noexcept
{
    return hive == Hive::Machine ? L"HKEY_LOCAL_MACHINE" : L"HKEY_CURRENT_USER";
}

std::wstring Escaped(const std::wstring& text)
{
    std::wstring escaped;
    for (const wchar_t c : text) {
        if (c == L'\\' || c == L'"')
            escaped += L'\\';
        escaped += c;
    }
    return escaped;
}

std::string InAttribute(const std::wstring& text)
{
    return EncodeUtf8(host::XmlEscaped(text));
}

// Of what the item is about, so that an item that is written again replaces itself.
std::string UniqueId(const RegistrySetting& setting)
{
    const std::wstring text = std::wstring(NameOf(setting.hive)) + L'\\' + setting.key + L'\\' + setting.name;
    std::uint64_t hash[2] = {14695981039346656037u, 1099511628211u}; // FNV-1a, twice
    for (const wchar_t c : text) {
        for (std::uint64_t& part : hash)
            part = (part ^ static_cast<std::uint64_t>(c)) * 1099511628211u;
    }
    const std::wstring id = Hex(hash[0], 16) + Hex(hash[1], 16);
    return EncodeUtf8(L"{" + id.substr(0, 8) + L"-" + id.substr(8, 4) + L"-" + id.substr(12, 4) + L"-" +
                      id.substr(16, 4) + L"-" + id.substr(20) + L"}");
}

} // namespace

std::wstring RegFile(const std::vector<RegistrySetting>& settings)
{
    std::wstring file = L"Windows Registry Editor Version 5.00\r\n";
    const RegistrySetting* before = nullptr;
    for (const RegistrySetting& setting : settings) {
        if (before == nullptr || before->hive != setting.hive || before->key != setting.key)
            file += std::wstring(L"\r\n[") + NameOf(setting.hive) + L'\\' + setting.key + L"]\r\n";
        before = &setting;
        file += L'"' + Escaped(setting.name) + L"\"=";
        if (setting.remove)
            file += L'-';
        else if (const auto* const number = std::get_if<std::uint32_t>(&setting.value))
            file += L"dword:" + Hex(*number, 8);
        else
            file += L'"' + Escaped(std::get<std::wstring>(setting.value)) + L'"';
        file += L"\r\n";
    }
    return file;
}

std::string GroupPolicyFile(const std::vector<RegistrySetting>& settings)
{
    std::string file = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
                       "<RegistrySettings clsid=\"{A3CCFC41-DFDB-43a5-8D26-0FE8B954DA51}\">\r\n";
    for (const RegistrySetting& setting : settings) {
        const std::string name = InAttribute(setting.name);
        file += "  <Registry clsid=\"{9CD4B2F4-923D-47f5-A062-E897DD1DAD50}\" name=\"" + name + "\" status=\"" + name +
                "\" image=\"" + (setting.remove ? "8" : "7") + "\" changed=\"2000-01-01 00:00:00\" uid=\"" +
                UniqueId(setting) + "\">\r\n    <Properties action=\"" + (setting.remove ? "D" : "U") +
                "\" displayDecimal=\"1\" default=\"0\" hive=\"" + EncodeUtf8(NameOf(setting.hive)) + "\" key=\"" +
                InAttribute(setting.key) + "\" name=\"" + name + "\"";
        if (const auto* const number = std::get_if<std::uint32_t>(&setting.value))
            file += " type=\"REG_DWORD\" value=\"" + EncodeUtf8(Hex(*number, 8)) + "\"";
        else
            file += " type=\"REG_SZ\" value=\"" + InAttribute(std::get<std::wstring>(setting.value)) + "\"";
        file += "/>\r\n  </Registry>\r\n";
    }
    return file + "</RegistrySettings>\r\n";
}

} // namespace qx::admin
