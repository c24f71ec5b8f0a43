#include "admin/contacts/csv_contacts.h"

#include "admin/contacts/delimited_text.h"
#include "admin/contacts/text_encoding.h"

#include <algorithm>
#include <optional>
#include <span>

namespace qx::admin {

namespace {

using Columns = std::vector<std::size_t>;

// ---- headers -------------------------------------------------------------------------------------------------------

// Headers are compared without regard to case, and to blanks at their ends.
std::wstring Normal(std::wstring_view header)
{
    constexpr std::wstring_view kBlank = L" \t\r\n\x00A0";
    const std::size_t begin = header.find_first_not_of(kBlank);
    if (begin == std::wstring_view::npos)
        return {};
    std::wstring normal(header.substr(begin, header.find_last_not_of(kBlank) - begin + 1));
    for (wchar_t& c : normal) {
        const bool isAscii = c >= L'A' && c <= L'Z';
        const bool isLatin1 = c >= 0xC0 && c <= 0xDE && c != 0xD7;
        const bool isCyrillic = c >= 0x0410 && c <= 0x042F;
        if (isAscii || isLatin1 || isCyrillic)
            c = static_cast<wchar_t>(c + 0x20);
        else if (c == L'_')
            c = L' ';
    }
    return normal;
}

// In English, German, French, Spanish, Italian, Portuguese, Dutch, Polish, Russian, Hebrew and Japanese, as mail
// programs and web address books head their columns.
constexpr std::wstring_view kFullNames[] = {L"name",
                                            L"display name",
                                            L"full name",
                                            L"contact name",
                                            L"file as",
                                            L"anzeigename",
                                            L"vollständiger name",
                                            L"nom complet",
                                            L"nom à afficher",
                                            L"nombre completo",
                                            L"nome completo",
                                            L"nome visualizzato",
                                            L"weergavenaam",
                                            L"volledige naam",
                                            L"表示名",
                                            L"氏名",
                                            L"שם מלא"};
constexpr std::wstring_view kGivenNames[] = {L"first name", L"given name", L"firstname", L"first",    L"vorname",
                                             L"prénom",     L"nombre",     L"nome",      L"voornaam", L"imię",
                                             L"имя",        L"שם פרטי",    L"名"};
constexpr std::wstring_view kMiddleNames[] = {L"middle name",      L"additional name", L"middle",
                                              L"weitere vornamen", L"deuxième prénom", L"segundo nombre",
                                              L"secondo nome",     L"tweede naam"};
constexpr std::wstring_view kFamilyNames[] = {L"last name", L"family name",  L"lastname", L"last",       L"surname",
                                              L"nachname",  L"familienname", L"nom",      L"apellidos",  L"apellido",
                                              L"cognome",   L"sobrenome",    L"apelido",  L"achternaam", L"nazwisko",
                                              L"фамилия",   L"שם משפחה",     L"姓"};
constexpr std::wstring_view kCompanies[] = {L"company",
                                            L"company name",
                                            L"organization",
                                            L"organisation",
                                            L"organization name",
                                            L"organization 1 - name",
                                            L"firma",
                                            L"firmenname",
                                            L"unternehmen",
                                            L"société",
                                            L"entreprise",
                                            L"empresa",
                                            L"compañía",
                                            L"organización",
                                            L"azienda",
                                            L"società",
                                            L"ditta",
                                            L"bedrijf",
                                            L"organização",
                                            L"организация",
                                            L"חברה",
                                            L"会社名",
                                            L"会社"};
// A header with one of these is of a fax number, whatever else it says ("Business Fax", "Fax privat").
constexpr std::wstring_view kFaxWords[] = {L"fax",        L"télécopie", L"факс",  L"פקס",
                                           L"ファックス", L"ファクス",  L"ＦＡＸ"};
// One of these beside it, and it is not.
constexpr std::wstring_view kNotANumber[] = {L"mail", L"type", L"label", L"adresse", L"address"};

bool HoldsAny(std::wstring_view text, std::span<const std::wstring_view> words)
{
    return std::ranges::any_of(words,
                               [&](std::wstring_view word) { return text.find(word) != std::wstring_view::npos; });
}

bool IsFaxHeader(const std::wstring& header)
{
    return HoldsAny(header, kFaxWords) && !HoldsAny(header, kNotANumber);
}

// What one row's number is found by: its column and, where another column tells of what kind it is, that one.
struct FaxColumn {
    std::size_t number = 0;
    std::optional<std::size_t> kind{};
};

struct Layout {
    Columns fullName;
    Columns nameParts; // given, middle, family
    std::vector<FaxColumn> fax;
    Columns company;
    std::string problem;
};

class Recognition {
public:
    Recognition(const std::vector<std::wstring>& headers, const ColumnChoice& choice) : headers_(headers)
    {
        for (const std::wstring& header : headers)
            normal_.push_back(Normal(header));
        layout_.fullName = choice.name.empty() ? First(kFullNames) : Chosen(choice.name);
        if (choice.name.empty()) {
            for (const std::span<const std::wstring_view> names :
                 {std::span<const std::wstring_view>(kGivenNames), std::span<const std::wstring_view>(kMiddleNames),
                  std::span<const std::wstring_view>(kFamilyNames)})
                std::ranges::copy(First(names), std::back_inserter(layout_.nameParts));
        }
        layout_.company = choice.company.empty() ? First(kCompanies) : Chosen(choice.company);
        if (choice.fax.empty())
            FindFaxColumns();
        else
            for (const std::size_t column : Chosen(choice.fax))
                layout_.fax.push_back({.number = column});
        if (layout_.problem.empty())
            layout_.problem = Missing();
    }

