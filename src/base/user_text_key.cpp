#include "base/user_text_key.h"

#include "base/text.h"

#include <algorithm>
#include <windows.h>

namespace qx {

namespace {

// What follows the letters in the key of a text without accents: four empty levels and the end.
constexpr std::string_view kPlainTail("\1\1\1\1\0", 5);

// Ranges in which equal keys and equal texts, and the order of both, were found to coincide. Left out on purpose: soft
// hyphens, Arabic tatweel and vowel marks, unassigned places, and whatever else a comparison passes over while a key
// shows it.
struct Range {
    wchar_t first, last;
};
constexpr Range kDecided[] = {
    {0x0020, 0x007E}, // ASCII
    {0x00C0, 0x024F}, // Latin with accents
    {0x0400, 0x0481}, // Cyrillic
    {0x048A, 0x04FF},
    {0x05D0, 0x05EA}, // Hebrew letters
    {0x0621, 0x063A}, // Arabic letters
    {0x0641, 0x064A},
    {0x3041, 0x3096}, // kana
    {0x30A1, 0x30FA},
    {0x4E00, 0x9FA5}, // Han
    {0xAC00, 0xD7A3}, // Hangul
};

bool IsDecided(wchar_t c) noexcept
{
    return std::any_of(std::begin(kDecided), std::end(kDecided),
                       [c](const Range& range) { return range.first <= c && c <= range.last; });
}

// The system's own key with its final zero; empty when it makes none.
std::string SystemKey(std::wstring_view text)
{
    constexpr DWORD kFlags = LCMAP_SORTKEY | NORM_IGNORECASE | SORT_STRINGSORT;
    if (text.empty())
        return std::string(kPlainTail);
    const int units = static_cast<int>(text.size());
    std::string key(text.size() * 4 + 16, '\0');
    const auto map = [&] {
        return LCMapStringW(LOCALE_USER_DEFAULT, kFlags, text.data(), units, reinterpret_cast<wchar_t*>(key.data()),
                            static_cast<int>(key.size()));
    };
    int bytes = map();
    if (bytes == 0 && GetLastError() == ERROR_INSUFFICIENT_BUFFER) {
        const int needed = LCMapStringW(LOCALE_USER_DEFAULT, kFlags, text.data(), units, nullptr, 0);
        key.resize(static_cast<std::size_t>(std::max(needed, 0)));
        bytes = map();
    }
    key.resize(static_cast<std::size_t>(std::max(bytes, 0)));
    return key;
}

} // namespace

UserTextKeys::UserTextKeys()
{
    for (wchar_t c = kFirst; c <= kLast; ++c) {
        const std::string key = SystemKey({&c, 1});
        if (key.size() == 2 + kPlainTail.size() && key.ends_with(kPlainTail))
            plain_[c - kFirst] = {key[0], key[1]};
    }
    ForgetPlainWhenLettersCombine();
}

// Some languages sort pairs such as "ch" as letters of their own. One key of all pairs shows whether this one does.
void UserTextKeys::ForgetPlainWhenLettersCombine()
{
    std::wstring pairs;
    for (wchar_t a = L'a'; a <= L'z'; ++a) {
        for (wchar_t b = L'a'; b <= L'z'; ++b)
            pairs.append({a, b});
    }
    std::string keys;
    if (!AppendPlain(keys, pairs) || keys != SystemKey(pairs))
        plain_ = {};
}

bool UserTextKeys::Decide(std::wstring_view text) noexcept
{
    return std::all_of(text.begin(), text.end(), IsDecided);
}

bool UserTextKeys::Append(std::string& keys, std::wstring_view text) const
{
    if (AppendPlain(keys, text))
        return true;
    const std::string key = SystemKey(text);
    keys += key;
    return !key.empty();
}

// By table, without a call. False, and nothing appended, when a character is not in the table.
bool UserTextKeys::AppendPlain(std::string& keys, std::wstring_view text) const
{
    const std::size_t start = keys.size();
    keys.resize(start + 2 * text.size());
    auto to = keys.begin() + static_cast<std::ptrdiff_t>(start);
    for (const wchar_t c : text) {
        const Weight weight = kFirst <= c && c <= kLast ? plain_[c - kFirst] : Weight{};
        if (weight.character == 0) {
            keys.resize(start);
            return false;
        }
        *to++ = weight.script;
        *to++ = weight.character;
    }
    keys += kPlainTail;
    return true;
}

} // namespace qx
