#include "base/printer.h"

#include "support/server_printer.h"
#include "support/test_printer.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using test::TestPrinter;

constexpr wchar_t kName[] = L"HelpCabName";

TEST(PrinterText, EndsAtItsTerminatorOrWithItsData)
{
    TestPrinter printer;
    printer.SetText(kDriverData, kName, L"help.cab");
    EXPECT_EQ(ReadPrinterText(printer.Handle(), kDriverData, kName), L"help.cab");
    printer.SetData(kDriverData, kName, REG_SZ, L"help.cab", 8); // bytes
    EXPECT_EQ(ReadPrinterText(printer.Handle(), kDriverData, kName), L"help");
    printer.SetData(kDriverData, kName, REG_BINARY, L"help.cab", 7); // the half of a unit is padded
    EXPECT_EQ(ReadPrinterText(printer.Handle(), kDriverData, kName), L"help");
    printer.SetText(kDriverData, kName, L"");
    EXPECT_EQ(ReadPrinterText(printer.Handle(), kDriverData, kName), L"");
}

TEST(PrinterText, IsNoneWhenItIsMissingOrTooLong)
{
    TestPrinter printer;
    EXPECT_EQ(ReadPrinterText(printer.Handle(), kDriverData, kName), std::nullopt);
    EXPECT_EQ(ReadPrinterText(nullptr, kDriverData, kName), std::nullopt);
    const std::wstring text(300, L'x');
    printer.SetText(kDriverData, kName, text);
    EXPECT_EQ(ReadPrinterText(printer.Handle(), kDriverData, kName, 300), std::nullopt); // and its terminator
    EXPECT_EQ(ReadPrinterText(printer.Handle(), kDriverData, kName, 301), text);
    EXPECT_EQ(ReadPrinterText(printer.Handle(), kDriverData, kName), text);
}

TEST(PrinterNumber, LeavesOutAloneWhenItCannotBeRead)
{
    const TestPrinter printer;
    DWORD number = 7;
    EXPECT_EQ(ReadPrinterNumber(printer.Handle(), kPresetData, L"None", number), ERROR_FILE_NOT_FOUND);
    EXPECT_NE(ReadPrinterNumber(nullptr, kPresetData, L"None", number), ERROR_SUCCESS);
    EXPECT_EQ(number, 7u);
}

TEST(PrinterDriver, NamesFilesBesideItsOwn)
{
    const TestPrinter printer;
    const PrinterDriver driver(printer.Handle());
    ASSERT_TRUE(driver);
    EXPECT_TRUE(driver.FileBeside(L"QXTEXT64.DLL").ends_with(L"\\QXTEXT64.DLL"));
    const PrinterDriver none(nullptr);
    EXPECT_FALSE(none);
    EXPECT_EQ(none.FileBeside(L"QXTEXT64.DLL"), L"");
    EXPECT_TRUE(none.DependentFiles().empty());
}

TEST(LocalPrinter, IsOneThatIsInstalledHere)
{
    const TestPrinter printer;
    EXPECT_TRUE(IsLocalPrinter(printer.Handle()));
}

TEST(LocalPrinter, IsNoConnectionToAServersPrinter)
{
    const TestPrinter printer;
    const test::PrintersBehindServer server(GetModuleHandleW(nullptr));
    EXPECT_FALSE(IsLocalPrinter(printer.Handle()));
}

TEST(LocalPrinter, IsNoneThatTheSpoolerDoesNotKnow)
{
    EXPECT_FALSE(IsLocalPrinter(nullptr));
}

} // namespace
} // namespace qx