    const Layout& Found() const { return layout_; }

private:
    // The first column with one of the names, in the order of the names.
    Columns First(std::span<const std::wstring_view> names) const
    {
        for (const std::wstring_view name : names) {
            const auto found = std::ranges::find(normal_, name);
            if (found != normal_.end())
                return {static_cast<std::size_t>(found - normal_.begin())};
        }
        return {};
    }

    Columns Chosen(const std::vector<std::wstring>& names)
    {
        Columns columns;
        for (const std::wstring& name : names) {
            const auto found = std::ranges::find(normal_, Normal(name));
            if (found == normal_.end())
                layout_.problem = "has no column \"" + EncodeUtf8(name) + "\"; it has " + AllHeaders();
            else
                columns.push_back(static_cast<std::size_t>(found - normal_.begin()));
        }
        return columns;
    }

    // "Fax number", or a pair "Phone 1 - Type" (or Label) and "Phone 1 - Value".
    void FindFaxColumns()
    {
        constexpr std::wstring_view kValue = L" - value";
        for (std::size_t column = 0; column < normal_.size(); ++column) {
            const std::wstring& header = normal_[column];
            if (IsFaxHeader(header))
                layout_.fax.push_back({.number = column});
            if (!header.starts_with(L"phone ") || !header.ends_with(kValue))
                continue;
            const std::wstring start = header.substr(0, header.size() - kValue.size());
            for (const std::wstring_view kind : {L" - type", L" - label"}) {
                const auto found = std::ranges::find(normal_, start + std::wstring(kind));
                if (found != normal_.end()) {
                    layout_.fax.push_back(
                        {.number = column, .kind = static_cast<std::size_t>(found - normal_.begin())});
                    break;
                }
            }
        }
    }

    std::string Missing() const
    {
        if (layout_.fax.empty())
            return "has no column of fax numbers that is known; name it with --fax. It has " + AllHeaders();
        if (layout_.fullName.empty() && layout_.nameParts.empty() && layout_.company.empty())
            return "has no column of names that is known; name it with --name. It has " + AllHeaders();
        return {};
    }

    std::string AllHeaders() const
    {
        std::string all;
        for (const std::wstring& header : headers_)
            all += (all.empty() ? "\"" : ", \"") + EncodeUtf8(header) + "\"";
        return all;
    }

