#include "admin/contacts/fax_number.h"

#include "base/limits.h"
#include "base/number_text.h"

#include <algorithm>

namespace qx::admin {

namespace {

constexpr std::size_t kDigitsOfAnyNumber = 15;   // as international numbering has it, the country's code included
constexpr std::size_t kDigitsOfAWholeNumber = 7; // two parts with so many are two numbers
constexpr std::size_t kFewestDigits = 2;

// Countries whose national numbers begin with a 0 that is not dialled from abroad. In others, such as Italy (39), a 0
// is part of the number: there "(0)" could mean either.
constexpr std::wstring_view kCountriesWithTrunkZero[] = {L"27",  L"31",  L"32",  L"33",  L"40",  L"41",  L"43",  L"44",
                                                         L"46",  L"49",  L"60",  L"61",  L"62",  L"63",  L"64",  L"66",
                                                         L"81",  L"82",  L"86",  L"90",  L"91",  L"353", L"358", L"380",
                                                         L"381", L"385", L"386", L"421", L"966", L"971", L"972"};

struct Refusal {
    std::string why;
};

constexpr bool IsPlainDigit(wchar_t c) noexcept
{
    return c >= L'0' && c <= L'9';
}

std::size_t DigitsIn(std::wstring_view text) noexcept
{
    return static_cast<std::size_t>(std::ranges::count_if(text, IsPlainDigit));
}

// ---- characters ----------------------------------------------------------------------------------------------------

constexpr wchar_t kLeftOut = L'\xFFFF'; // no character; one that a file holds all the same is a bad one
constexpr wchar_t kBad = L'\xFFFD';

// What a character means in a number: an ASCII one, kLeftOut for a mark that nobody sees, or itself.
constexpr wchar_t PlainCharacter(wchar_t c) noexcept
{
    for (const wchar_t zero : {L'\x0660', L'\x06F0', L'\x0966', L'\xFF10'}) { // Arabic, Persian, Devanagari, full width
        if (c >= zero && c < zero + 10)
            return static_cast<wchar_t>(L'0' + (c - zero));
    }
    if (c > 0xFF00 && c < 0xFF5F)
        return static_cast<wchar_t>(c - 0xFEE0);
    if (c == L'\t' || c == 0x00A0 || (c >= 0x2000 && c <= 0x200A) || c == 0x202F || c == 0x205F || c == 0x3000)
        return L' ';
    if ((c >= 0x2010 && c <= 0x2015) || c == 0x2212 || c == 0xFE63)
        return L'-';
    if (c == 0x00AD || (c >= 0x200B && c <= 0x200F) || (c >= 0x202A && c <= 0x202E) || (c >= 0x2060 && c <= 0x2069) ||
        c == 0xFEFF)
        return kLeftOut;
    return c != kLeftOut ? c : kBad;
}

std::wstring_view Trimmed(std::wstring_view text) noexcept
{
    constexpr std::wstring_view kBlank = L" \r\n";
    const std::size_t begin = text.find_first_not_of(kBlank);
    return begin == std::wstring_view::npos ? std::wstring_view()
                                            : text.substr(begin, text.find_last_not_of(kBlank) - begin + 1);
}

bool StartsWithIgnoringCase(std::wstring_view text, std::wstring_view start) noexcept
{
    return text.size() >= start.size() && std::ranges::equal(text.substr(0, start.size()), start, {}, [](wchar_t c) {
               return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c;
           });
}

std::string Shown(wchar_t c)
{
    constexpr char kHex[] = "0123456789ABCDEF";
    if (c > L' ' && c < 0x7F)
        return std::string("\"") + static_cast<char>(c) + "\"";
    std::string code = "U+";
    for (int shift = 12; shift >= 0; shift -= 4)
        code += kHex[static_cast<unsigned>(c) >> shift & 0xF];
    return code;
}

// ---- one number in the making --------------------------------------------------------------------------------------

class Normalizer {
public:
    explicit Normalizer(const DialingRules& rules) : rules_(rules) {}

    FaxNumber Run(std::wstring_view written)
    {
        FaxNumber result;
        try {
            MakePlain(written);
            Unwrap();
            RefuseOtherCharacters();
            TakePlus();
            RefuseSeveralNumbers();
            RefuseUnbalanced();
            if (international_)
                TakeCountry();
            else if (text_.find(L"(0)") != std::wstring::npos)
                throw Refusal{"has a \"(0)\", of which nobody can tell whether it is dialled"};
            LeaveSeparatorsOut();
            RefuseImpossible();
            PutPrefixes();
            result.number = text_;
            result.changes = changes_;
        } catch (const Refusal& refusal) {
            result.why = refusal.why;
        }
        return result;
    }

private:
    void Note(NumberChange change)
    {
        if (std::ranges::find(changes_, change) == changes_.end())
            changes_.push_back(change);
    }

