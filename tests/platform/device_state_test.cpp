#include "settings/device_state.h"

#include "record/fax_job_data.h"
#include "settings/key_set.h"
#include "support/failing_calls.h"
#include "support/patched_function.h"
#include "support/print_host.h"
#include "support/test_printer.h"

#include <cwchar>
#include <gtest/gtest.h>

namespace qx {
namespace {

using namespace test;

constexpr wchar_t kCoverPageData[] = L"PrinterDriverData";
constexpr wchar_t kLock[] = L"FaxCPDefaultOverlayBitmapLock";
constexpr wchar_t kPath[] = L"FaxCPDefaultOverlayBitmapPath";

class DeviceState : public ::testing::Test {
protected:
    FaxJobData& record() { return owned.Get(); }
    UniqueKey Stored() const { return printer.Key(L"QXBIDIInfo"); }

    TestPrinter printer;
    OwnedFaxJobData owned;
    KeySet keys{owned.Get()};
};

class CoverPageLock : public DeviceState {
protected:
    CoverPageLock() { record().PrinterHandle = printer.Handle(); }
};

TEST_F(DeviceState, WithoutTheDevicesKeyEverythingIsOff)
{
    record().PcFaxSendOperational = record().NotificationAvailable = record().BillingCodeEnabled = 1;
    record().BillingCodeMinLength = 4;
    record().EmailServiceOperational = 1;
    SetBillingCode(record(), L"123");
    ReadDeviceState(record(), printer.Handle());
    EXPECT_EQ(record().PrinterHandle, printer.Handle());
    EXPECT_EQ(record().hBidiInfoKey, nullptr);
    EXPECT_EQ(record().PcFaxSendOperational, 0u);
    EXPECT_EQ(record().NotificationAvailable, 0u);
    EXPECT_EQ(record().BillingCodeEnabled, 0u);
    EXPECT_EQ(record().BillingCodeMinLength, 0u);
    EXPECT_EQ(record().EmailServiceOperational, 0u);
    EXPECT_STREQ(record().BillingCode, L"123"); // a missing one changes nothing
}

TEST_F(DeviceState, FlagsBecomeOneAndTheOthersKeepTheirValue)
{
    const UniqueKey key = Stored();
    for (const wchar_t* const name :
         {L"PCFAX_SEND_OPERATIONAL", L"FAX_NOTIFICATION_AVAILABLE", L"FAX_BILLING_CODE_ENABLED",
          L"FAX_BILLING_CODE_MINLENGTH", L"EMAIL-SERVICE-OPERATIONAL"})
        PutNumber(key.Get(), name, 6);
    ReadDeviceState(record(), printer.Handle());
    EXPECT_EQ(record().PcFaxSendOperational, 1u);
    EXPECT_EQ(record().NotificationAvailable, 1u);
    EXPECT_EQ(record().BillingCodeEnabled, 1u);
    EXPECT_EQ(record().BillingCodeMinLength, 6u);
    EXPECT_EQ(record().EmailServiceOperational, 6u);
}

TEST_F(DeviceState, AValueOfAnotherTypeCountsAsOff)
{
    const UniqueKey key = Stored();
    PutText(key.Get(), L"PCFAX_SEND_OPERATIONAL", L"1"); // four bytes, like a number
    PutBytes(key.Get(), L"FAX_NOTIFICATION_AVAILABLE", REG_BINARY, "\x01\0\0\0", 4);
    PutBytes(key.Get(), L"FAX_BILLING_CODE_ENABLED", REG_QWORD, "\x01\0\0\0\0\0\0\0", 8);
    PutText(key.Get(), L"FAX_BILLING_CODE_MINLENGTH", L"4");
    PutBytes(key.Get(), L"EMAIL-SERVICE-OPERATIONAL", REG_DWORD, "\x01\0\0\0\x01", 5); // more than a number
    ReadDeviceState(record(), printer.Handle());
    EXPECT_EQ(record().PcFaxSendOperational, 0u);
    EXPECT_EQ(record().NotificationAvailable, 0u);
    EXPECT_EQ(record().BillingCodeEnabled, 0u);
    EXPECT_EQ(record().BillingCodeMinLength, 0u);
    EXPECT_EQ(record().EmailServiceOperational, 0u);
}

TEST_F(DeviceState, ABillingCodeIsTakenOverOnlyWhenItIsATextOfDigits)
{
    struct Case {
        const char* name;
        DWORD type;
        std::wstring stored; // with its terminator, if any
        std::wstring expected;
    };
    const Case cases[] = {
        {"digits", REG_SZ, {L"1234", 5}, L"1234"},
        {"a letter among them", REG_SZ, {L"12a4", 5}, L"before"},
        {"twenty digits", REG_SZ, {L"12345678901234567890", 21}, L"1234567890123456"},
        {"sixteen digits and a letter", REG_SZ, {L"1234567890123456a", 18}, L"before"},
        {"empty", REG_SZ, {L"", 1}, L""},
        {"no terminator", REG_SZ, {L"55", 2}, L"55"},
        {"another type", REG_EXPAND_SZ, {L"1234", 5}, L"before"},
        {"binary", REG_BINARY, {L"1234", 5}, L"before"},
    };
    for (const Case& c : cases) {
        PutBytes(Stored().Get(), L"FAX_BILLING_CODE", c.type, c.stored.data(), c.stored.size() * sizeof(wchar_t));
        SetBillingCode(record(), L"before");
        ReadDeviceState(record(), printer.Handle());
        EXPECT_EQ(std::wstring(record().BillingCode), c.expected) << c.name;
    }
}

TEST_F(DeviceState, WithoutASubtreeNameTheKeyHeldBeforeIsUsed)
{
    PutNumber(Stored().Get(), L"PCFAX_SEND_OPERATIONAL", 1);
    ReadDeviceState(record(), printer.Handle());
    const HKEY held = record().hBidiInfoKey;
    PutNumber(Stored().Get(), L"FAX_NOTIFICATION_AVAILABLE", 1);
    const TestPrinter unnamed(TestPrinter::Subtree::Unnamed);
    ReadDeviceState(record(), unnamed.Handle());
    EXPECT_EQ(record().hBidiInfoKey, held);
    EXPECT_EQ(record().NotificationAvailable, 1u);
}

TEST_F(DeviceState, WhatCannotBeReadIsOffAndIsTold)
{
    const auto isRead = [&] { return ReadDeviceState(record(), printer.Handle()); };
    EXPECT_TRUE(isRead()); // there is none
    const UniqueKey key = Stored();
    EXPECT_TRUE(isRead()); // there is nothing in it
    for (const DeviceNumber& number : kDeviceNumbers)
        PutNumber(key.Get(), number.name, 1);
    EXPECT_TRUE(isRead());
    {
        FailingCalls<decltype(RegQueryValueExW), struct ReadNumber> reads(nullptr, "RegQueryValueExW",
                                                                          ERROR_ACCESS_DENIED);
        long read = 0;
        for (const DeviceNumber& number : kDeviceNumbers) {
            reads.FailOnly(++read);
            EXPECT_FALSE(isRead()) << number.name;
            EXPECT_EQ(record().*number.field, 0u) << number.name;
        }
    }
    {
        FailingCalls<decltype(RegOpenKeyExW), struct OpenState> opens(nullptr, "RegOpenKeyExW", ERROR_ACCESS_DENIED);
        opens.FailOnly(1);
        EXPECT_FALSE(isRead());
        EXPECT_EQ(record().EmailServiceOperational, 0u);
    }
    PutText(key.Get(), L"FAX_NOTIFICATION_AVAILABLE", L"on"); // no number, and longer than one
    EXPECT_TRUE(isRead());
    EXPECT_FALSE(ReadDeviceState(record(), TestPrinter(TestPrinter::Subtree::Unnamed).Handle()));
}

TEST_F(CoverPageLock, IsUnknownWithoutALock)
{
    printer.SetText(kCoverPageData, kPath, L"C:\\logo.bmp");
    ReadCoverPageLock(record());
    EXPECT_EQ(record().CoverPageLock, kCoverPageLockUnknown);
    EXPECT_EQ(record().DefaultOverlayPath, nullptr);
}

TEST_F(CoverPageLock, IsOnForAnyNonzeroLockWithAPath)
{
    printer.SetText(kCoverPageData, kPath, L"C:\\logo.bmp");
    printer.SetNumber(kCoverPageData, kLock, 2);
    ReadCoverPageLock(record());
    EXPECT_EQ(record().CoverPageLock, kCoverPageLocked);
    EXPECT_STREQ(record().DefaultOverlayPath, L"C:\\logo.bmp");
}

TEST_F(CoverPageLock, IsOffForALockOfZeroAndThePathIsStillGiven)
{
    printer.SetText(kCoverPageData, kPath, L"C:\\logo.bmp");
    printer.SetNumber(kCoverPageData, kLock, 0);
    ReadCoverPageLock(record());
    EXPECT_EQ(record().CoverPageLock, kCoverPageFree);
    EXPECT_STREQ(record().DefaultOverlayPath, L"C:\\logo.bmp");
}

TEST_F(CoverPageLock, IsUnknownWhenLockedToAnEmptyOrMissingOrTooLongPath)
{
    printer.SetNumber(kCoverPageData, kLock, 1);
    ReadCoverPageLock(record());
    EXPECT_EQ(record().CoverPageLock, kCoverPageLockUnknown);
    for (const std::wstring& path : {std::wstring(), std::wstring(400, L'p')}) {
        printer.SetText(kCoverPageData, kPath, path);
        record().CoverPageLock = 77;
        ReadCoverPageLock(record());
        EXPECT_EQ(record().CoverPageLock, kCoverPageLockUnknown) << path.size();
    }
}

TEST_F(CoverPageLock, APathOf260CharactersWithoutTerminatorIsReadWhole)
{
    const std::wstring path(260, L'p');
    printer.SetNumber(kCoverPageData, kLock, 1);
    printer.SetData(kCoverPageData, kPath, REG_BINARY, path.data(), 520);
    ReadCoverPageLock(record());
    EXPECT_EQ(std::wstring(record().DefaultOverlayPath), path);
}

TEST(SpoolerThunkHost, IsRecognisedByItsFileName)
{
    EXPECT_TRUE(IsSpoolerThunkHostFile(L"C:\\windows\\splwow64.exe"));
    EXPECT_TRUE(IsSpoolerThunkHostFile(L"C:\\windows\\SPLWOW64.EXE"));
    EXPECT_TRUE(IsSpoolerThunkHostFile(L"splwow64.exe"));
    EXPECT_TRUE(IsSpoolerThunkHostFile(L"C:\\dir,splwow64.exe")); // a comma separates too
    EXPECT_FALSE(IsSpoolerThunkHostFile(L"C:\\splwow64.exe\\notepad.exe"));
    EXPECT_FALSE(IsSpoolerThunkHostFile(L"C:\\mysplwow64.exe"));
    EXPECT_FALSE(IsSpoolerThunkHostFile(L""));
}

TEST(SpoolerThunkHost, IsThisProcessOnlyUnderItsName)
{
    EXPECT_EQ(IsSpoolerThunkHost(), InPrintHost());
    if (!InPrintHost()) {
        EXPECT_EQ(RunInPrintHost("SpoolerThunkHost.IsThisProcessOnlyUnderItsName"), 0u);
    }
}

// Kept: only there do 32-bit programs print through another one.
TEST(SpoolerThunkHost, IsNoneOnOtherProcessors)
{
    const auto isNone = [](const std::string& what) { EXPECT_EQ(IsSpoolerThunkHost(), InPrintHost()) << what; };
    WhileEachFails<decltype(GetProcAddress)>("GetProcAddress", nullptr, isNone); // then another function is asked
    const PatchedFunction native(
        L"kernel32.dll", "GetNativeSystemInfo",
        +[](SYSTEM_INFO* info) { info->wProcessorArchitecture = PROCESSOR_ARCHITECTURE_INTEL; });
    EXPECT_FALSE(IsSpoolerThunkHost());
    if (!InPrintHost()) {
        EXPECT_EQ(RunInPrintHost("SpoolerThunkHost.IsNoneOnOtherProcessors"), 0u);
    }
}

} // namespace
} // namespace qx
