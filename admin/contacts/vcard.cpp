#include "admin/contacts/vcard.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>

namespace qx::admin {

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

constexpr char Upper(char c) noexcept
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) noexcept
{
    return std::ranges::equal(a, b, {}, Upper, Upper);
}

bool StartsWithIgnoringCase(std::string_view text, std::string_view start) noexcept
{
    return text.size() >= start.size() && EqualIgnoringCase(text.substr(0, start.size()), start);
}

std::string UpperText(std::string_view text)
{
    std::string upper(text);
    std::ranges::transform(upper, upper.begin(), Upper);
    return upper;
}

bool IsBlank(char c) noexcept
{
    return c == ' ' || c == '\t';
}

std::string_view Trimmed(std::string_view text) noexcept
{
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

// ---- lines ---------------------------------------------------------------------------------------------------------

// The lines of a file as they stand in it, ended by CR LF, LF or CR.
class Lines {
public:
    explicit Lines(std::string_view bytes) : rest_(bytes) {}

    bool AtEnd() const noexcept { return rest_.empty(); }
    std::size_t Number() const noexcept { return number_; } // of the next one, from 1

    std::string_view Peek() const noexcept { return rest_.substr(0, rest_.find_first_of("\r\n")); }

    std::string_view Take()
    {
        const std::string_view line = Peek();
        rest_.remove_prefix(line.size());
        if (rest_.starts_with("\r\n"))
            rest_.remove_prefix(2);
        else if (!rest_.empty())
            rest_.remove_prefix(1);
        ++number_;
        return line;
    }

private:
    std::string_view rest_;
    std::size_t number_ = 1;
};

// ---- one property --------------------------------------------------------------------------------------------------

struct Parameter {
    std::string name;  // capitals; empty for a value that stands alone, as in 2.1
    std::string value; // as it stands, without its quotes
};

struct Property {
    std::size_t line = 0;
    std::string group;
    std::string name; // capitals
    std::vector<Parameter> parameters;
    std::string value; // bytes, decoded from quoted-printable

    // Whether a parameter of that name has that value among those parted by commas, or the value stands alone.
    bool Says(std::string_view parameter, std::string_view wanted) const
    {
        return std::ranges::any_of(parameters, [&](const Parameter& given) {
            return (given.name.empty() || given.name == parameter) && HasItem(given.value, wanted);
        });
    }

    std::string_view ValueOf(std::string_view wanted) const
    {
        const auto found = std::ranges::find(parameters, wanted, &Parameter::name);
        return found != parameters.end() ? std::string_view(found->value) : std::string_view();
    }

private:
    static bool HasItem(std::string_view list, std::string_view wanted)
    {
        for (std::size_t begin = 0; begin <= list.size();) {
            const std::size_t end = std::min(list.find(',', begin), list.size());
            if (EqualIgnoringCase(Trimmed(list.substr(begin, end - begin)), wanted))
                return true;
            begin = end + 1;
        }
        return false;
    }
};

// The end of a part of a property's head: the first of ends outside quotes.
std::size_t EndOfPart(std::string_view line, std::size_t begin, std::string_view ends)
{
    bool quoted = false;
    for (std::size_t at = begin; at < line.size(); ++at) {
        if (line[at] == '"')
            quoted = !quoted;
        else if (!quoted && ends.find(line[at]) != std::string_view::npos)
            return at;
    }
    return line.size();
}

// Values of 3.0 and 4.0 may be in quotes, each item of a list on its own.
std::string WithoutQuotes(std::string_view value)
{
    std::string plain(value);
    std::erase(plain, '"');
    return plain;
}

// Group, name and parameters; none when the line is no property. The value is what stands behind at.
std::optional<Property> ReadHead(std::string_view line, std::size_t& at)
{
    const std::size_t colon = EndOfPart(line, 0, ":");
    if (colon == line.size())
        return std::nullopt;
    Property property;
    std::size_t begin = EndOfPart(line, 0, ";:");
    std::string_view name = Trimmed(line.substr(0, begin));
    if (const std::size_t dot = name.rfind('.'); dot != std::string_view::npos) {
        property.group = UpperText(name.substr(0, dot));
        name.remove_prefix(dot + 1);
    }
    property.name = UpperText(name);
    while (begin < colon) {
        const std::size_t end = EndOfPart(line, begin + 1, ";:");
        const std::string_view part = line.substr(begin + 1, end - begin - 1);
        const std::size_t equals = part.find('=');
        if (equals == std::string_view::npos)
            property.parameters.push_back({{}, WithoutQuotes(Trimmed(part))});
        else
            property.parameters.push_back(
                {UpperText(Trimmed(part.substr(0, equals))), WithoutQuotes(Trimmed(part.substr(equals + 1)))});
        begin = end;
    }
    at = colon + 1;
    return property;
}

int HexDigit(char c) noexcept
{
    if (c >= '0' && c <= '9')
        return c - '0';
    c = Upper(c);
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// None when an escape is none: better no name than half of one.
std::optional<std::string> DecodeQuotedPrintable(std::string_view text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '=') {
            bytes += text[i];
            continue;
        }
        const int high = i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? HexDigit(text[i + 2]) : -1;
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes += static_cast<char>(high << 4 | low);
        i += 2;
    }
    return bytes;
}