    void MakePlain(std::wstring_view written)
    {
        for (const wchar_t c : written) {
            const wchar_t plain = PlainCharacter(c);
            if (plain != kLeftOut)
                text_ += plain;
            if (plain != c && c != L'\t')
                Note(NumberChange::PlainCharacters);
        }
        const std::size_t units = text_.size();
        text_ = Trimmed(text_);
        if (text_.empty())
            throw Refusal{"is empty"};
        if (text_.size() != units)
            Note(NumberChange::SeparatorsLeft);
        if (text_.find_first_of(L"\r\n") != std::wstring::npos)
            throw Refusal{"has several lines"};
    }

    void Unwrap()
    {
        const std::wstring before = text_;
        if (text_.size() > 3 && text_.starts_with(L"=\"") && text_.ends_with(L"\""))
            text_ = text_.substr(2, text_.size() - 3);
        else if (text_.starts_with(L"'"))
            text_.erase(0, 1);
        for (const std::wstring_view scheme : {L"tel:", L"fax:"}) {
            if (StartsWithIgnoringCase(text_, scheme)) {
                text_.erase(0, scheme.size());
                break;
            }
        }
        text_ = Trimmed(text_);
        if (text_ != before)
            Note(NumberChange::Unwrapped);
    }

    void RefuseOtherCharacters() const
    {
        constexpr std::wstring_view kKnown = L"+,-*#()[] ./";
        const auto other = std::ranges::find_if(
            text_, [&](wchar_t c) { return !IsPlainDigit(c) && kKnown.find(c) == std::wstring_view::npos; });
        if (other == text_.end())
            return;
        const bool isPower = (*other == L'E' || *other == L'e') && other != text_.begin() &&
                             IsPlainDigit(*(other - 1)) &&
                             text_.find_first_not_of(L"0123456789.,+-Ee") == std::wstring::npos;
        if (isPower)
            throw Refusal{"has been rounded by a spreadsheet: its last digits are lost"};
        if (*other == L';')
            throw Refusal{"has a \";\": an extension, or a second number"};
        throw Refusal{"holds " + Shown(*other) + ", which cannot be dialled"};
    }

    void TakePlus()
    {
        // "(+49) 30" says the same as "+49 30".
        if (text_.starts_with(L"(+")) {
            const std::size_t end = text_.find(L')');
            if (end != std::wstring::npos) {
                text_.replace(end, 1, L" ");
                text_.erase(0, 1);
                Note(NumberChange::SeparatorsLeft);
            }
        }
        international_ = text_.starts_with(L'+');
        if (international_)
            text_ = Trimmed(std::wstring_view(text_).substr(1));
        if (text_.find(L'+') != std::wstring::npos)
            throw Refusal{"has a \"+\" that is not its first character"};
    }

    // A part is what stands between blanks, commas or slashes.
    void RefuseSeveralNumbers() const
    {
        constexpr std::wstring_view kBetween = L" ,/";
        std::size_t whole = 0;
        for (std::size_t begin = 0; begin < text_.size();) {
            const std::size_t end = std::min(text_.find_first_of(kBetween, begin), text_.size());
            whole += DigitsIn(std::wstring_view(text_).substr(begin, end - begin)) >= kDigitsOfAWholeNumber ? 1 : 0;
            begin = end + 1;
        }
        if (whole > 1)
            throw Refusal{"looks like two numbers"};
        if (text_.find(L", ") != std::wstring::npos || text_.find(L" ,") != std::wstring::npos)
            throw Refusal{"looks like a list of numbers"};
        RefuseOddSlash();
        RefuseOddDots();
    }

    // "030/5550100" is an area and a number; "5550100/01" are two numbers in short.
    void RefuseOddSlash() const
    {
        const std::size_t slash = text_.find(L'/');
        if (slash == std::wstring::npos)
            return;
        constexpr std::size_t kLongestArea = 6;
        const std::wstring_view before = std::wstring_view(text_).substr(0, slash);
        const std::wstring_view after = std::wstring_view(text_).substr(slash + 1);
        const bool isArea = before.starts_with(L'0') || before.starts_with(L"(0") || international_;
        if (!isArea || DigitsIn(before) > kLongestArea || DigitsIn(after) < 3 || after.find(L'/') != std::wstring::npos)
            throw Refusal{"has a \"/\": an area's code, or a second number"};
    }

    // "01.23.45.67.89" is a number in groups; "49305550100.0" is one that a program took for an amount.
    void RefuseOddDots() const
    {
        constexpr std::size_t kLongestGroup = 5;
        const std::wstring_view text = text_;
        for (std::size_t dot = text.find(L'.'); dot != std::wstring::npos; dot = text.find(L'.', dot + 1)) {
            const auto isDigit = [&](std::size_t at) { return at < text.size() && IsPlainDigit(text[at]); };
            std::size_t before = 0;
            while (before < dot && isDigit(dot - 1 - before))
                ++before;
            std::size_t after = 0;
            while (isDigit(dot + 1 + after))
                ++after;
            const bool closesParenthesis = dot > 0 && text[dot - 1] == L')';
            if ((before == 0 && !closesParenthesis) || before > kLongestGroup || after < 2)
                throw Refusal{"has a \".\" that does not part groups of digits"};
        }
    }

