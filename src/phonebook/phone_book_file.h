// The phone book's XML file.
#pragma once

#include "phonebook/file_replacement.h"
#include "phonebook/items.h"

#include <optional>
#include <string>

namespace qx {

enum class LoadOutcome {
    NoFile,        // not there
    NotReadable,   // there, but it could not be opened
    NotUnderstood, // no document, no phone book in it, or one that could not be read to its end
    Read,
};

struct LoadedPhoneBook {
    LoadOutcome outcome = LoadOutcome::NoFile;
    std::vector<PhoneBookItem*> items{}; // in the file's order; the store owns them
    LONG largestId = -1; // of all that the file names: those that were dropped and those in groups included
    bool dropped = false;            // the file holds something of an item that items lacks
    std::optional<FileStamp> stamp{}; // of the file as it was read
    ContentHash content = 0;          // likewise
};

// Drops entries without id or with an invalid fax number, and groups without name. Members are not resolved. Throws
// std::bad_alloc.
LoadedPhoneBook LoadPhoneBookFile(const std::wstring& path, ItemStore& store);

// Replaces the file, or the one that a link leads to, as Replacement does, and leaves it hidden. keepOld: what is there
// is first copied beside it; when that fails nothing is written. False when nothing was written: also when the document
// could not be built to its end. Throws std::bad_alloc, with the old file in place.
// seen, if given: the content that whoever made the items has seen; the old file is kept as well when it is another one,
// since somebody else has saved it. Afterwards the content that was written, or none when that cannot be told.
bool SavePhoneBookFile(const std::wstring& path, std::span<PhoneBookItem* const> items, bool keepOld,
                       std::optional<ContentHash>* seen = nullptr);

} // namespace qx
