#include "phonebook/recent/address_book_import.h"

#include "support/documents_folder.h"
#include "support/failing_calls.h"
#include "support/phone_book.h"
#include "support/redirected_import.h"
#include "support/test_printer.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace qx {
namespace {

using namespace test;
using namespace std::string_literals;
using Names = std::vector<std::wstring>;

class AddressBookImport : public ::testing::Test {
protected:
    AddressBookImport() { book->SetPrinter(printer.Handle()); }

    static void Publish(const TestPrinter& any) { any.SetText(L"DsSpooler", L"PrinterName", any.Name()); }

    void PutOld(const std::wstring& valueName, const std::wstring& block, DWORD type = REG_MULTI_SZ) const
    {
        PutBytes(printer.Key(L"QX-FAX\\Address Book").Get(), valueName.c_str(), type, block.data(),
                 block.size() * sizeof(wchar_t));
    }

    static StoredValue Version(const TestPrinter& any)
    {
        StoredValue value;
        DWORD number = 0;
        DWORD bytes = 0;
        if (GetPrinterDataExW(any.Handle(), L"QXPresetRoot", L"Version", &value.type, reinterpret_cast<BYTE*>(&number),
                              sizeof number, &bytes) != ERROR_SUCCESS)
            return {};
        return AsStored(number);
    }

    Names NamesInFile() const
    {
        TestBook saved;
        saved->SetPrinter(printer.Handle());
        saved->Load();
        return saved.Names();
    }

