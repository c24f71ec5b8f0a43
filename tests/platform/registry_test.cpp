#include "settings/registry.h"

#include "settings/key_set.h"

#include "support/failing_calls.h"
#include "support/test_printer.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using namespace test;

class Registry : public ::testing::Test {
protected:
    std::wstring ReadBack(const wchar_t* name)
    {
        std::wstring out = L"untouched";
        return ReadString(set.hDefaultKey, name, out) ? std::wstring(out.c_str()) : L"<not read: " + out + L">";
    }

    TestPrinter printer;
    KeySet keys{printer.Handle()};
    RegistryKeySet& set = *keys;
};

bool IsOpen(HKEY key)
{
    return RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                            nullptr, nullptr) == ERROR_SUCCESS;
}

// The handle can write into the key that the path names.
bool IsKey(HKEY key, const TestPrinter& printer, const wchar_t* below)
{
    PutNumber(key, L"Mark", 4711);
    const bool same = GetStored(printer.Key(below).Get(), L"Mark") == AsStored(4711);
    RegDeleteValueW(key, L"Mark");
    return same;
}

TEST_F(Registry, TheFourKeysLieUnderTheVendorsKeyAndThePrintersGuid)
{
    OpenKeys(set);
    EXPECT_TRUE(IsKey(set.hDefaultKey, printer, L"QX-FAX\\Default"));
    EXPECT_TRUE(IsKey(set.hAddressBookKey, printer, L"QX-FAX\\Address Book"));
    EXPECT_TRUE(IsKey(set.hJobDataKey, printer, L"QX-FAX\\JobData"));
    EXPECT_TRUE(IsKey(set.hMruListKey, printer, L"QX-FAX\\MRUList"));
    EXPECT_EQ(set.hBidiInfoKey, nullptr);
}

TEST_F(Registry, WithoutAGuidNothingIsOpenedAndNothingIsRead)
{
    const TestPrinter unnamed(TestPrinter::Subtree::Unnamed);
    set.PrinterHandle = unnamed.Handle();
    OpenKeys(set);
    OpenDeviceStateKey(set);
    EXPECT_EQ(set.hDefaultKey, nullptr);
    EXPECT_EQ(set.hAddressBookKey, nullptr);
    EXPECT_EQ(set.hJobDataKey, nullptr);
    EXPECT_EQ(set.hMruListKey, nullptr);
    EXPECT_EQ(set.hBidiInfoKey, nullptr);
    HKEY subtree = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, unnamed.SubtreePath().c_str(), 0, KEY_READ, &subtree),
              ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(ReadBack(L"SenderName"), L"<not read: untouched>");
    DWORD number = 7;
    EXPECT_FALSE(ReadDword(set.hDefaultKey, L"Resolution", number));
    EXPECT_EQ(number, 7u);
    EXPECT_FALSE(WriteString(set.hDefaultKey, L"SenderName", L"Ann", REG_SZ));
    EXPECT_FALSE(WriteDword(set.hDefaultKey, L"Resolution", 1));
}

TEST_F(Registry, AGuidLongerThan520BytesCountsAsNone)
{
    printer.SetText(L"QXPresetRoot", L"QXRestrictedUserGuid", std::wstring(300, L'g'));
    OpenKeys(set);
    EXPECT_EQ(set.hDefaultKey, nullptr);
}

TEST_F(Registry, AGuidWithoutTerminatorEndsWithItsData)
{
    const std::wstring guid = printer.Guid();
    printer.SetData(L"QXPresetRoot", L"QXRestrictedUserGuid", REG_BINARY, guid.data(),
                    static_cast<DWORD>(guid.size() * sizeof(wchar_t)));
    EXPECT_EQ(RestrictedUserGuid(printer.Handle()), guid);
    OpenKeys(set);
    EXPECT_TRUE(IsKey(set.hDefaultKey, printer, L"QX-FAX\\Default"));
}

TEST_F(Registry, AKeptSubtreeNameIsTheFirstOneThatCouldBeRead)
{
    const TestPrinter other;
    const TestPrinter unnamed(TestPrinter::Subtree::Unnamed);
    const std::wstring guid = printer.Guid();
    const auto rename = [](const TestPrinter& renamed, const std::wstring& name) {
        renamed.SetText(L"QXPresetRoot", L"QXRestrictedUserGuid", name);
    };
    {
        const KeptSubtreeName kept(printer.Handle());
        const KeptSubtreeName keptOfUnnamed(unnamed.Handle());
        EXPECT_EQ(RestrictedUserGuid(printer.Handle()), guid);
        EXPECT_EQ(RestrictedUserGuid(unnamed.Handle()), std::nullopt);
        rename(printer, L"{another}");
        rename(unnamed, L"{late}");
        EXPECT_EQ(RestrictedUserGuid(printer.Handle()), guid);
        EXPECT_EQ(RestrictedUserGuid(unnamed.Handle()), L"{late}");
        EXPECT_EQ(RestrictedUserGuid(other.Handle()), other.Guid());
    }
    EXPECT_EQ(RestrictedUserGuid(printer.Handle()), L"{another}");
}

