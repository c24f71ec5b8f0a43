#include "text/help_names.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace qx {

namespace {

constexpr std::uint16_t kAnySubLanguage = 0xFFFF;

struct LanguageCode {
    std::uint16_t primary;
    const wchar_t* code;
    std::uint16_t sub = kAnySubLanguage;
};

// The first row that matches counts. The codes are this program's own and name files in the field: they are not to be
// replaced by those of a standard.
constexpr LanguageCode kLanguageCodes[] = {
    {1, L"AR"},     {2, L"BG"},  {3, L"CA"},  {4, L"HT", 1}, {4, L"HC"},  {5, L"CS"},  {6, L"DA"},  {7, L"DE"},
    {8, L"EL"},     {9, L"EN"},  {10, L"ES"}, {11, L"FI"},   {12, L"FR"}, {13, L"HE"}, {14, L"HU"}, {16, L"IT"},
    {17, L"JA"},    {18, L"KO"}, {19, L"NL"}, {20, L"NO"},   {21, L"PL"}, {22, L"PT"}, {24, L"RO"}, {25, L"RU"},
    {26, L"HR", 1}, {26, L"SR"}, {27, L"SK"}, {29, L"SV"},   {30, L"TH"}, {31, L"TR"}, {33, L"ID"}, {34, L"UK"},
    {36, L"SL"},    {37, L"ET"}, {38, L"LV"}, {39, L"LT"},   {42, L"VI"}, {63, L"KK"}};

constexpr std::wstring_view kHelpFileMark = L"QXZHL";
constexpr std::wstring_view kExtension = L".CHM";
constexpr std::wstring_view kInnerPath = L"::/qxhelp.txt";

// Names that mean a device in every folder, whatever extension follows.
constexpr std::wstring_view kDevices[] = {L"CON", L"PRN", L"AUX", L"NUL"};
constexpr std::wstring_view kNumberedDevices[] = {L"COM", L"LPT"};

// Neighbouring separators count as one, and those at the ends do not count.
std::vector<std::wstring_view> Tokens(std::wstring_view text, std::wstring_view separators)
{
    std::vector<std::wstring_view> tokens;
    for (std::size_t begin = text.find_first_not_of(separators); begin != std::wstring_view::npos;) {
        const std::size_t end = std::min(text.find_first_of(separators, begin), text.size());
        tokens.push_back(text.substr(begin, end - begin));
        begin = text.find_first_not_of(separators, end);
    }
    return tokens;
}

constexpr wchar_t AsciiUpper(wchar_t c) noexcept
{
    return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c;
}

bool EqualIgnoringAsciiCase(std::wstring_view a, std::wstring_view b) noexcept
{
    return std::ranges::equal(a, b, {}, AsciiUpper, AsciiUpper);
}

bool IsDevice(std::wstring_view name) noexcept
{
    std::wstring_view stem = name.substr(0, name.find(L'.'));
    stem = stem.substr(0, stem.find_last_not_of(L' ') + 1);
    const auto isOneOf = [](std::wstring_view text, const auto& devices) {
        return std::ranges::any_of(devices, [&](auto device) { return EqualIgnoringAsciiCase(text, device); });
    };
    return isOneOf(stem, kDevices) || (stem.size() == 4 && isOneOf(stem.substr(0, 3), kNumberedDevices));
}

} // namespace

const wchar_t* FindHelpLanguageCode(std::uint16_t language) noexcept
{
    const auto primary = static_cast<std::uint16_t>(language & 0x3FF);
    const auto sub = static_cast<std::uint16_t>(language >> 10);
    const auto* const row = std::ranges::find_if(kLanguageCodes, [=](const LanguageCode& candidate) {
        return candidate.primary == primary && (candidate.sub == kAnySubLanguage || candidate.sub == sub);
    });
    return row != std::end(kLanguageCodes) ? row->code : nullptr;
}

std::wstring LocalizedHelpName(std::wstring_view name, std::wstring_view code)
{
    const std::vector<std::wstring_view> tokens = Tokens(name, L"_");
    if (tokens.size() < 3)
        return {};
    std::wstring localized = std::wstring(tokens[0]).append(code).append(tokens[2]);
    return IsPlainFileName(localized) ? localized : std::wstring();
}

std::wstring HelpFileInnerPath(std::wstring_view baseName, std::wstring_view code)
{
    const std::vector<std::wstring_view> tokens = Tokens(baseName, L"L.");
    if (tokens.size() < 2)
        return {};
    std::wstring file = std::wstring(tokens[0]).append(code).append(tokens[1]).append(kExtension);
    return IsPlainFileName(file) ? file.append(kInnerPath) : std::wstring();
}

bool IsHelpFile(std::wstring_view upperCasePath) noexcept
{
    return upperCasePath.find(kHelpFileMark) != std::wstring_view::npos;
}

std::wstring_view BaseName(std::wstring_view path) noexcept
{
    return path.substr(path.rfind(L'\\') + 1);
}

bool IsPlainFileName(std::wstring_view name) noexcept
{
    constexpr std::wstring_view kForbidden = L"\\/:*?\"<>|";
    const auto forbidden = [&](wchar_t c) { return c < L' ' || kForbidden.find(c) != std::wstring_view::npos; };
    if (name.empty() || std::ranges::any_of(name, forbidden))
        return false;
    // Windows drops blanks and dots at the end: what is left could be another file, or a folder.
    return name.back() != L'.' && name.back() != L' ' && !IsDevice(name);
}

std::wstring HelpTopicName(int topic)
{
    return topic == kNoTopic ? std::wstring() : std::to_wstring(topic) + L".html";
}

std::wstring_view HelpChmPath(std::wstring_view helpFilePath) noexcept
{
    const std::size_t last = helpFilePath.rfind(L':');
    if (last == std::wstring_view::npos || last == 0)
        return {};
    const std::size_t cut = helpFilePath.rfind(L':', last - 1);
    return cut == std::wstring_view::npos ? std::wstring_view() : helpFilePath.substr(0, cut);
}

std::wstring HelpPagePath(std::wstring_view chmPath, std::wstring_view topicName, std::size_t capacity)
{
    if (chmPath.empty() || topicName.empty())
        return {};
    std::wstring path = std::wstring(chmPath).append(L"::/").append(topicName);
    return path.size() < capacity ? path : std::wstring();
}

} // namespace qx
