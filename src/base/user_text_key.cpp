#include "base/user_text_key.h"

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
    {0x0386, 0x0386}, // Greek letters with and without accents
    {0x0388, 0x038A}, // Greek letters
    {0x038C, 0x038C}, // Greek letters
    {0x038E, 0x03A1}, // Greek letters
    {0x03A3, 0x03CE}, // Greek letters
    {0x0400, 0x0481}, // Cyrillic
    {0x048A, 0x04FF}, // Cyrillic
    {0x0531, 0x0556}, // Armenian
    {0x0561, 0x0586}, // Armenian
    {0x05D0, 0x05EA}, // Hebrew letters
    {0x0621, 0x063A}, // Arabic letters
    {0x0641, 0x064A}, // Arabic letters
    {0x10D0, 0x10F5}, // Georgian
    {0x1E00, 0x1E99}, // Latin with several accents
    {0x1EA0, 0x1EF9}, // Latin with several accents
    {0x3041, 0x3096}, // kana
    {0x30A1, 0x30FA}, // kana
    {0x4E00, 0x9FA5}, // Han
    {0xAC00, 0xD7A3}, // Hangul
};

// Ranges in which equal keys and equal texts were found to coincide, with combining marks in any number and order. Left
// out: soft hyphens and other invisible characters, Arabic vowel marks, presentation forms, symbols that combine.
constexpr Range kEqualityDecided[] = {
    {0x0020, 0x007E}, // ASCII
    {0x00A0, 0x00AC}, // Latin
    {0x00AE, 0x02AF}, // Latin
    {0x0300, 0x036F}, // combining marks
    {0x0386, 0x03FF}, // Greek
    {0x0400, 0x052F}, // Cyrillic
    {0x0531, 0x0556}, // Armenian
    {0x0561, 0x0587}, // Armenian
    {0x05B0, 0x05C2}, // Hebrew points and letters
    {0x05D0, 0x05EA}, // Hebrew points and letters
    {0x0621, 0x063A}, // Arabic letters and digits
    {0x0641, 0x064A}, // Arabic letters and digits
    {0x0660, 0x0669}, // Arabic letters and digits
    {0x0671, 0x06C1}, // Arabic letters and digits
    {0x06C3, 0x06D3}, // Arabic letters and digits
    {0x06F0, 0x06F9}, // Arabic letters and digits
    {0x0900, 0x0DFF}, // Indic scripts
    {0x0E01, 0x0E5B}, // Thai
    {0x10A0, 0x11FF}, // Georgian, Hangul letters
    {0x1E00, 0x1EFF}, // Latin with several accents
    {0x2010, 0x2027}, // dashes, quotes
    {0x2030, 0x205E}, // dashes, quotes
    {0x20A0, 0x20BF}, // currencies
    {0x2100, 0x218F}, // letterlike symbols
    {0x3000, 0x30FF}, // kana
    {0x3105, 0x312F}, // Bopomofo
    {0x3400, 0x4DBF}, // Han
    {0x4E00, 0x9FFF}, // Han
    {0xAC00, 0xD7A3}, // Hangul
    {0xD800, 0xDFFF}, // what lies beyond 16 bits
    {0xFF01, 0xFFEF}, // full and half width
};

template <std::size_t N> bool LiesIn(const Range (&ranges)[N], std::wstring_view text) noexcept
{
    return std::ranges::all_of(text, [&ranges](wchar_t c) {
        return std::ranges::any_of(ranges, [c](const Range& range) { return range.first <= c && c <= range.last; });
    });
}

// The system's own key, with its final zero, of a text that is not empty; empty when it makes none.
std::string SystemKey(std::wstring_view text)
{
    constexpr DWORD kFlags = LCMAP_SORTKEY | NORM_IGNORECASE | SORT_STRINGSORT;
    const int units = static_cast<int>(text.size());
    std::string key(text.size() * 4 + 16, '\0');
    const auto map = [&] {
        return LCMapStringW(LOCALE_USER_DEFAULT, kFlags, text.data(), units, reinterpret_cast<wchar_t*>(key.data()),
                            static_cast<int>(key.size()));
    };
    int bytes = map();
    if (bytes == 0) { // too long, as a rule
        const int needed = LCMapStringW(LOCALE_USER_DEFAULT, kFlags, text.data(), units, nullptr, 0);
        if (needed <= 0)
            return {}; // without room for a byte it would be told its size again
        key.resize(static_cast<std::size_t>(needed));
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
    return LiesIn(kDecided, text);
}

bool UserTextKeys::DecideEquality(std::wstring_view text) noexcept
{
    return LiesIn(kEqualityDecided, text);
}

bool UserTextKeys::Append(std::string& keys, std::wstring_view text) const
{
    if (AppendPlain(keys, text))
        return true;
    const std::string key = SystemKey(text);
    keys += key;
    return !key.empty();
}

bool UserTextKeys::AppendDeciding(std::string& keys, std::wstring_view text) const
{
    // What the table holds decides: that needs no look of its own.
    return AppendPlain(keys, text) || (Decide(text) && Append(keys, text));
}

// By table, without a call. False, and nothing appended, when a character is not in the table.
bool UserTextKeys::AppendPlain(std::string& keys, std::wstring_view text) const
{
    const std::size_t start = keys.size();
    keys.resize(start + 2 * text.size() + kPlainTail.size());
    char* to = keys.data() + start;
    for (const wchar_t c : text) {
        const Weight weight = kFirst <= c && c <= kLast ? plain_[c - kFirst] : Weight{};
        if (weight.character == 0) {
            keys.resize(start);
            return false;
        }
        *to++ = weight.script;
        *to++ = weight.character;
    }
    kPlainTail.copy(to, kPlainTail.size());
    return true;
}

} // namespace qx
