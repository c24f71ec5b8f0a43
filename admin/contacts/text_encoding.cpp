#include "admin/contacts/text_encoding.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace qx::admin {

namespace {

struct NamedCodePage {
    std::string_view name; // small letters and digits only
    unsigned codePage;
};

// windows-N, cpN, ibmN and iso-8859-N are not listed: their number says it.
constexpr NamedCodePage kCodePages[] = {
    {"utf8", kUtf8CodePage}, {"usascii", 20127},   {"ascii", 20127},     {"latin1", 28591},
    {"shiftjis", 932},       {"sjis", 932},        {"windows31j", 932},  {"eucjp", 20932},
    {"iso2022jp", 50220},    {"gb2312", 936},      {"gbk", 936},         {"gb18030", 54936},
    {"big5", 950},           {"euckr", 949},       {"ksc56011987", 949}, {"koi8r", 20866},
    {"koi8u", 21866},        {"macintosh", 10000}, {"tis620", 874},
};

// Numbers that mean the same in a name and for Windows.
unsigned NumberIn(std::string_view digits) noexcept
{
    unsigned number = 0;
    for (const char c : digits) {
        if (c < '0' || c > '9' || number > 99999)
            return 0;
        number = number * 10 + static_cast<unsigned>(c - '0');
    }
    return number;
}

void AppendCodePoint(std::wstring& text, std::uint32_t point)
{
    if (point < 0x10000) {
        text += static_cast<wchar_t>(point);
    } else {
        text += static_cast<wchar_t>(0xD800 + ((point - 0x10000) >> 10));
        text += static_cast<wchar_t>(0xDC00 + ((point - 0x10000) & 0x3FF));
    }
}

// Decodes up to the first byte that is not well-formed and answers its place, or the size.
std::size_t DecodeUtf8UpTo(std::string_view bytes, std::wstring& text)
{
    text.reserve(text.size() + bytes.size());
    std::size_t at = 0;
    while (at < bytes.size()) {
        const auto byte = [&](std::size_t i) -> std::uint32_t { return static_cast<unsigned char>(bytes[i]); };
        const std::uint32_t lead = byte(at);
        if (lead < 0x80) {
            text += static_cast<wchar_t>(lead);
            ++at;
            continue;
        }
        const std::size_t units = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
        if (lead < 0xC2 || lead > 0xF4 || bytes.size() - at < units)
            return at;
        std::uint32_t point = lead & (0x7Fu >> units);
        for (std::size_t i = 1; i < units; ++i) {
            if ((byte(at + i) & 0xC0) != 0x80)
                return at;
            point = point << 6 | (byte(at + i) & 0x3F);
        }
        constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
        if (point < kLeast[units] || point > 0x10FFFF || (point >= 0xD800 && point <= 0xDFFF))
            return at;
        AppendCodePoint(text, point);
        at += units;
    }
    return at;
}

enum class Utf16Order { None, Little, Big };

struct Utf16Kind {
    Utf16Order order = Utf16Order::None;
    std::size_t markBytes = 0;
};

// Without a mark: text that is mostly of the West has a zero in every other byte.
Utf16Kind Utf16KindOf(std::string_view bytes)
{
    if (bytes.starts_with("\xFF\xFE"))
        return {Utf16Order::Little, 2};
    if (bytes.starts_with("\xFE\xFF"))
        return {Utf16Order::Big, 2};
    if (bytes.size() >= 4 && bytes[0] != '\0' && bytes[1] == '\0' && bytes[2] != '\0' && bytes[3] == '\0')
        return {Utf16Order::Little, 0};
    if (bytes.size() >= 4 && bytes[0] == '\0' && bytes[1] != '\0' && bytes[2] == '\0' && bytes[3] != '\0')
        return {Utf16Order::Big, 0};
    return {};
}

std::wstring DecodeUtf16(std::string_view bytes, Utf16Kind kind)
{
    std::wstring text;
    text.reserve(bytes.size() / 2);
    for (std::size_t at = kind.markBytes; at + 1 < bytes.size(); at += 2) {
        const auto first = static_cast<unsigned char>(bytes[at]);
        const auto second = static_cast<unsigned char>(bytes[at + 1]);
        text += static_cast<wchar_t>(kind.order == Utf16Order::Little ? second << 8 | first : first << 8 | second);
    }
    return text;
}

std::size_t LineOf(std::string_view bytes, std::size_t at)
{
    return 1 + static_cast<std::size_t>(std::ranges::count(
                   bytes.substr(0, at), '\n')); // files with lone carriage returns are not told apart
}

} // namespace

