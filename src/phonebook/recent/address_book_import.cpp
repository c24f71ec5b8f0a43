#include "phonebook/recent/address_book_import.h"

#include "base/printer.h"
#include "base/unique.h"
#include "phonebook/book/phone_book.h"
#include "phonebook/recent/registry_entry.h"
#include "settings/key_set.h"
#include "settings/names.h"

#include <optional>
#include <string>
#include <vector>

namespace qx {

namespace {

constexpr DWORD kCurrentVersion = 0x10000;

// The printer of the name under which the spooler published it.
UniquePrinter OpenWithAllAccess(HANDLE sessionPrinter)
{
    std::wstring name = ReadPrinterText(sessionPrinter, L"DsSpooler", L"PrinterName").value_or(L"");
    PRINTER_DEFAULTSW access{};
    access.DesiredAccess = PRINTER_ALL_ACCESS;
    UniquePrinter printer;
    if (!name.empty())
        OpenPrinterW(name.data(), printer.Receive(), &access);
    return printer;
}

bool LacksVersion(HANDLE printer) noexcept
{
    DWORD version = 0;
    return ReadPrinterNumber(printer, kPresetData, kPhoneBookVersionValue, version) == ERROR_FILE_NOT_FOUND;
}

void WriteVersion(HANDLE printer)
{
    DWORD version = kCurrentVersion;
    SetPrinterDataExW(printer, kPresetData, kPhoneBookVersionValue, REG_DWORD, reinterpret_cast<BYTE*>(&version),
                      sizeof version);
}

PhoneBookEntry* NewEntry(const Recipient& texts, PhoneBook& book)
{
    PhoneBookEntry* const entry = book.Store().NewEntry();
    entry->SetTexts(texts);
    entry->SetId(book.NextId());
    return entry;
}

// Whether there was anything to import. Without memory nothing is: what the book took would be saved by whoever saves
// next, and imported once more.
bool ImportOldAddressBook(HANDLE printer, PhoneBook& book)
{
    KeySet keys(printer);
    OpenKeys(*keys);
    std::vector<PhoneBookItem*> entries;                                 // the book's store frees them
    for (const std::wstring& name : ValueNames(keys->hAddressBookKey)) { // none of a key that could not be opened
        if (const std::optional<Recipient> texts = ReadRegistryEntry(keys->hAddressBookKey, name.c_str()))
            entries.push_back(NewEntry(*texts, book));
    }
    if (entries.empty())
        return false;
    book.AddAll(entries);
    book.Save(book.GetCount());
    return true;
}

} // namespace

bool ImportOldAddressBookOnce(HANDLE sessionPrinter, PhoneBook& book)
{
    const UniquePrinter printer = OpenWithAllAccess(sessionPrinter);
    if (!printer || !LacksVersion(printer.Get()))
        return false;
    const bool imported = ImportOldAddressBook(sessionPrinter, book);
    WriteVersion(printer.Get());
    return imported;
}

} // namespace qx
