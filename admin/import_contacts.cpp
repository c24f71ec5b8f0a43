#include "admin/import_contacts.h"

#include "admin/contacts/text_encoding.h"
#include "admin/contacts/vcard.h"
#include "base/limits.h"
#include "phonebook/book/duplicate_index.h"
#include "phonebook/csv/csv_import.h"
#include "phonebook/file/xml_text.h"

#include <filesystem>

namespace qx::admin {

namespace {

constexpr std::size_t kNameUnits = kNameLimit;

std::optional<std::wstring> DecodeCodePage(std::string_view bytes, unsigned codePage)
{
    if (bytes.empty())
        return std::wstring();
    const int size = static_cast<int>(bytes.size());
    const auto decode = [&](DWORD flags, wchar_t* out, int units) {
        return MultiByteToWideChar(codePage, flags, bytes.data(), size, out, units);
    };
    // Some code pages take no flags.
    DWORD flags = MB_ERR_INVALID_CHARS;
    int units = decode(flags, nullptr, 0);
    if (units == 0 && GetLastError() == ERROR_INVALID_FLAGS)
        units = decode(flags = 0, nullptr, 0);
    if (units == 0)
        return std::nullopt;
    std::wstring text(static_cast<std::size_t>(units), L'\0');
    decode(flags, text.data(), units);
    return text;
}

std::string Describe(NumberChange change)
{
    switch (change) {
    case NumberChange::PlainCharacters:
        return "characters made plain";
    case NumberChange::Unwrapped:
        return "wrapping taken off";
    case NumberChange::SeparatorsLeft:
        return "separators left out";
    case NumberChange::TrunkZeroLeft:
        return "(0) left out";
    case NumberChange::International:
        return "international prefix for +";
    case NumberChange::National:
        return "own country's code made national";
    case NumberChange::OutsideLine:
        return "outside line put before";
    }
    return {};
}

// At most limit units, without half of a character at the end.
std::wstring CutText(const std::wstring& text, std::size_t limit)
{
    std::wstring cut = text.substr(0, limit);
    if (cut.size() < text.size() && IS_HIGH_SURROGATE(cut.back()))
        cut.pop_back();
    return cut;
}

class Import {
public:
    Import(const ImportOptions& options, BookFile& file, Report& report)
        : options_(options), file_(file), report_(report), held_(file.Book().Items())
    {
    }

    void TakeFile(const std::wstring& path)
    {
        const ContactFile read = Read(path);
        name_ = Utf8(std::filesystem::path(path).filename().native());
        if (!read.problem.empty())
            throw Refusal(Quoted(path) + ' ' + read.problem);
        // In the order of the file, so that the report can be read beside it.
        auto unusable = read.unusable.begin();
        for (const Contact& contact : read.contacts) {
            for (; unusable != read.unusable.end() && unusable->line < contact.line; ++unusable)
                Refuse(unusable->line, unusable->name, {}, unusable->why);
            Take(contact);
        }
        for (; unusable != read.unusable.end(); ++unusable)
            Refuse(unusable->line, unusable->name, {}, unusable->why);
        people_ += read.people;
        withoutNumber_ += read.withoutNumber;
    }

    std::size_t Added() const noexcept { return added_; }

    void Summarize()
    {
        Json& data = report_.Data();
        data["people"] = people_;
        data["withoutFaxNumber"] = withoutNumber_;
        data["added"] = added_;
        data["duplicates"] = duplicates_;
        data["refused"] = refused_;
        data["full"] = full_;
        data["rows"] = std::move(rows_);
        report_.Say(Counted(people_, "person", "people") + " read: " + std::to_string(added_) + " added, " +
                    std::to_string(duplicates_) + " there already, " + std::to_string(refused_) + " refused, " +
                    std::to_string(withoutNumber_) + " without a fax number.");
        if (full_ != 0)
            report_.Problem(std::to_string(full_) + " did not fit: a phone book holds " +
                            std::to_string(kMaxPhoneBookItems) + " items");
    }

private:
    ContactFile Read(const std::wstring& path) const
    {
        const std::string bytes = ReadFileOrRefuse(path);
        unsigned codePage = 0;
        if (!options_.codePage.empty()) {
            codePage = CodePageOf(options_.codePage);
            if (codePage == 0)
                throw UsageError("--code-page: \"" + options_.codePage + "\" is no encoding that is known");
        }
        if (LooksLikeVCards(bytes))
            return ReadVCards(bytes, codePage, DecodeCodePage);
        const DecodedFile decoded = DecodeFile(bytes, codePage, DecodeCodePage);
        if (!decoded.problem.empty()) {
            ContactFile failed;
            failed.problem = decoded.problem;
            if (decoded.line != 0)
                failed.problem += " (line " + std::to_string(decoded.line) + ")";
            return failed;
        }
        if (decoded.text.starts_with(L'<'))
            throw Refusal(Quoted(path) + " is no CSV or vCard file; phone book files are taken by \"phonebook merge\"");
        return ReadCsvContacts(decoded.text, options_.columns);
    }