unsigned CodePageOf(std::string_view name)
{
    std::string plain;
    for (const char c : name) {
        if (c >= 'A' && c <= 'Z')
            plain += static_cast<char>(c - 'A' + 'a');
        else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))
            plain += c;
    }
    const auto* const named = std::ranges::find(kCodePages, std::string_view(plain), &NamedCodePage::name);
    if (named != std::end(kCodePages))
        return named->codePage;
    const std::string_view text = plain;
    for (const std::string_view start : {"windows", "cp", "ibm", "codepage"}) {
        if (text.starts_with(start))
            return NumberIn(text.substr(start.size()));
    }
    if (text.starts_with("iso8859")) {
        const unsigned part = NumberIn(text.substr(7));
        return part >= 1 && part <= 16 ? 28590 + part : 0;
    }
    return NumberIn(text);
}

std::optional<std::wstring> DecodeUtf8(std::string_view bytes)
{
    std::wstring text;
    return DecodeUtf8UpTo(bytes, text) == bytes.size() ? std::optional(std::move(text)) : std::nullopt;
}

DecodedFile DecodeFile(std::string_view bytes, unsigned codePage, const CodePageDecoder& decode)
{
    DecodedFile file;
    constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
    const Utf16Kind utf16 = Utf16KindOf(bytes);
    if (utf16.order != Utf16Order::None) {
        file.encoding = utf16.order == Utf16Order::Little ? "UTF-16, little-endian" : "UTF-16, big-endian";
        file.text = DecodeUtf16(bytes, utf16);
        return file;
    }
    const bool marked = bytes.starts_with(kUtf8Mark);
    if (marked)
        bytes.remove_prefix(kUtf8Mark.size());
    if (marked || codePage == 0 || codePage == kUtf8CodePage) {
        file.encoding = "UTF-8";
        const std::size_t end = DecodeUtf8UpTo(bytes, file.text);
        if (end == bytes.size())
            return file;
        file.text.clear();
        file.line = LineOf(bytes, end);
        file.problem = "is not UTF-8; say with --code-page in which encoding it was written";
        return file;
    }
    file.encoding = "code page " + std::to_string(codePage);
    if (auto text = decode(bytes, codePage))
        file.text = std::move(*text);
    else
        file.problem = "is not of code page " + std::to_string(codePage);
    return file;
}

std::optional<std::string> Utf8OfUtf16File(std::string_view bytes)
{
    const Utf16Kind kind = Utf16KindOf(bytes);
    if (kind.order == Utf16Order::None)
        return std::nullopt;
    return EncodeUtf8(DecodeUtf16(bytes, kind));
}

std::string EncodeUtf8(std::wstring_view utf16)
{
    std::string bytes;
    bytes.reserve(utf16.size());
    for (std::size_t i = 0; i < utf16.size(); ++i) {
        std::uint32_t point = static_cast<std::uint32_t>(utf16[i]);
        if (point >= 0xD800 && point < 0xDC00 && i + 1 < utf16.size() && utf16[i + 1] >= 0xDC00 &&
            utf16[i + 1] <= 0xDFFF)
            point = 0x10000 + ((point - 0xD800) << 10) + (static_cast<std::uint32_t>(utf16[++i]) - 0xDC00);
        else if ((point >= 0xD800 && point <= 0xDFFF) || point > 0x10FFFF)
            point = 0xFFFD; // half of a pair
        const auto put = [&bytes](std::uint32_t byte) { bytes += static_cast<char>(static_cast<unsigned char>(byte)); };
        if (point < 0x80) {
            put(point);
        } else if (point < 0x800) {
            put(0xC0 | point >> 6);
            put(0x80 | (point & 0x3F));
        } else if (point < 0x10000) {
            put(0xE0 | point >> 12);
            put(0x80 | (point >> 6 & 0x3F));
            put(0x80 | (point & 0x3F));
        } else {
            put(0xF0 | point >> 18);
            put(0x80 | (point >> 12 & 0x3F));
            put(0x80 | (point >> 6 & 0x3F));
            put(0x80 | (point & 0x3F));
        }
    }
    return bytes;
}

} // namespace qx::admin