TEST_F(Registry, KeptSubtreeNamesMayEndInAnyOrder)
{
    const TestPrinter other;
    const KeptSubtreeName keptOfOther(other.Handle());
    auto first = std::make_unique<KeptSubtreeName>(printer.Handle());
    const KeptSubtreeName last(other.Handle());
    EXPECT_EQ(RestrictedUserGuid(printer.Handle()), printer.Guid());
    first.reset();
    EXPECT_EQ(RestrictedUserGuid(other.Handle()), other.Guid());
}

TEST_F(Registry, KeysThatCannotBeMadeAreNone)
{
    FailingCalls<decltype(RegCreateKeyExW), struct Keys> creations(nullptr, "RegCreateKeyExW", ERROR_ACCESS_DENIED);
    creations.FailFrom(1);
    OpenKeys(set);
    EXPECT_EQ(set.hDefaultKey, nullptr);
    creations.FailOnly(3); // the second of the four, behind the key that all are in
    OpenKeys(set);
    EXPECT_NE(set.hAddressBookKey, nullptr);
    EXPECT_EQ(set.hDefaultKey, nullptr);
    EXPECT_NE(set.hMruListKey, nullptr);
}

TEST_F(Registry, OpeningTheSetTwiceLeavesTheFirstJobDataAndRecentListHandlesOpen)
{
    OpenKeys(set);
    const RegistryKeySet first = set;
    OpenKeys(set);
    EXPECT_TRUE(IsOpen(first.hJobDataKey));
    EXPECT_TRUE(IsOpen(first.hMruListKey));
    EXPECT_NE(first.hJobDataKey, set.hJobDataKey);
    EXPECT_NE(first.hMruListKey, set.hMruListKey);
    EXPECT_TRUE(IsOpen(set.hDefaultKey));
    EXPECT_TRUE(IsOpen(set.hAddressBookKey));
    RegCloseKey(first.hJobDataKey);
    RegCloseKey(first.hMruListKey);
}

TEST_F(Registry, ClosingTheSetClosesAllFiveAndLeavesThemNull)
{
    printer.Key(L"QXBIDIInfo");
    OpenKeys(set);
    OpenDeviceStateKey(set);
    ASSERT_NE(set.hBidiInfoKey, nullptr);
    const RegistryKeySet before = set;
    CloseKeys(set);
    for (const HKEY key :
         {before.hDefaultKey, before.hAddressBookKey, before.hJobDataKey, before.hBidiInfoKey, before.hMruListKey})
        EXPECT_FALSE(IsOpen(key));
    for (const HKEY key : {set.hDefaultKey, set.hAddressBookKey, set.hJobDataKey, set.hBidiInfoKey, set.hMruListKey})
        EXPECT_EQ(key, nullptr);
    CloseKeys(set); // nothing left to close
}

TEST_F(Registry, TextsAndNumbersComeBackAsWritten)
{
    OpenKeys(set);
    EXPECT_TRUE(WriteString(set.hDefaultKey, L"Text", L"Gr\u00fc\u00dfe, \u05e9\u05dc\u05d5\u05dd", REG_SZ));
    EXPECT_EQ(GetStored(set.hDefaultKey, L"Text"), AsStored(L"Gr\u00fc\u00dfe, \u05e9\u05dc\u05d5\u05dd"));
    EXPECT_EQ(ReadBack(L"Text"), L"Gr\u00fc\u00dfe, \u05e9\u05dc\u05d5\u05dd");
    EXPECT_TRUE(WriteDword(set.hDefaultKey, L"Number", 0xFFFFFFFE));
    EXPECT_EQ(GetStored(set.hDefaultKey, L"Number"), AsStored(0xFFFFFFFE));
    DWORD number = 0;
    EXPECT_TRUE(ReadDword(set.hDefaultKey, L"Number", number));
    EXPECT_EQ(number, 0xFFFFFFFEu);
}

TEST_F(Registry, ANullTextIsStoredAsAnEmptyOne)
{
    OpenKeys(set);
    EXPECT_TRUE(WriteString(set.hDefaultKey, L"Text", nullptr, REG_SZ));
    EXPECT_EQ(GetStored(set.hDefaultKey, L"Text"), AsStored(L""));
}

