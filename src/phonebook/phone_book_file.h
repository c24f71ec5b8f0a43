// The phone book's XML file.
#pragma once

#include "phonebook/items.h"

#include <string>

namespace qx {

enum class LoadOutcome {
    NoFile,        // not there
    NotReadable,   // there, but it could not be opened
    NotUnderstood, // no document, or no phone book in it
    Read,
};

struct LoadedPhoneBook {
    LoadOutcome outcome = LoadOutcome::NoFile;
    std::vector<PhoneBookItem*> items{}; // in the file's order; the store owns them
    LONG largestId = -1;                 // of all that the file names, those that were dropped included
};

// Drops entries without id or with an invalid fax number, and groups without name. Members are not resolved. Throws
// std::bad_alloc.
LoadedPhoneBook LoadPhoneBookFile(const std::wstring& path, ItemStore& store);

// Replaces the file in one step, and leaves it hidden. keepOld: what is there is first copied beside it; when that
// fails nothing is written. False when nothing was written. Throws std::bad_alloc, with the old file in place.
bool SavePhoneBookFile(const std::wstring& path, std::span<PhoneBookItem* const> items, bool keepOld);

} // namespace qx
