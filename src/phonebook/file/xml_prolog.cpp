#include "phonebook/file/xml_prolog.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace qx {

namespace {

// How the names begin of encodings whose bytes below 0x80 are ASCII wherever a markup delimiter can stand, and of those
// of 16 bits. UTF-7, say, is not one of them, nor is IBM037.
constexpr std::string_view kPlainEncodings[] = {
    "utf-8",   "utf-16", "ucs-2",  "iso-10646-ucs-2", "us-ascii", "iso-8859-", "windows-125", "windows-874",
    "tis-620", "koi8-",  "ibm437", "ibm85",           "ibm86",    "cp866",     "macintosh",   "euc-",
};

// And of those in which the second byte of a character may be below 0x80 as well: a letter's, a digit's or a bracket's.
constexpr std::string_view kPairedEncodings[] = {"gb2312", "gbk", "gb18030", "big5", "ks_c_5601"};
constexpr std::string_view kPairedButKatakana[] = {"shift_jis"};

enum class Encoding { NotPlain, Plain, Paired, PairedButKatakana };

constexpr char kNotAscii = '\x7F';

constexpr char Lower(char c) noexcept
{
    return 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
constexpr bool IsSpace(char c) noexcept
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// The document's characters, as far as ASCII matters, in bytes or in 16-bit units of either order.
class Characters {
public:
    explicit Characters(std::string_view bytes) noexcept : bytes_(bytes)
    {
        if (bytes.starts_with("\xEF\xBB\xBF"))
            bytes_.remove_prefix(3);
        else if (bytes.starts_with("\xFF\xFE") || bytes.starts_with(std::string_view("<\0", 2)))
            SetWide(0);
        else if (bytes.starts_with("\xFE\xFF") || bytes.starts_with(std::string_view("\0<", 2)))
            SetWide(1);
    }

    bool IsWide() const noexcept { return width_ == 2; }
    bool AtEnd() const noexcept { return at_ >= bytes_.size() / width_; }
    void Skip(std::size_t count) noexcept { at_ += count; }

    bool StartsWith(std::string_view text) const noexcept
    {
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (At(at_ + i) != text[i])
                return false;
        }
        return true;
    }

    void SkipSpaces() noexcept
    {
        while (!AtEnd() && IsSpace(At(at_)))
            ++at_;
    }

    // Moves behind the next end; false, at the end of the document, when there is none.
    bool SkipPast(std::string_view end) noexcept
    {
        while (!AtEnd() && !StartsWith(end))
            ++at_;
        if (AtEnd())
            return false;
        Skip(end.size());
        return true;
    }

    char Current() const noexcept { return At(at_); }
    char Next() const noexcept { return At(at_ + 1); }

    // Moves to the next character of one byte that is c; false, at the end of the document, when there is none.
    bool SkipTo(char c) noexcept
    {
        if (width_ == 1) { // nearly all documents, and most of their bytes
            at_ = std::min(bytes_.find(c, at_), bytes_.size());
        } else {
            while (!AtEnd() && At(at_) != c)
                ++at_;
        }
        return !AtEnd();
    }

    // From a start tag's first character behind its end; whether it has no end tag of its own.
    bool SkipStartTag() noexcept
    {
        while (SkipToQuoteOrTagEnd() && Current() != '>') {
            const char quote = Current();
            Skip(1);
            if (!SkipTo(quote))
                break;
            Skip(1);
        }
        const bool isEmpty = at_ > 0 && At(at_ - 1) == '/';
        Skip(1);
        return isEmpty;
    }

private:
    // As SkipTo.
    bool SkipToQuoteOrTagEnd() noexcept
    {
        const auto isOne = [](char c) { return c == '"' || c == '\'' || c == '>'; };
        if (width_ == 1) {
            while (at_ < bytes_.size() && !isOne(bytes_[at_]))
                ++at_;
        } else {
            while (!AtEnd() && !isOne(At(at_)))
                ++at_;
        }
        return !AtEnd();
    }

    void SetWide(std::size_t asciiByte) noexcept
    {
        width_ = 2;
        asciiByte_ = asciiByte;
        if (bytes_.starts_with("\xFF\xFE") || bytes_.starts_with("\xFE\xFF"))
            bytes_.remove_prefix(2);
    }

    // Zero behind the end.
    char At(std::size_t index) const noexcept
    {
        if (index >= bytes_.size() / width_)
            return '\0';
        const char ascii = bytes_[index * width_ + asciiByte_];
        const char other = width_ == 2 ? bytes_[index * width_ + 1 - asciiByte_] : '\0';
        return other == '\0' ? ascii : kNotAscii;
    }

    std::string_view bytes_;
    std::size_t width_ = 1;
    std::size_t asciiByte_ = 0;
    std::size_t at_ = 0;
};

bool NamesOneOf(std::span<const std::string_view> names, Characters value) noexcept
{
    return std::any_of(names.begin(), names.end(), [&](std::string_view name) {
        Characters at = value;
        return std::all_of(name.begin(), name.end(), [&at](char expected) {
            const char found = Lower(at.Current());
            at.Skip(1);
            return found == expected;
        });
    });
}

Encoding EncodingNamed(const Characters& value) noexcept
{
    if (NamesOneOf(kPairedEncodings, value))
        return Encoding::Paired;
    if (NamesOneOf(kPairedButKatakana, value))
        return Encoding::PairedButKatakana;
    return NamesOneOf(kPlainEncodings, value) ? Encoding::Plain : Encoding::NotPlain;
}

// Moves behind the declaration, if there is one; not plain when it is not closed or names such an encoding.
Encoding SkipDeclaration(Characters& document) noexcept
{
    Encoding encoding = Encoding::Plain;
    if (!document.StartsWith("<?xml"))
        return encoding;
    while (!document.AtEnd() && !document.StartsWith("?>")) {
        if (!document.StartsWith("encoding")) {
            document.Skip(1);
            continue;
        }
        document.Skip(std::string_view("encoding").size());
        document.SkipSpaces();
        document.Skip(1); // =
        document.SkipSpaces();
        document.Skip(1); // the quote
        encoding = EncodingNamed(document);
        if (encoding == Encoding::NotPlain)
            return encoding;
    }
    return document.SkipPast("?>") ? encoding : Encoding::NotPlain;
}

// Whether no byte that can end markup stands where a parser may take it for a character's second. Well-formed text has
// none there, but for the bracket.
bool IsWellPaired(std::string_view bytes, Encoding encoding) noexcept
{
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        if (first < 0x80 || (encoding == Encoding::PairedButKatakana && 0xA1 <= first && first <= 0xDF))
            continue;
        ++i;
        const auto second = i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0;
        if (second < '0' || ('9' < second && second < '@'))
            return false;
    }
    return true;
}

} // namespace

