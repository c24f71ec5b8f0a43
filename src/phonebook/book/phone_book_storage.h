// Where a phone book is kept: what the book needs to know of its file.
#pragma once

#include "phonebook/book/items.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace qx {

// Which state of which file one has seen: equal as long as it is neither written nor replaced.
struct FileStamp {
    std::uint64_t written = 0;
    std::uint64_t bytes = 0;
    std::uint64_t index = 0;
    DWORD volume = 0;
    bool operator==(const FileStamp&) const = default;
};

// Of a file's bytes. Unlike a stamp it means the same on every file system, for longer than a moment.
using ContentHash = std::size_t;

enum class LoadOutcome {
    NoFile,        // not there
    NotReadable,   // there, but it could not be opened
    NotUnderstood, // no document, or no phone book in it
    NotFinished,   // a phone book that could not be read to its end
    Read,
};

struct LoadedPhoneBook {
    LoadOutcome outcome = LoadOutcome::NoFile;
    std::vector<PhoneBookItem*> items{}; // in the file's order; the store owns them
    LONG largestId = -1;  // of all that the file names: those that were dropped and those in groups included
    bool dropped = false; // the file holds something of an item that items lacks
    std::optional<FileStamp> stamp{}; // of the file as it was read
    ContentHash content = 0;          // likewise
};

// For the thread of the book that uses it; one may serve several books.
class PhoneBookStorage {
public:
    // Drops entries without id or with an invalid fax number, and groups without name. Members are not resolved. Throws
    // std::bad_alloc.
    virtual LoadedPhoneBook Load(const std::wstring& path, ItemStore& store) const = 0;
    // Replaces what is at path in one step. keepOld: what is there is first copied; when that fails nothing is
    // written. False when nothing was written. Throws std::bad_alloc, with the old file in place. seen, if given:
    // the content that whoever made the items has seen; the old file is kept as well when it is another one, since
    // somebody else has saved it. Afterwards the content that was written, or none when that cannot be told.
    virtual bool Save(const std::wstring& path, std::span<PhoneBookItem* const> items, bool keepOld,
                      std::optional<ContentHash>* seen) const = 0;
    // None when the file cannot be asked.
    virtual std::optional<FileStamp> StampOf(const std::wstring& path) const noexcept = 0;

protected:
    ~PhoneBookStorage() = default;
};

} // namespace qx
