#include "base/printer.h"

#include "support/patched_function.h"
#include "support/server_printer.h"
#include "support/test_printer.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <gtest/gtest.h>
#include <vector>

namespace qx {
namespace {

using test::PatchedFunction;
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

// ---- how often the spooler is asked: with a server's printer each time is a round over the network

PatchedFunction* g_patch = nullptr;
int g_calls = 0;

DWORD WINAPI CountedGetPrinterDataEx(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD* type, BYTE* data,
                                     DWORD bytes, DWORD* needed)
{
    ++g_calls;
    return g_patch->WithOriginal([&] { return GetPrinterDataExW(printer, key, name, type, data, bytes, needed); });
}

BOOL WINAPI CountedGetPrinterDriver(HANDLE printer, wchar_t* environment, DWORD level, BYTE* data, DWORD bytes,
                                    DWORD* needed)
{
    ++g_calls;
    return g_patch->WithOriginal([&] { return GetPrinterDriverW(printer, environment, level, data, bytes, needed); });
}

template <class Function, class Call> int CallsOf(const char* name, Function* counted, Call call)
{
    PatchedFunction patch(L"winspool.drv", name, counted);
    g_patch = &patch;
    g_calls = 0;
    call();
    return g_calls;
}

TEST(PrinterText, OfUsualLengthIsAskedForOnce)
{
    TestPrinter printer;
    const auto calls = [&](const std::wstring& text) {
        printer.SetText(kDriverData, kName, text);
        return CallsOf("GetPrinterDataExW", CountedGetPrinterDataEx,
                       [&] { EXPECT_EQ(ReadPrinterText(printer.Handle(), kDriverData, kName), text); });
    };
    EXPECT_EQ(calls(L"help.cab"), 1);
    EXPECT_EQ(calls(std::wstring(259, L'x')), 1);
    EXPECT_EQ(calls(std::wstring(260, L'x')), 2); // and its terminator
}

TEST(PrinterDriver, IsAskedForOnce)
{
    const TestPrinter printer;
    EXPECT_EQ(CallsOf("GetPrinterDriverW", CountedGetPrinterDriver,
                      [&] { EXPECT_NE(PrinterDriver(printer.Handle()).FileBeside(L""), L""); }),
              1);
}

TEST(Spooler, IsAskedAgainForAnAnswerThatIsLargerThanUsual)
{
    std::vector<DWORD> asked;
    const auto answer = QuerySpooler<DWORD>([&](BYTE* buffer, DWORD bytes, DWORD* needed) {
        asked.push_back(bytes);
        *needed = 10000;
        if (bytes < *needed)
            return FALSE;
        buffer[9999] = 7;
        return TRUE;
    });
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->size(), 10000u);
    EXPECT_EQ(answer->back(), 7);
    EXPECT_EQ(asked, (std::vector<DWORD>{4096, 10000}));
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
    EXPECT_TRUE(driver.FileBeside(L"QXTEXT64.DLL").ends_with(L"\\QXTEXT64.DLL"));
    const PrinterDriver none(nullptr);
    EXPECT_EQ(none.FileBeside(L"QXTEXT64.DLL"), L"");
    EXPECT_TRUE(none.DependentFiles().empty());
}

const wchar_t* g_driverPath = L"";

BOOL WINAPI DriverAtPath(HANDLE, wchar_t*, DWORD, BYTE* data, DWORD bytes, DWORD* needed)
{
    const std::size_t pathUnits = std::wcslen(g_driverPath) + 1;
    *needed = static_cast<DWORD>(sizeof(DRIVER_INFO_3W) + pathUnits * sizeof(wchar_t));
    if (bytes < *needed) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    auto* const path = reinterpret_cast<wchar_t*>(data + sizeof(DRIVER_INFO_3W));
    std::copy_n(g_driverPath, pathUnits, path);
    DRIVER_INFO_3W information{};
    information.pDriverPath = path;
    std::memcpy(data, &information, sizeof information);
    return TRUE;
}

TEST(PrinterDriver, NamesNoFileBesideOneWithoutAFolder)
{
    const TestPrinter printer;
    const PatchedFunction patch(L"winspool.drv", "GetPrinterDriverW", DriverAtPath);
    g_driverPath = L"C:\\dir\\drv.dll";
    EXPECT_EQ(PrinterDriver(printer.Handle()).FileBeside(L"QXTEXT64.DLL"), L"C:\\dir\\QXTEXT64.DLL");
    g_driverPath = L"drv.dll";
    EXPECT_EQ(PrinterDriver(printer.Handle()).FileBeside(L"QXTEXT64.DLL"), L"");
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
