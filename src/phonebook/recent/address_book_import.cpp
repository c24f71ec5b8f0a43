#include "phonebook/recent/address_book_import.h"

#include "base/unique.h"
#include "phonebook/book/phone_book.h"
#include "phonebook/recent/registry_entry.h"
#include "settings/registry.h"

#include <iterator>
#include <string>

namespace qx {

namespace {

constexpr wchar_t kPresetKey[] = L"QXPresetRoot";
constexpr wchar_t kVersion[] = L"Version";
constexpr DWORD kCurrentVersion = 0x10000;

// The name under which the spooler published the printer; empty when it cannot be read.
std::wstring PublishedName(HANDLE printer)
{
    const auto read = [printer](std::wstring& buffer, DWORD& bytes) {
        DWORD type = 0;
        return GetPrinterDataExW(printer, L"DsSpooler", L"PrinterName", &type, reinterpret_cast<BYTE*>(buffer.data()),
                                 static_cast<DWORD>(buffer.size() * sizeof(wchar_t)), &bytes);
    };
    DWORD bytes = 0;
    std::wstring name;
    if (read(name, bytes) == ERROR_MORE_DATA)
        name.resize(bytes / sizeof(wchar_t) + 1); // the value may lack its terminator
    return read(name, bytes) == ERROR_SUCCESS ? name.c_str() : L"";
}

UniquePrinter OpenWithAllAccess(std::wstring name)
{
    PRINTER_DEFAULTSW access{};
    access.DesiredAccess = PRINTER_ALL_ACCESS;
    UniquePrinter printer;
    if (!name.empty())
        OpenPrinterW(name.data(), printer.Receive(), &access);
    return printer;
}

bool LacksVersion(HANDLE printer)
{
    DWORD type = 0;
    DWORD bytes = 0;
    DWORD version = 0;
    return GetPrinterDataExW(printer, kPresetKey, kVersion, &type, reinterpret_cast<BYTE*>(&version), sizeof version,
                             &bytes) == ERROR_FILE_NOT_FOUND;
}

void WriteVersion(HANDLE printer)
{
    DWORD version = kCurrentVersion;
    SetPrinterDataExW(printer, kPresetKey, kVersion, REG_DWORD, reinterpret_cast<BYTE*>(&version), sizeof version);
}

// Whether there was anything to add.
bool AddOldEntry(HKEY addressBook, const wchar_t* valueName, PhoneBook& book)
{
    const std::optional<Recipient> texts = ReadRegistryEntry(addressBook, valueName);
    if (!texts)
        return false;
    PhoneBookEntry* const entry = book.Store().NewEntry();
    entry->SetTexts(*texts);
    entry->SetId(book.NextId());
    book.Add(entry);
    return true;
}

bool AddOldEntries(HKEY addressBook, PhoneBook& book)
{
    bool added = false;
    for (DWORD index = 0;; ++index) {
        wchar_t name[260];
        DWORD units = static_cast<DWORD>(std::size(name));
        const LSTATUS status = RegEnumValueW(addressBook, index, name, &units, nullptr, nullptr, nullptr, nullptr);
        if (status == ERROR_MORE_DATA)
            continue; // a name that is too long; the values behind it count
        if (status != ERROR_SUCCESS)
            return added;
        added |= AddOldEntry(addressBook, name, book);
    }
}

class OpenKeySet {
public:
    explicit OpenKeySet(HANDLE printer)
    {
        keys_.PrinterHandle = printer;
        OpenKeys(keys_);
    }
    ~OpenKeySet() { CloseKeys(keys_); }
    OpenKeySet(const OpenKeySet&) = delete;
    OpenKeySet& operator=(const OpenKeySet&) = delete;

    HKEY AddressBook() const noexcept { return keys_.hAddressBookKey; }

private:
    RegistryKeySet keys_;
};

// Whether there was anything to import.
bool ImportOldAddressBook(HANDLE printer, PhoneBook& book)
{
    const OpenKeySet keys(printer);
    if (keys.AddressBook() == nullptr || !AddOldEntries(keys.AddressBook(), book))
        return false;
    book.Save(book.GetCount());
    return true;
}

} // namespace

bool ImportOldAddressBookOnce(HANDLE sessionPrinter, PhoneBook& book)
{
    const UniquePrinter printer = OpenWithAllAccess(PublishedName(sessionPrinter));
    if (!printer || !LacksVersion(printer.Get()))
        return false;
    const bool imported = ImportOldAddressBook(sessionPrinter, book);
    WriteVersion(printer.Get());
    return imported;
}

} // namespace qx