bool NestsAtMost(std::string_view bytes, long levels) noexcept
{
    Characters document(bytes);
    const Encoding encoding = SkipDeclaration(document);
    const bool paired = !document.IsWide() && (encoding == Encoding::Paired || encoding == Encoding::PairedButKatakana);
    if (paired && !IsWellPaired(bytes, encoding))
        return false;
    long depth = 0;
    while (document.SkipTo('<')) {
        if (document.Next() == '/') {
            --depth;
            document.Skip(2);
        } else if (document.StartsWith("<!--")) {
            document.Skip(4);
            document.SkipPast("-->");
        } else if (document.StartsWith("<![CDATA[")) {
            if (paired)
                return false; // a character's second byte may hide its end, or look like it
            document.SkipPast("]]>");
        } else if (document.Next() == '?') {
            document.SkipPast("?>");
        } else {
            document.Skip(1);
            if (depth >= levels)
                return false;
            if (!document.SkipStartTag())
                ++depth;
        }
    }
    return true;
}

bool HasPlainProlog(std::string_view bytes) noexcept
{
    Characters document(bytes);
    if (SkipDeclaration(document) == Encoding::NotPlain)
        return false;
    while (!document.AtEnd()) {
        document.SkipSpaces();
        if (document.StartsWith("<!--")) {
            document.Skip(4);
            if (!document.SkipPast("-->"))
                return false;
        } else if (document.StartsWith("<?")) {
            if (!document.SkipPast("?>"))
                return false;
        } else {
            // A zero behind it is the rest of a character of four bytes.
            return document.StartsWith("<") && !document.StartsWith("<!") &&
                   !document.StartsWith(std::string_view("<\0", 2));
        }
    }
    return false;
}

} // namespace qx
