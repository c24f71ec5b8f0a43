// Taking over the address book that earlier versions kept in the registry.
#pragma once

#include <windows.h>

namespace qx {

class PhoneBook;

// Runs once per printer: as long as the printer's data holds no "Version". Adds the old entries to the phone book as
// they are, duplicates included, saves the book when there were any, and writes "Version". The old ones stay where
// they are. Nothing happens, and nothing is written, when the printer cannot be opened with full access by the name in
// its data: ordinary users are refused that. True when the book was saved: the caller tells all open lists.
bool ImportOldAddressBookOnce(HANDLE sessionPrinter, PhoneBook& book);

} // namespace qx
