#include "admin/book_check.h"
#include "admin/book_file.h"
#include "admin/book_merge.h"
#include "admin/book_restore.h"
#include "admin/import_contacts.h"
#include "base/text.h"

#include <algorithm>

namespace qx::admin {

namespace {

// ---- list and export -----------------------------------------------------------------------------------------------

Json AsJson(const PhoneBook& book, const PhoneBookItem& item)
{
    if (const PhoneBookEntry* const entry = AsEntry(&item))
        return {{"id", entry->GetId()},
                {"name", Utf8(entry->GetName())},
                {"faxNumber", Utf8(OrEmpty(entry->FaxNumber()))},
                {"company", Utf8(OrEmpty(entry->Company()))}};
    Json members = Json::array();
    for (const DWORD id : AsGroup(&item)->MemberIds()) {
        if (const PhoneBookEntry* const member = book.FindEntry(id))
            members.push_back(Utf8(member->GetName()));
    }
    return {{"id", item.GetId()}, {"group", Utf8(item.GetName())}, {"members", std::move(members)}};
}

std::string AsSentence(const PhoneBook& book, const PhoneBookItem& item)
{
    const PhoneBookEntry* const entry = AsEntry(&item);
    if (entry == nullptr) {
        const std::size_t members = AsJson(book, item)["members"].size();
        return Utf8(item.GetName()) + "\t(group of " + std::to_string(members) + ")";
    }
    std::string told = Utf8(entry->GetName()) + '\t' + Utf8(OrEmpty(entry->FaxNumber()));
    if (*OrEmpty(entry->Company()) != L'\0')
        told += '\t' + Utf8(entry->Company());
    return told;
}

void RefuseUnlessRead(const BookFile& file)
{
    if (file.Outcome() != LoadOutcome::Read)
        throw Refusal(ProblemOf(file.Outcome(), file.Path()));
}

void List(const BookChoice& choice, Report& report)
{
    const BookFile file(PathOf(choice));
    RefuseUnlessRead(file);
    file.Book().Sort(TRUE);
    Json items = Json::array();
    for (const PhoneBookItem* const item : file.Book().Items()) {
        items.push_back(AsJson(file.Book(), *item));
        report.Say(AsSentence(file.Book(), *item));
    }
    report.Data()["path"] = Utf8(file.Path());
    report.Data()["items"] = std::move(items);
}

void Export(const BookChoice& choice, const std::wstring& out, bool overwrite, Report& report)
{
    const BookFile file(PathOf(choice));
    RefuseUnlessRead(file);
    RefuseExistingFile(out, overwrite);
    const BookCounts counts = CountItems(file.Book().Items());
    if (!report.DryRun())
        WriteCsv(file.Book(), out);
    report.Data()["entries"] = counts.entries;
    report.Change("write " + Counted(counts.entries, "entry", "entries") + " to " + Quoted(out));
    if (counts.groups != 0)
        report.Say(Counted(counts.groups, "group is", "groups are") + " left out: a CSV file has none.");
}

// ---- command lines -------------------------------------------------------------------------------------------------

// The file may stand on its own or behind --book.
CLI::Option* AddBookFile(CLI::App& command, BookChoice& choice)
{
    AddBookOptions(command, choice);
    return AddText(command, "file", choice.file, "the same as --book");
}

void AddCheck(CLI::App& group, Invocation& invocation)
{
    struct Options {
        BookChoice choice;
        std::vector<std::wstring> files;
    };
    const auto options = std::make_shared<Options>();
    CLI::App& check =
        *group.add_subcommand("check", "Read phone book files as the dialogs do, and tell what is wrong.");
    AddBookOptions(check, options->choice);
    AddTexts(check, "files", options->files, "phone book files");
    check.callback([&invocation, options] {
        invocation.run = [options](Report& report) {
            std::vector<std::wstring> paths;
            for (const std::wstring& file : options->files)
                paths.push_back(FullPath(file));
            if (paths.empty())
                paths.push_back(PathOf(options->choice));
            CheckBooks(paths, report);
        };
    });
}

void AddList(CLI::App& group, Invocation& invocation)
{
    const auto choice = std::make_shared<BookChoice>();
    CLI::App& list = *group.add_subcommand("list", "Show the entries and groups of a phone book.");
    AddBookFile(list, *choice);
    list.callback([&invocation, choice] { invocation.run = [choice](Report& report) { List(*choice, report); }; });
}

void AddExport(CLI::App& group, Invocation& invocation)
{
    struct Options {
        BookChoice choice;
        std::wstring out;
        bool overwrite = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App& command = *group.add_subcommand("export", "Write the entries to a CSV file, as the dialog does.");
    AddBookFile(command, options->choice);
    AddText(command, "--out", options->out, "the CSV file")->required();
    command.add_flag("--overwrite", options->overwrite, "replace a file that is there");
    command.callback([&invocation, options] {
        invocation.run = [options](Report& report) {
            Export(options->choice, options->out, options->overwrite, report);
        };
    });
}

void AddImport(CLI::App& group, Invocation& invocation)
{
    const auto options = std::make_shared<ImportOptions>();
    CLI::App& command = *group.add_subcommand("import", "Take people from vCard files and other programs' CSV files.");
    AddTexts(command, "files", options->files, "vCard and CSV files")->required();
    AddBookOptions(command, options->book);
    AddText(command, "--out", options->out, "write a CSV file for the dialog's import instead");
    command.add_flag("--overwrite", options->overwrite, "replace the file of --out");

    const std::string reading = "Reading";
    command.add_option("--code-page", options->codePage, "encoding of files that do not say it, such as windows-1252")
        ->type_name("NAME")
        ->group(reading);
    AddTexts(command, "--name", options->columns.name, "header of the column of names; several are joined")
        ->expected(1)
        ->take_all()
        ->group(reading);
    AddTexts(command, "--fax", options->columns.fax, "header of a column of fax numbers")
        ->expected(1)
        ->take_all()
        ->group(reading);
    AddTexts(command, "--company", options->columns.company, "header of the column of companies")
        ->expected(1)
        ->take_all()
        ->group(reading);

    const std::string dialing = "Dialling";
    AddText(command, "--prefix", options->dialing.outsideLine, "dialled for the outside line, before every number")
        ->group(dialing);
    command
        .add_option("--extension-digits", options->dialing.extensionDigits,
                    "numbers of at most so many digits are the house's own: no outside line")
        ->group(dialing);
    AddText(command, "--international", options->dialing.international, "dialled for +, such as 00 or 011")
        ->group(dialing);
    AddText(command, "--country", options->dialing.country, "the own country's code, such as 49")->group(dialing);
    AddText(command, "--trunk", options->dialing.trunk, "dialled instead of the own country's code, such as 0")
        ->group(dialing);
    command.callback(
        [&invocation, options] { invocation.run = [options](Report& report) { ImportContacts(*options, report); }; });
}

void AddMerge(CLI::App& group, Invocation& invocation)
{
    struct Options {
        BookChoice choice;
        std::vector<std::wstring> files;
    };
    const auto options = std::make_shared<Options>();
    CLI::App& command = *group.add_subcommand("merge", "Add what other phone book files hold, groups included.");
    AddTexts(command, "files", options->files, "phone book files")->required();
    AddBookOptions(command, options->choice);
    command.callback([&invocation, options] {
        invocation.run = [options](Report& report) { MergeBooks(options->choice, options->files, report); };
    });
}

void AddRestore(CLI::App& group, Invocation& invocation)
{
    struct Options {
        BookChoice choice;
        std::size_t copy = 0;
    };
    const auto options = std::make_shared<Options>();
    CLI::App& command =
        *group.add_subcommand("restore", "List the copies that were kept of a phone book; take one back.");
    AddBookFile(command, options->choice);
    command.add_option("--copy", options->copy, "number of the copy, as listed, that takes the phone book's place")
        ->check(CLI::PositiveNumber);
    command.callback([&invocation, options] {
        invocation.run = [options](Report& report) { RestoreBook(PathOf(options->choice), options->copy, report); };
    });
}

} // namespace

void AddPhoneBookCommands(CLI::App& app, Invocation& invocation)
{
    CLI::App& group =
        *app.add_subcommand("phonebook", "Phone book files: check, list, export, import, merge, restore.");
    group.require_subcommand(1);
    AddCheck(group, invocation);
    AddList(group, invocation);
    AddExport(group, invocation);
    AddImport(group, invocation);
    AddMerge(group, invocation);
    AddRestore(group, invocation);
}

} // namespace qx::admin