TEST_F(Registry, AListOfTextsIsStoredUpToAndWithItsFinalTerminator)
{
    OpenKeys(set);
    const wchar_t list[] = L"Ann\0"
                           L"555\0"
                           L"Acme\0\0not stored";
    EXPECT_TRUE(WriteString(set.hDefaultKey, L"List", list, REG_MULTI_SZ));
    const StoredValue stored = GetStored(set.hDefaultKey, L"List");
    EXPECT_EQ(stored.type, static_cast<DWORD>(REG_MULTI_SZ));
    EXPECT_EQ(stored.bytes, std::string(reinterpret_cast<const char*>(list), 14 * sizeof(wchar_t)));
    std::wstring out;
    ASSERT_TRUE(ReadString(set.hDefaultKey, L"List", out));
    EXPECT_EQ(out.substr(0, 14), std::wstring(list, 14)); // all its strings, not only the first
}

TEST_F(Registry, AnyOtherTypeWritesNothingAndStillSucceeds)
{
    OpenKeys(set);
    EXPECT_TRUE(WriteString(set.hDefaultKey, L"Text", L"Ann", REG_BINARY));
    EXPECT_TRUE(WriteString(set.hDefaultKey, L"Text", L"Ann", REG_EXPAND_SZ));
    EXPECT_EQ(GetStored(set.hDefaultKey, L"Text"), StoredValue{});
    EXPECT_EQ(ValueType(set.hDefaultKey, L"Text"), static_cast<DWORD>(REG_NONE));
}

TEST_F(Registry, ATextStoredBadlyReadsUpToItsEndAndNeverBeyond)
{
    OpenKeys(set);
    const std::wstring huge(200000, L'h');
    struct Case {
        const char* name;
        DWORD type;
        std::string bytes;
        std::wstring expected;
    };
    const Case cases[] = {
        {"no terminator", REG_SZ, std::string("A\0n\0n\0", 6), L"Ann"},
        {"odd size", REG_SZ, std::string("A\0n\0n", 5), L"An"},
        {"one byte", REG_SZ, "A", L""},
        {"nothing", REG_SZ, "", L""},
        {"text behind its terminator", REG_SZ, std::string("A\0\0\0B\0", 6), L"A"},
        {"binary", REG_BINARY, std::string("A\0n\0n\0", 6), L"Ann"},
        {"a number", REG_DWORD, std::string("A\0n\0", 4), L"An"},
        {"no type", REG_NONE, std::string("A\0", 2), L"A"},
        {"huge", REG_SZ, std::string(reinterpret_cast<const char*>(huge.data()), huge.size() * sizeof(wchar_t)), huge},
    };
    for (const Case& c : cases) {
        PutBytes(set.hDefaultKey, L"Value", c.type, c.bytes.data(), c.bytes.size());
        EXPECT_EQ(ReadBack(L"Value"), c.expected) << c.name;
    }
}

TEST_F(Registry, ATextThatGrowsBetweenTwoLooksIsReadAgain)
{
    OpenKeys(set);
    ASSERT_TRUE(WriteString(set.hDefaultKey, L"Text", L"stored", REG_SZ));
    FailingCalls<decltype(RegQueryValueExW), struct Looks> looks(nullptr, "RegQueryValueExW", ERROR_MORE_DATA);
    looks.FailOnly(2);
    EXPECT_EQ(ReadBack(L"Text"), L"stored");
}

TEST_F(Registry, ATextThatGrowsWithoutEndIsNotReadAndCountsAsRefused)
{
    OpenKeys(set);
    ASSERT_TRUE(WriteString(set.hDefaultKey, L"Text", L"stored", REG_SZ));
    FailingCalls<decltype(RegQueryValueExW), struct Looks> looks(nullptr, "RegQueryValueExW", ERROR_MORE_DATA);
    looks.FailFrom(2);
    EXPECT_EQ(ReadBack(L"Text"), L"<not read: untouched>");
    looks.FailFrom(2);
    std::wstring text;
    EXPECT_FALSE(IsAnswer(QueryString(set.hDefaultKey, L"Text", text)));
}

TEST_F(Registry, ANumberOfUpToFourBytesIsReadWhateverItsType)
{
    OpenKeys(set);
    struct Case {
        const char* name;
        DWORD type;
        std::string bytes;
        DWORD expected; // 99: not read
    };
    const Case cases[] = {
        {"number", REG_DWORD, std::string("\x02\0\0\0", 4), 2},
        {"text of one character", REG_SZ, std::string("1\0\0\0", 4), '1'},
        {"two bytes", REG_BINARY, "\x01\x02", 0x0201},
        {"nothing", REG_DWORD, "", 0},
        {"five bytes", REG_BINARY, "12345", 99},
        {"quad word", REG_QWORD, std::string(8, '\0'), 99},
    };
    for (const Case& c : cases) {
        PutBytes(set.hDefaultKey, L"Value", c.type, c.bytes.data(), c.bytes.size());
        DWORD number = 99;
        EXPECT_EQ(ReadDword(set.hDefaultKey, L"Value", number), c.expected != 99) << c.name;
        EXPECT_EQ(number, c.expected) << c.name;
    }
}

} // namespace
} // namespace qx
