#include "host/utf8.h"

#include <algorithm>
#include <utility>
#include <windows.h>

namespace qx::host {

std::string Utf8(std::wstring_view text)
{
    const int units = static_cast<int>(text.size());
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), units, narrow.data(), bytes, nullptr, nullptr);
    return narrow;
}

std::wstring Wide(std::string_view text)
{
    const int bytes = static_cast<int>(text.size());
    const int units = MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(units), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, wide.data(), units);
    return wide;
}

std::wstring XmlEscaped(std::wstring_view text)
{
    constexpr std::pair<wchar_t, std::wstring_view> kEscapes[] = {
        {L'&', L"&amp;"},  {L'<', L"&lt;"},   {L'>', L"&gt;"}, {L'"', L"&quot;"},
        {L'\r', L"&#13;"}, {L'\n', L"&#10;"}, {L'\t', L"&#9;"}};
    std::wstring escaped;
    for (const wchar_t& c : text) {
        const auto* const escape = std::ranges::find(kEscapes, c, &std::pair<wchar_t, std::wstring_view>::first);
        escaped += escape != std::end(kEscapes) ? escape->second : std::wstring_view(&c, 1);
    }
    return escaped;
}

std::string SystemError(std::string_view what, unsigned long error)
{
    wchar_t text[512] = L"";
    const DWORD units = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0,
                                       text, static_cast<DWORD>(std::size(text)), nullptr);
    std::string message(what);
    message += ": ";
    message += units != 0 ? Utf8({text, units}) : "error";
    while (message.back() == '\n' || message.back() == '\r' || message.back() == '.')
        message.pop_back();
    return message + " (error " + std::to_string(error) + ")";
}

} // namespace qx::host