    void RefuseUnbalanced() const
    {
        wchar_t open = L'\0';
        for (const wchar_t c : text_) {
            if (c == L'(' || c == L'[') {
                if (open != L'\0')
                    throw Refusal{"has a parenthesis within another"};
                open = c;
            } else if (c == L')' || c == L']') {
                if (open != (c == L')' ? L'(' : L'['))
                    throw Refusal{"has a parenthesis that is not opened"};
                open = L'\0';
            }
        }
        if (open != L'\0')
            throw Refusal{"has a parenthesis that is not closed"};
    }

    void TakeCountry()
    {
        if (text_.empty() || !IsPlainDigit(text_.front()) || text_.front() == L'0')
            throw Refusal{"has no country's code behind its \"+\""};
        LeaveTrunkZeroOut();
        if (!rules_.country.empty() && StartsWithDigits(rules_.country)) {
            const std::wstring rest = WithoutFirstDigits(rules_.country.size());
            text_ = rules_.trunk + rest;
            national_ = true;
            return;
        }
        if (rules_.international.empty())
            throw Refusal{"begins with \"+\", and nothing was said to be dialled for that"};
    }

    // Country codes are such that none begins another one.
    void LeaveTrunkZeroOut()
    {
        for (const std::wstring_view country : kCountriesWithTrunkZero) {
            if (!StartsWithDigits(country))
                continue;
            std::wstring rest = WithoutFirstDigits(country.size());
            if (rest.starts_with(L"(0)")) {
                Note(NumberChange::TrunkZeroLeft);
                rest.erase(0, 3);
                rest.erase(0, rest.find_first_not_of(L" -./"));
                text_ = std::wstring(country) + L" " + rest;
            }
            const std::size_t first = rest.find_first_of(L"0123456789");
            if (first != std::wstring::npos && rest[first] == L'0')
                throw Refusal{"has a 0 behind its country's code, which is not dialled from abroad"};
            return;
        }
        if (text_.find(L"(0)") != std::wstring::npos)
            throw Refusal{"has a \"(0)\", of which nobody can tell whether it is dialled"};
    }

    bool StartsWithDigits(std::wstring_view digits) const { return text_.starts_with(digits); }

    // What is behind the country's code, from its first character that says something.
    std::wstring WithoutFirstDigits(std::size_t count) const
    {
        std::wstring rest = text_.substr(count);
        rest.erase(0, std::min(rest.find_first_not_of(L" -./"), rest.size()));
        return rest;
    }

    void LeaveSeparatorsOut()
    {
        if (std::erase_if(text_, [](wchar_t c) { return c == L' ' || c == L'.' || c == L'/'; }) != 0)
            Note(NumberChange::SeparatorsLeft);
    }

    void RefuseImpossible() const
    {
        if (text_.find(L"()") != std::wstring::npos || text_.find(L"[]") != std::wstring::npos)
            throw Refusal{"has empty parentheses"};
        const std::size_t digits = DigitsIn(text_);
        if (digits == 0)
            throw Refusal{"has no digits"};
        if (digits < kFewestDigits)
            throw Refusal{"has a single digit"};
        if (international_ && digits > kDigitsOfAnyNumber)
            throw Refusal{"has more than 15 digits"};
    }

    void PutPrefixes()
    {
        const bool isExtension = !international_ && DigitsIn(text_) <= rules_.extensionDigits;
        if (international_ && !national_)
            text_ = rules_.international + text_;
        if (international_)
            Note(national_ ? NumberChange::National : NumberChange::International);
        if (!isExtension && !rules_.outsideLine.empty()) {
            text_ = rules_.outsideLine + text_;
            Note(NumberChange::OutsideLine);
        }
        // Whatever happened above, the module has the last word.
        if (!IsValidFaxNumber(text_))
            throw Refusal{"is not what the fax number field accepts"};
        if (text_.size() > static_cast<std::size_t>(kNameLimit))
            throw Refusal{"has more than " + std::to_string(kNameLimit) + " characters"};
    }

    const DialingRules& rules_;
    std::wstring text_;
    std::vector<NumberChange> changes_;
    bool international_ = false;
    bool national_ = false;
};

} // namespace

std::string WhyRulesAreWrong(const DialingRules& rules)
{
    const auto isDigits = [](const std::wstring& text) { return std::ranges::all_of(text, IsPlainDigit); };
    const auto isNumber = [](const std::wstring& text) {
        return IsValidFaxNumber(text) && std::ranges::all_of(text, [](wchar_t c) { return c < 0x7F; });
    };
    if (!isNumber(rules.outsideLine))
        return "the outside line's number holds a character that cannot be dialled";
    if (!isNumber(rules.international))
        return "the international prefix holds a character that cannot be dialled";
    if (!isDigits(rules.country) || rules.country.starts_with(L'0') || rules.country.size() > 3)
        return "a country's code is one to three digits, the first of them no 0";
    if (!isDigits(rules.trunk))
        return "the trunk prefix holds something else than digits";
    if (!rules.trunk.empty() && rules.country.empty())
        return "a trunk prefix says nothing without the country's code";
    return {};
}

FaxNumber NormalFaxNumber(std::wstring_view written, const DialingRules& rules)
{
    return Normalizer(rules).Run(written);
}

} // namespace qx::admin