    DocumentsFolder documents;
    TestPrinter printer;
    TestBook book;
};

TEST_F(AddressBookImport, AddsTheOldEntriesAsTheyAreSavesThemAndWritesTheVersion)
{
    Publish(printer);
    PutOld(L"first", L"Ann\0"
                     L"1\0Acme\0\0"s);
    PutOld(L"second", L"Ann\0"
                      L"1\0Acme\0\0"s); // a duplicate like any other
    book.AddEntry(L"Ann", L"1", L"Acme", book->NextId());
    ImportOldAddressBookOnce(printer.Handle(), *book);
    EXPECT_EQ(book.Names(), (Names{L"Ann", L"Ann", L"Ann"}));
    const PhoneBookEntry& last = *AsEntry(book->GetAt(2));
    EXPECT_STREQ(last.FaxNumber(), L"1");
    EXPECT_STREQ(last.Company(), L"Acme");
    EXPECT_EQ(last.GetId(), 2u);
    EXPECT_EQ(NamesInFile(), book.Names());
    EXPECT_EQ(Version(printer), AsStored(0x10000));
}

TEST_F(AddressBookImport, RunsOnce)
{
    Publish(printer);
    PutOld(L"first", L"Ann\0\0"s);
    ImportOldAddressBookOnce(printer.Handle(), *book);
    ImportOldAddressBookOnce(printer.Handle(), *book);
    EXPECT_EQ(book.Names(), Names{L"Ann"});
    EXPECT_NE(GetStored(printer.Key(L"QX-FAX\\Address Book").Get(), L"first"), StoredValue()); // the old one stays
}

TEST_F(AddressBookImport, LeavesAPrinterAloneThatHasAnyVersion)
{
    Publish(printer);
    PutOld(L"first", L"Ann\0\0"s);
    printer.SetText(L"QXPresetRoot", L"Version", L"a text where a number is expected");
    ImportOldAddressBookOnce(printer.Handle(), *book);
    EXPECT_EQ(book->GetCount(), 0u);
}

TEST_F(AddressBookImport, DoesNothingForAPrinterWithoutPublishedName)
{
    PutOld(L"first", L"Ann\0\0"s);
    ImportOldAddressBookOnce(printer.Handle(), *book);
    EXPECT_EQ(book->GetCount(), 0u);
    EXPECT_EQ(Version(printer), StoredValue());
}

TEST_F(AddressBookImport, DoesNothingForAPrinterThatCannotBeOpenedByItsPublishedName)
{
    printer.SetText(L"DsSpooler", L"PrinterName", L"no such printer");
    PutOld(L"first", L"Ann\0\0"s);
    ImportOldAddressBookOnce(printer.Handle(), *book);
    EXPECT_EQ(book->GetCount(), 0u);
    EXPECT_EQ(Version(printer), StoredValue());
}

// Ordinary users are refused full access on Windows.
RedirectedImport<decltype(OpenPrinterW)>* openPrinter = nullptr;
BOOL WINAPI RefuseAllAccess(LPWSTR name, LPHANDLE printer, LPPRINTER_DEFAULTSW defaults)
{
    if (defaults == nullptr || defaults->DesiredAccess != PRINTER_ALL_ACCESS)
        return openPrinter->Original()(name, printer, defaults);
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

TEST_F(AddressBookImport, DoesNothingForAUserWhoIsRefusedFullAccess)
{
    Publish(printer);
    PutOld(L"first", L"Ann\0\0"s);
    {
        RedirectedImport<decltype(OpenPrinterW)> refusing("OpenPrinterW", RefuseAllAccess);
        openPrinter = &refusing;
        EXPECT_FALSE(ImportOldAddressBookOnce(printer.Handle(), *book));
    }
    EXPECT_EQ(book->GetCount(), 0u);
    EXPECT_TRUE(documents.Files().empty());
    EXPECT_EQ(Version(printer), StoredValue());
    EXPECT_TRUE(ImportOldAddressBookOnce(printer.Handle(), *book)); // an administrator's first fax still imports
    EXPECT_FALSE(ImportOldAddressBookOnce(printer.Handle(), *book));
}

TEST_F(AddressBookImport, WithoutSubtreeImportsNothingButWritesTheVersion)
{
    const TestPrinter unnamed(TestPrinter::Subtree::Unnamed);
    Publish(unnamed);
    ImportOldAddressBookOnce(unnamed.Handle(), *book);
    EXPECT_EQ(book->GetCount(), 0u);
    EXPECT_EQ(Version(unnamed), AsStored(0x10000));
}

TEST_F(AddressBookImport, WithoutMemoryAddsAllOrNothing)
{
    PutOld(L"first", L"Ann\0"
                     L"1\0\0"s);
    PutOld(L"second", L"Bob\0"
                      L"2\0\0"s);
    Publish(printer);
    FailingCalls<decltype(HeapAlloc), struct Blocks> blocks(nullptr, "HeapAlloc", nullptr);
    bool refused = true;
    for (long call = 1; refused; ++call) {
        blocks.FailOnly(call);
        try {
            ImportOldAddressBookOnce(printer.Handle(), *book);
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(book->GetCount(), 0u) << call;
        }
        refused = blocks.HasFailed() && book->GetCount() == 0;
    }
    blocks.FailNone();
    EXPECT_EQ(book.Names(), (Names{L"Ann", L"Bob"}));
}

TEST_F(AddressBookImport, OfAnEmptyAddressBookDoesNotSave)
{
    Publish(printer);
    ImportOldAddressBookOnce(printer.Handle(), *book);
    EXPECT_TRUE(documents.Files().empty());
    EXPECT_EQ(Version(printer), AsStored(0x10000));
}

TEST_F(AddressBookImport, OfEntriesThatCannotBeReadDoesNotSaveEither)
{
    Publish(printer);
    PutOld(L"a", L"Ann\0\0"s);
    FailingCalls<decltype(RegQueryValueExW), struct QueryCalls> queries(
        nullptr, "RegQueryValueExW", ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED,
        [](HKEY, LPCWSTR name, DWORD*, DWORD*, BYTE*, DWORD*) {
            return name != nullptr && std::wstring_view(name) == L"a";
        });
    queries.FailFrom(1);
    ImportOldAddressBookOnce(printer.Handle(), *book);
    EXPECT_TRUE(queries.HasFailed());
    EXPECT_TRUE(documents.Files().empty());
}

TEST_F(AddressBookImport, GivesValuesWithFewerStringsEmptyTexts)
{
    Publish(printer);
    PutOld(L"a", L"Ann"); // no terminator at all
    PutOld(L"b",
           L"Bob\0"
           L"2"s,
           REG_BINARY);
    PutOld(L"c", L"");
    ImportOldAddressBookOnce(printer.Handle(), *book);
    EXPECT_EQ(book.Names(), (Names{L"Ann", L"Bob", L""}));
    EXPECT_STREQ(AsEntry(book->GetAt(0))->FaxNumber(), L"");
    EXPECT_STREQ(AsEntry(book->GetAt(1))->FaxNumber(), L"2");
    EXPECT_STREQ(AsEntry(book->GetAt(1))->Company(), L"");
}

TEST_F(AddressBookImport, PassesOverAValueWhoseNameIsTooLongAndGoesOn)
{
    Publish(printer);
    PutOld(L"before", L"Ann\0\0"s);
    PutOld(std::wstring(260, L'n'), L"Too long\0\0"s);
    PutOld(std::wstring(259, L'n'), L"Just fits\0\0"s);
    PutOld(L"behind", L"Bob\0\0"s);
    PutOld(L"", L"Of no name\0\0"s);
    ImportOldAddressBookOnce(printer.Handle(), *book);
    Names names = book.Names();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (Names{L"Ann", L"Bob", L"Just fits", L"Of no name"}));
}

TEST_F(AddressBookImport, LeavesOutWhatCannotBeReadAndNothingElse)
{
    Names imported;
    WhileEachFails<decltype(RegQueryValueExW)>("RegQueryValueExW", ERROR_ACCESS_DENIED, [&](const std::string& what) {
        const TestPrinter other; // to which it happens once
        Publish(other);
        const UniqueKey old = other.Key(L"QX-FAX\\Address Book");
        const std::wstring ann = L"Ann\0"
                                 L"1\0Acme\0\0"s,
                           bob = L"Bob\0"
                                 L"2\0\0\0"s;
        PutBytes(old.Get(), L"first", REG_MULTI_SZ, ann.data(), ann.size() * sizeof(wchar_t));
        PutBytes(old.Get(), L"second", REG_MULTI_SZ, bob.data(), bob.size() * sizeof(wchar_t));
        TestBook loaded;
        loaded->SetPrinter(other.Handle());
        ImportOldAddressBookOnce(other.Handle(), *loaded);
        for (const PhoneBookItem* const item : loaded->Items()) {
            const Recipient texts = AsEntry(item)->Texts();
            EXPECT_TRUE(texts == (Recipient{L"Ann", L"1", L"Acme"}) || texts == (Recipient{L"Bob", L"2", L""})) << what;
        }
        imported = loaded.Names();
    });
    EXPECT_EQ(imported, (Names{L"Ann", L"Bob"})); // by the last one, of which no call failed
}

} // namespace
} // namespace qx
