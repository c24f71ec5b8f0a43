#include "admin/book_file.h"

#include "phonebook/csv/csv_import.h"
#include "phonebook/file/file_replacement.h"
#include "phonebook/ui/phone_book_changed.h"

#include <algorithm>

namespace qx::admin {

void AddBookOptions(CLI::App& command, BookChoice& choice)
{
    CLI::Option* const book = AddText(command, "--book", choice.file, "the phone book's file");
    AddText(command, "--printer", choice.printer, "the user's phone book of this printer (default: qxfaxab.xml)")
        ->excludes(book);
}

std::wstring PathOf(const BookChoice& choice)
{
    if (!choice.file.empty())
        return FullPath(choice.file);
    ItemStore store;
    PhoneBook* const book = new PhoneBook(store, PhoneBookFiles());
    UniquePrinter printer;
    if (!choice.printer.empty())
        printer = OpenPrinterToRead(choice.printer);
    book->SetPrinter(printer.Get());
    book->BuildFilePath();
    std::wstring path = book->FilePath();
    book->Destroy();
    return path;
}

std::string_view NameOf(LoadOutcome outcome) noexcept
{
    switch (outcome) {
    case LoadOutcome::NoFile:
        return "missing";
    case LoadOutcome::NotReadable:
        return "unreadable";
    case LoadOutcome::NotUnderstood:
    case LoadOutcome::NotFinished:
        return "damaged";
    case LoadOutcome::Read:
        break;
    }
    return "good";
}

std::string ProblemOf(LoadOutcome outcome, const std::wstring& path)
{
    switch (outcome) {
    case LoadOutcome::NoFile:
        return "there is no phone book " + Quoted(path);
    case LoadOutcome::NotReadable:
        return "the phone book " + Quoted(path) +
               " cannot be opened: another program has it open, or the user has no right to read it";
    case LoadOutcome::NotUnderstood:
    case LoadOutcome::NotFinished:
        return "the phone book " + Quoted(path) +
               " is damaged; take a copy back with \"phonebook restore\", or remove the file";
    case LoadOutcome::Read:
        break;
    }
    return {};
}

// ---- storage -------------------------------------------------------------------------------------------------------

LoadedPhoneBook BoundStorage::Load(const std::wstring&, ItemStore& store) const
{
    LoadedPhoneBook loaded;
    if (!path_.empty())
        loaded = LoadPhoneBookFile(path_, store);
    outcome_ = loaded.outcome;
    dropped_ = loaded.dropped;
    return loaded;
}

bool BoundStorage::Save(const std::wstring&, std::span<PhoneBookItem* const> items, bool keepOld,
                        std::optional<ContentHash>* seen) const
{
    saved_ = false;
    saved_ = !path_.empty() && SavePhoneBookFile(path_, items, keepOld, seen);
    return saved_;
}

std::optional<FileStamp> BoundStorage::StampOf(const std::wstring&) const noexcept
{
    return path_.empty() ? std::nullopt : qx::StampOf(path_);
}

// ---- the book ------------------------------------------------------------------------------------------------------

BookFile::BookFile(std::wstring path) : path_(std::move(path)), storage_(path_), book_(new PhoneBook(store_, storage_))
{
    if (!path_.empty())
        guard_.emplace(FollowLink(path_));
    book_->Load();
}

void BookFile::RefuseUnlessReadable() const
{
    if (Outcome() != LoadOutcome::Read && Outcome() != LoadOutcome::NoFile)
        throw Refusal(ProblemOf(Outcome(), path_));
}

void BookFile::Save()
{
    book_->Sort(TRUE);
    book_->Save(book_->GetCount());
    guard_.reset(); // those who are told want to read
    if (!storage_.Saved())
        throw Refusal("the phone book " + Quoted(path_) +
                      " could not be saved, and is as it was: the file is read-only, in use, or its folder takes no "
                      "second file");
    BroadcastPhoneBookChanged();
}

void WriteCsv(const PhoneBook& book, const std::wstring& path)
{
    CsvTableWriter writer;
    if (!writer.Open(FullPath(path)))
        throw Refusal("cannot write " + Quoted(path));
    if (!ExportRows(book, writer) || !writer.Write())
        throw Refusal(Quoted(path) + " could not be written to its end");
}

BookCounts CountItems(std::span<PhoneBookItem* const> items)
{
    const auto groups = static_cast<std::size_t>(
        std::ranges::count_if(items, [](const PhoneBookItem* item) { return item->IsGroup() != FALSE; }));
    return {.entries = items.size() - groups, .groups = groups};
}

} // namespace qx::admin
