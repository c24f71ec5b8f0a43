// A phone book file as the commands work on it: through the module's own book, parser, guard and replacement.
#pragma once

#include "admin/command.h"
#include "phonebook/book/phone_book.h"
#include "phonebook/file/file_guard.h"
#include "phonebook/file/phone_book_file.h"

#include <memory>
#include <optional>

namespace qx::admin {

// Which file: a named one, or the user's own for a printer (or, without one, the default).
struct BookChoice {
    std::wstring file;
    std::wstring printer;
};
void AddBookOptions(CLI::App& command, BookChoice& choice);
// A full path. Throws Refusal.
std::wstring PathOf(const BookChoice& choice);

std::string_view NameOf(LoadOutcome outcome) noexcept; // for machines
// "there is no phone book", "the phone book cannot be opened: another program ...": a sentence about the path; empty
// when it was read.
std::string ProblemOf(LoadOutcome outcome, const std::wstring& path);

// The module's storage, bound to one path, that remembers how reading and writing went.
class BoundStorage final : public PhoneBookStorage {
public:
    explicit BoundStorage(std::wstring path) : path_(std::move(path)) {}

    LoadedPhoneBook Load(const std::wstring& path, ItemStore& store) const override;
    bool Save(const std::wstring& path, std::span<PhoneBookItem* const> items, bool keepOld,
              std::optional<ContentHash>* seen) const override;
    std::optional<FileStamp> StampOf(const std::wstring& path) const noexcept override;

    LoadOutcome Outcome() const noexcept { return outcome_; }
    bool Dropped() const noexcept { return dropped_; }
    bool Saved() const noexcept { return saved_; }

private:
    std::wstring path_; // empty: a book of no file
    mutable LoadOutcome outcome_ = LoadOutcome::NoFile;
    mutable bool dropped_ = false;
    mutable bool saved_ = false;
};

// A book that is read, and perhaps changed and saved. From its reading to its saving no other process of the module
// reads or writes the file.
class BookFile {
public:
    // Reads what is there. An empty path: an empty book of no file.
    explicit BookFile(std::wstring path);

    const std::wstring& Path() const noexcept { return path_; }
    PhoneBook& Book() const noexcept { return *book_; }
    LoadOutcome Outcome() const noexcept { return storage_.Outcome(); }
    bool Dropped() const noexcept { return storage_.Dropped(); }

    // Throws Refusal when a file is there that was not read: nothing may be lost by saving over it.
    void RefuseUnlessReadable() const;
    // Sorts and saves as the dialogs do, lets others at the file and tells all open lists. Throws Refusal when it was
    // not saved.
    void Save();

private:
    struct Destroy {
        void operator()(PhoneBook* book) const noexcept { book->Destroy(); }
    };

    std::wstring path_;
    std::optional<FileGuard> guard_;
    ItemStore store_;
    BoundStorage storage_;
    std::unique_ptr<PhoneBook, Destroy> book_;
};

// All entries, as the dialog exports them. Throws Refusal.
void WriteCsv(const PhoneBook& book, const std::wstring& path);

struct BookCounts {
    std::size_t entries = 0;
    std::size_t groups = 0;
};
BookCounts CountItems(std::span<PhoneBookItem* const> items);

} // namespace qx::admin