    void Take(const Contact& contact)
    {
        const FaxNumber number = NormalFaxNumber(contact.faxNumber, options_.dialing);
        if (number.number.empty()) {
            Refuse(contact.line, contact.name, contact.faxNumber, "the fax number " + number.why);
            return;
        }
        std::vector<std::string> changes;
        changes.reserve(number.changes.size());
        for (const NumberChange change : number.changes)
            changes.push_back(Describe(change));
        const std::wstring name = Fitting(contact.name, "name", changes);
        const std::wstring company = Fitting(contact.company, "company", changes);
        if (name.empty()) {
            Refuse(contact.line, contact.name, contact.faxNumber, "the name holds no character that can be stored");
            return;
        }
        Add(contact, name, number.number, company, changes);
    }

    // As the module's own import has it: at most 50 characters, and only those that the file can hold.
    static std::wstring Fitting(const std::wstring& text, const char* field, std::vector<std::string>& changes)
    {
        std::wstring fitting = FitsXml(text) ? text : XmlText(text);
        if (fitting.size() != text.size())
            changes.push_back(std::string(field) + " without control characters");
        if (fitting.size() > kNameUnits) {
            changes.push_back(std::string(field) + " cut to " + std::to_string(kNameUnits) + " characters");
            fitting = CutText(fitting, kNameUnits);
        }
        return fitting;
    }

    void Add(const Contact& contact, const std::wstring& name, const std::wstring& number, const std::wstring& company,
             const std::vector<std::string>& changes)
    {
        PhoneBook& book = file_.Book();
        PhoneBookEntry* const entry = book.Store().NewEntry();
        entry->SetId(book.NextId());
        entry->SetTexts({.name = name, .faxNumber = number, .company = company});
        const DuplicateIndex::Keys keys = held_.KeysOf(*entry);
        Json& row = Row(contact.line, contact.name, contact.faxNumber);
        row["number"] = Utf8(number);
        row["company"] = Utf8(company);
        row["changes"] = changes;
        std::string told = Utf8(name) + ", " + Utf8(number);
        if (held_.HoldsSame(*entry, keys)) {
            ++duplicates_;
            row["outcome"] = "duplicate";
            Tell(contact.line, told + ": is there already");
        } else if (book.GetCount() >= kMaxPhoneBookItems) {
            ++full_;
            row["outcome"] = "full";
            Tell(contact.line, told + ": did not fit");
        } else {
            ++added_;
            row["outcome"] = "added";
            held_.Add(*entry, keys);
            book.Add(entry);
            if (!changes.empty())
                Tell(contact.line, told + Changed(contact, changes));
            return;
        }
        book.Store().Discard(entry);
    }

    static std::string Changed(const Contact& contact, const std::vector<std::string>& changes)
    {
        std::string told = ": was " + Quoted(contact.faxNumber) + " (";
        for (const std::string& change : changes)
            told += (&change == &changes.front() ? "" : ", ") + change;
        return told + ')';
    }

    void Refuse(std::size_t line, const std::wstring& name, const std::wstring& number, const std::string& why)
    {
        ++refused_;
        Json& row = Row(line, name, number);
        row["outcome"] = "refused";
        row["why"] = why;
        const std::string who = name.empty() ? std::string() : Utf8(name) + ": ";
        const std::string what = number.empty() ? std::string() : Quoted(number) + ": ";
        report_.Problem(name_ + ':' + std::to_string(line) + ": " + who + what + why);
    }

    Json& Row(std::size_t line, const std::wstring& name, const std::wstring& number)
    {
        rows_.push_back({{"file", name_}, {"line", line}, {"name", Utf8(name)}, {"written", Utf8(number)}});
        return rows_.back();
    }

    void Tell(std::size_t line, const std::string& what) const
    {
        report_.Say(name_ + ':' + std::to_string(line) + ": " + what);
    }

    const ImportOptions& options_;
    BookFile& file_;
    Report& report_;
    DuplicateIndex held_;
    Json rows_ = Json::array();
    std::string name_; // of the file that is read
    std::size_t people_ = 0;
    std::size_t withoutNumber_ = 0;
    std::size_t added_ = 0;
    std::size_t duplicates_ = 0;
    std::size_t refused_ = 0;
    std::size_t full_ = 0;
};

} // namespace

void ImportContacts(const ImportOptions& options, Report& report)
{
    const std::string wrong = WhyRulesAreWrong(options.dialing);
    if (!wrong.empty())
        throw UsageError(wrong);
    const bool toCsv = !options.out.empty();
    if (toCsv)
        RefuseExistingFile(options.out, options.overwrite);
    BookFile file(toCsv ? std::wstring() : PathOf(options.book));
    file.RefuseUnlessReadable();
    Import import(options, file, report);
    for (const std::wstring& path : options.files)
        import.TakeFile(FullPath(path));
    import.Summarize();
    const std::string what = Counted(import.Added(), "entry", "entries");
    if (toCsv) {
        if (!report.DryRun())
            WriteCsv(file.Book(), options.out);
        report.Change("write " + what + " to " + Quoted(options.out));
    } else if (import.Added() != 0) {
        if (!report.DryRun())
            file.Save();
        report.Change("add " + what + " to the phone book " + Quoted(file.Path()));
    }
}

} // namespace qx::admin