// ---- one card ------------------------------------------------------------------------------------------------------

// The parts of a value, parted by a character that no backslash stands before, with the backslashes resolved.
std::vector<std::wstring> Components(std::wstring_view value, wchar_t separator)
{
    std::vector<std::wstring> parts(1);
    for (std::size_t i = 0; i < value.size(); ++i) {
        const wchar_t c = value[i];
        const wchar_t next = i + 1 < value.size() ? value[i + 1] : L'\0';
        if (c == L'\\' && (next == L'\\' || next == L';' || next == L',' || next == L':')) {
            parts.back() += next;
            ++i;
        } else if (c == L'\\' && (next == L'n' || next == L'N')) {
            parts.back() += L' ';
            ++i;
        } else if (c == separator && separator != L'\0') {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

// In one line, with single blanks.
std::wstring OneLine(std::wstring_view text)
{
    std::wstring line;
    for (const wchar_t c : text) {
        if (c != L' ' && c != L'\t' && c != L'\r' && c != L'\n')
            line += c;
        else if (!line.empty() && line.back() != L' ')
            line += L' ';
    }
    if (line.ends_with(L' '))
        line.pop_back();
    return line;
}

std::wstring WholeText(std::wstring_view value)
{
    return OneLine(Components(value, L'\0').front());
}

class Card {
public:
    Card(std::size_t line, unsigned codePage, const CodePageDecoder& decode)
        : line_(line), codePage_(codePage), decode_(decode)
    {
    }

    // What a contact is made of; everything else on a card may be as it likes.
    static bool Needs(std::string_view property)
    {
        return property == "FN" || property == "N" || property == "ORG" || property == "NICKNAME" ||
               property == "TEL" || property == "X-ABLABEL";
    }

    void Add(Property property) { properties_.push_back(std::move(property)); }

    // For a card of which a part is missing, a fax number perhaps.
    void RefuseWhole(std::size_t line, std::string why)
    {
        mayHaveLostNumber_ = true;
        Refuse(line, std::move(why));
    }

    void Refuse(std::size_t line, std::string why)
    {
        if (why_.empty()) {
            why_ = std::move(why);
            whyLine_ = line;
        }
    }

    void Finish(ContactFile& file)
    {
        ++file.people;
        const std::wstring name = Name();
        const std::wstring company = Company();
        std::vector<Contact> contacts;
        for (const Property& property : properties_) {
            if (property.name == "TEL" && IsFax(property))
                AddNumber(property, name.empty() ? company : name, company, contacts);
        }
        if (!why_.empty() && (!contacts.empty() || mayHaveLostNumber_)) {
            file.unusable.push_back({whyLine_, name, why_});
        } else if (contacts.empty()) {
            ++file.withoutNumber;
        } else if (contacts.front().name.empty()) {
            file.unusable.push_back({line_, {}, "has a fax number, but neither a name nor a company"});
        } else {
            std::ranges::move(contacts, std::back_inserter(file.contacts));
        }
    }

private:
    // Empty when it is not there; the card is refused when it cannot be read.
    std::wstring TextOf(const Property& property)
    {
        const std::string_view charset = property.ValueOf("CHARSET");
        unsigned codePage = charset.empty() ? codePage_ : CodePageOf(charset);
        if (!charset.empty() && codePage == 0) {
            Refuse(property.line, "is in the encoding \"" + std::string(charset) + "\", which is not known");
            return {};
        }
        if (codePage == 0)
            codePage = kUtf8CodePage;
        std::optional<std::wstring> text =
            codePage == kUtf8CodePage ? DecodeUtf8(property.value) : decode_(property.value, codePage);
        if (!text) {
            Refuse(property.line, codePage == kUtf8CodePage
                                      ? "is not UTF-8; say with --code-page in which encoding it was written"
                                      : "is not of code page " + std::to_string(codePage));
            return {};
        }
        return *text;
    }

    const Property* First(std::string_view name) const
    {
        const auto found = std::ranges::find(properties_, name, &Property::name);
        return found != properties_.end() ? &*found : nullptr;
    }

    std::wstring Name()
    {
        if (const Property* const formatted = First("FN")) {
            std::wstring name = WholeText(TextOf(*formatted));
            if (!name.empty())
                return name;
        }
        if (const Property* const parts = First("N")) {
            // Family; given; more given names; what stands before; what stands behind.
            constexpr std::size_t kOrder[] = {3, 1, 2, 0, 4};
            const std::vector<std::wstring> components = Components(TextOf(*parts), L';');
            std::wstring name;
            for (const std::size_t i : kOrder) {
                const std::wstring part = i < components.size() ? OneLine(components[i]) : std::wstring();
                if (!part.empty())
                    name += (name.empty() ? L"" : L" ") + part;
            }
            if (!name.empty())
                return name;
        }
        const Property* const nickname = First("NICKNAME");
        return nickname != nullptr ? WholeText(TextOf(*nickname)) : std::wstring();
    }

    std::wstring Company()
    {
        const Property* const organization = First("ORG");
        return organization != nullptr ? OneLine(Components(TextOf(*organization), L';').front()) : std::wstring();
    }

    bool IsFax(const Property& property)
    {
        if (property.Says("TYPE", "FAX"))
            return true;
        // Address books that let users name their kinds keep the names beside.
        return !property.group.empty() && std::ranges::any_of(properties_, [&](const Property& label) {
            return label.name == "X-ABLABEL" && label.group == property.group &&
                   UpperText(label.value).find("FAX") != std::string::npos;
        });
    }

    void AddNumber(const Property& property, const std::wstring& name, const std::wstring& company,
                   std::vector<Contact>& contacts)
    {
        const bool isUri = EqualIgnoringCase(property.ValueOf("VALUE"), "uri");
        const std::wstring text = TextOf(property);
        mayHaveLostNumber_ = mayHaveLostNumber_ || (text.empty() && !property.value.empty());
        std::wstring number = isUri ? OneLine(text) : WholeText(text);
        const bool known = std::ranges::find(contacts, number, &Contact::faxNumber) != contacts.end();
        if (!number.empty() && !known)
            contacts.push_back({property.line, name, std::move(number), company});
    }

    std::size_t line_;
    unsigned codePage_;
    const CodePageDecoder& decode_;
    std::vector<Property> properties_;
    std::string why_;
    std::size_t whyLine_ = 0;
    bool mayHaveLostNumber_ = false;
};

// ---- the file ------------------------------------------------------------------------------------------------------

class Reader {
public:
    Reader(std::string_view bytes, unsigned codePage, const CodePageDecoder& decode, ContactFile& file)
        : lines_(bytes), codePage_(codePage), decode_(decode), file_(file)
    {
    }

    void Run()
    {
        while (!lines_.AtEnd()) {
            const std::size_t line = lines_.Number();
            if (IsMark(lines_.Take(), "BEGIN"))
                ReadCard(line);
        }
    }

private:
    static bool IsMark(std::string_view line, std::string_view name)
    {
        const std::size_t colon = line.find(':');
        return colon != std::string_view::npos && EqualIgnoringCase(Trimmed(line.substr(0, colon)), name) &&
               EqualIgnoringCase(Trimmed(line.substr(colon + 1)), "VCARD");
    }

    // A card that another one holds is passed over to its end.
    void ReadCard(std::size_t begin)
    {
        Card card(begin, codePage_, decode_);
        bool folds21 = false;
        std::size_t inner = 0;
        while (!lines_.AtEnd()) {
            const std::size_t number = lines_.Number();
            const std::string_view first = lines_.Take();
            if (IsMark(first, "END")) {
                if (inner == 0) {
                    card.Finish(file_);
                    return;
                }
                --inner;
            } else if (IsMark(first, "BEGIN")) {
                ++inner;
            } else if (inner == 0) {
                if (StartsWithIgnoringCase(first, "VERSION:"))
                    folds21 = Trimmed(first.substr(8)) == "2.1";
                TakeProperty(card, number, first, folds21);
            }
        }
        card.RefuseWhole(begin, "has no end");
        card.Finish(file_);
    }

    void TakeProperty(Card& card, std::size_t number, std::string_view first, bool folds21)
    {
        std::string whole(first);
        TakeFolds(whole, folds21);
        if (Trimmed(whole).empty())
            return;
        std::size_t at = 0;
        std::optional<Property> property = ReadHead(whole, at);
        if (!property || !Card::Needs(property->name))
            return; // a stray line is passed over by other programs, too
        property->line = number;
        property->value = whole.substr(at);
        if (property->Says("ENCODING", "QUOTED-PRINTABLE") && !TakeQuotedPrintable(*property)) {
            const bool isNumber = property->name == "TEL";
            constexpr char kWhy[] = "is no proper quoted-printable text";
            isNumber ? card.RefuseWhole(number, kWhy) : card.Refuse(number, kWhy);
            return;
        }
        card.Add(std::move(*property));
    }

    // A line that begins with a blank goes on with the one before. In 2.1 the blank belongs to the text.
    void TakeFolds(std::string& whole, bool folds21)
    {
        while (!lines_.AtEnd() && !lines_.Peek().empty() && IsBlank(lines_.Peek().front()) && !EndsInSoftBreak(whole))
            whole += lines_.Take().substr(folds21 ? 0 : 1);
    }

    static bool EndsInSoftBreak(std::string_view line)
    {
        return line.ends_with('=') &&
               UpperText(line.substr(0, EndOfPart(line, 0, ":"))).find("QUOTED-PRINTABLE") != std::string::npos;
    }

    // A line of such a text that ends with an equals sign goes on with the next one.
    bool TakeQuotedPrintable(Property& property)
    {
        while (property.value.ends_with('=') && !lines_.AtEnd() && !IsMark(lines_.Peek(), "END")) {
            property.value.pop_back();
            property.value += lines_.Take();
        }
        if (property.value.ends_with('='))
            property.value.pop_back();
        std::optional<std::string> decoded = DecodeQuotedPrintable(property.value);
        if (decoded)
            property.value = std::move(*decoded);
        return decoded.has_value();
    }

    Lines lines_;
    unsigned codePage_;
    const CodePageDecoder& decode_;
    ContactFile& file_;
};

std::string_view WithoutMark(std::string_view bytes)
{
    return bytes.starts_with(kUtf8Mark) ? bytes.substr(kUtf8Mark.size()) : bytes;
}

} // namespace

ContactFile ReadVCards(std::string_view bytes, unsigned codePage, const CodePageDecoder& decode)
{
    ContactFile file;
    const std::optional<std::string> fromUtf16 = Utf8OfUtf16File(bytes);
    if (fromUtf16)
        Reader(WithoutMark(*fromUtf16), kUtf8CodePage, decode, file).Run();
    else
        Reader(WithoutMark(bytes), codePage, decode, file).Run();
    if (file.people == 0)
        file.problem = "holds no cards";
    return file;
}

bool LooksLikeVCards(std::string_view bytes)
{
    constexpr std::size_t kLook = 256;
    const std::optional<std::string> fromUtf16 = Utf8OfUtf16File(bytes.substr(0, kLook));
    std::string_view text = WithoutMark(fromUtf16 ? std::string_view(*fromUtf16) : bytes.substr(0, kLook));
    while (!text.empty() && (IsBlank(text.front()) || text.front() == '\r' || text.front() == '\n'))
        text.remove_prefix(1);
    return StartsWithIgnoringCase(text, "BEGIN:VCARD");
}

} // namespace qx::admin