    const std::vector<std::wstring>& headers_;
    std::vector<std::wstring> normal_;
    Layout layout_;
};

// ---- rows ----------------------------------------------------------------------------------------------------------

// Line ends within a field are blanks: names have one line.
std::wstring OneLine(std::wstring_view text)
{
    std::wstring line;
    for (const wchar_t c : text) {
        const bool blank = c == L' ' || c == L'\t' || c == L'\r' || c == L'\n' || c == L'\x00A0';
        if (!blank)
            line += c;
        else if (!line.empty() && line.back() != L' ')
            line += L' ';
    }
    if (line.ends_with(L' '))
        line.pop_back();
    return line;
}

class Rows {
public:
    Rows(const Layout& layout, ContactFile& file) : layout_(layout), file_(file) {}

    void Take(const Record& record, std::size_t columns)
    {
        ++file_.people;
        const bool tooMany =
            std::any_of(record.fields.begin() + static_cast<std::ptrdiff_t>(std::min(columns, record.fields.size())),
                        record.fields.end(), [](const std::wstring& field) { return !field.empty(); });
        const std::wstring name = NameOf(record);
        if (tooMany) {
            file_.unusable.push_back({record.line, name, "has more fields than the first line has"});
            return;
        }
        const std::vector<std::wstring> numbers = NumbersOf(record);
        if (numbers.empty()) {
            ++file_.withoutNumber;
            return;
        }
        if (name.empty()) {
            file_.unusable.push_back({record.line, {}, "has a fax number, but neither a name nor a company"});
            return;
        }
        for (const std::wstring& number : numbers)
            file_.contacts.push_back({record.line, name, number, CompanyOf(record)});
    }

private:
    static std::wstring_view Field(const Record& record, std::size_t column)
    {
        return column < record.fields.size() ? std::wstring_view(record.fields[column]) : std::wstring_view();
    }

    static std::wstring Joined(const Record& record, const Columns& columns)
    {
        std::wstring joined;
        for (const std::size_t column : columns) {
            const std::wstring part = OneLine(Field(record, column));
            if (!part.empty())
                joined += (joined.empty() ? L"" : L" ") + part;
        }
        return joined;
    }

    std::wstring NameOf(const Record& record) const
    {
        std::wstring name = Joined(record, layout_.fullName);
        if (name.empty())
            name = Joined(record, layout_.nameParts);
        return name.empty() ? CompanyOf(record) : name;
    }

    std::wstring CompanyOf(const Record& record) const
    {
        for (const std::size_t column : layout_.company) {
            std::wstring company = OneLine(Field(record, column));
            if (!company.empty())
                return company;
        }
        return {};
    }

    // A web address book puts several numbers of a kind into one field, with " ::: " between them.
    std::vector<std::wstring> NumbersOf(const Record& record) const
    {
        constexpr std::wstring_view kBetween = L":::";
        std::vector<std::wstring> numbers;
        for (const FaxColumn& column : layout_.fax) {
            if (column.kind && !HoldsAny(Normal(Field(record, *column.kind)), kFaxWords))
                continue;
            std::wstring_view rest = Field(record, column.number);
            while (!rest.empty()) {
                const std::size_t end = std::min(rest.find(kBetween), rest.size());
                std::wstring number = OneLine(rest.substr(0, end));
                if (!number.empty() && std::ranges::find(numbers, number) == numbers.end())
                    numbers.push_back(std::move(number));
                rest.remove_prefix(std::min(end + kBetween.size(), rest.size()));
            }
        }
        return numbers;
    }

    const Layout& layout_;
    ContactFile& file_;
};

} // namespace

ContactFile ReadCsvContacts(std::wstring_view text, const ColumnChoice& choice)
{
    ContactFile file;
    const DelimitedText table = ReadDelimited(text);
    if (!table.problem.empty()) {
        file.problem = table.problem + " (line " + std::to_string(table.line) + ")";
        return file;
    }
    if (table.records.empty()) {
        file.problem = "is empty";
        return file;
    }
    const Recognition recognition(table.records.front().fields, choice);
    file.problem = recognition.Found().problem;
    if (!file.problem.empty())
        return file;
    Rows rows(recognition.Found(), file);
    for (std::size_t i = 1; i < table.records.size(); ++i)
        rows.Take(table.records[i], table.records.front().fields.size());
    return file;
}

} // namespace qx::admin
