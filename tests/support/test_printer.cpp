#include "test_printer.h"

#include <stdexcept>

namespace qx::test {

namespace {

constexpr wchar_t kDriverName[] = L"QX Test Fax Driver";
constexpr wchar_t kSubtreeKey[] = L"QXPresetRoot";
constexpr wchar_t kSubtreeName[] = L"QXRestrictedUserGuid";

[[noreturn]] void Fail(const char* what)
{
    throw std::runtime_error(std::string(what) + " failed, error " + std::to_string(GetLastError()));
}

// Program, process and number in the process: tests of several programs share one spooler.
std::wstring UniqueName()
{
    static int number = 0;
    return std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(GetTickCount64()) + L"-" +
           std::to_wstring(++number);
}

void InstallDriver()
{
    wchar_t file[] = L"qxtest.dll"; // never loaded, so it need not exist
    DRIVER_INFO_3W driver{};
    driver.cVersion = 3;
    driver.pName = const_cast<wchar_t*>(kDriverName);
    driver.pEnvironment = const_cast<wchar_t*>(L"Windows x64");
    driver.pDriverPath = driver.pDataFile = driver.pConfigFile = file;
    if (!AddPrinterDriverW(nullptr, 3, reinterpret_cast<BYTE*>(&driver)))
        Fail("AddPrinterDriver");
}

void AddTestPrinter(const std::wstring& name)
{
    PRINTER_INFO_2W info{};
    info.pPrinterName = const_cast<wchar_t*>(name.c_str());
    info.pPortName = const_cast<wchar_t*>(L"LPT1:");
    info.pDriverName = const_cast<wchar_t*>(kDriverName);
    info.pPrintProcessor = const_cast<wchar_t*>(L"WinPrint");
    info.pDatatype = const_cast<wchar_t*>(L"RAW");
    const UniquePrinter added(AddPrinterW(nullptr, 2, reinterpret_cast<BYTE*>(&info)));
    if (!added)
        Fail("AddPrinter");
}

HANDLE OpenWithAllAccess(const std::wstring& name)
{
    PRINTER_DEFAULTSW access{};
    access.DesiredAccess = PRINTER_ALL_ACCESS;
    HANDLE printer = nullptr;
    if (!OpenPrinterW(const_cast<wchar_t*>(name.c_str()), &printer, &access))
        Fail("OpenPrinter");
    return printer;
}

} // namespace

TestPrinter::TestPrinter(Subtree subtree)
    : name_(L"QX Test Fax " + UniqueName()), guid_(L"{test-" + UniqueName() + L"}")
{
    InstallDriver();
    AddTestPrinter(name_);
    printer_.Reset(OpenWithAllAccess(name_));
    if (subtree == Subtree::Named)
        SetText(kSubtreeKey, kSubtreeName, guid_);
}

TestPrinter::~TestPrinter()
{
    DeletePrinter(printer_.Get());
    RegDeleteTreeW(HKEY_CURRENT_USER, SubtreePath().c_str());
}

void TestPrinter::SetData(const wchar_t* key, const wchar_t* name, DWORD type, const void* data, DWORD bytes) const
{
    const DWORD error =
        SetPrinterDataExW(Handle(), key, name, type, static_cast<BYTE*>(const_cast<void*>(data)), bytes);
    SetLastError(error);
    if (error != ERROR_SUCCESS)
        Fail("SetPrinterDataEx");
}

void TestPrinter::SetText(const wchar_t* key, const wchar_t* name, const std::wstring& text) const
{
    SetData(key, name, REG_SZ, text.c_str(), static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

void TestPrinter::SetNumber(const wchar_t* key, const wchar_t* name, DWORD number) const
{
    SetData(key, name, REG_DWORD, &number, sizeof number);
}

UniqueKey TestPrinter::Key(const std::wstring& below) const
{
    HKEY key = nullptr;
    const std::wstring path = SubtreePath() + L"\\" + below;
    const LSTATUS error = RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                          KEY_ALL_ACCESS, nullptr, &key, nullptr);
    if (error != ERROR_SUCCESS) {
        SetLastError(static_cast<DWORD>(error));
        Fail("RegCreateKeyEx");
    }
    return UniqueKey(key);
}

void PutBytes(HKEY key, const wchar_t* name, DWORD type, const void* data, std::size_t bytes)
{
    RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(bytes));
}

void PutText(HKEY key, const wchar_t* name, const std::wstring& text, DWORD type)
{
    PutBytes(key, name, type, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

void PutNumber(HKEY key, const wchar_t* name, DWORD number)
{
    PutBytes(key, name, REG_DWORD, &number, sizeof number);
}

StoredValue GetStored(HKEY key, const wchar_t* name)
{
    DWORD type = REG_NONE;
    DWORD bytes = 0;
    if (RegQueryValueExW(key, name, nullptr, &type, nullptr, &bytes) != ERROR_SUCCESS)
        return {};
    StoredValue value{type, std::string(bytes, '\0')};
    RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(value.bytes.data()), &bytes);
    return value;
}

StoredValue AsStored(const std::wstring& text)
{
    return {REG_SZ, std::string(reinterpret_cast<const char*>(text.c_str()), (text.size() + 1) * sizeof(wchar_t))};
}

StoredValue AsStored(DWORD number)
{
    return {REG_DWORD, std::string(reinterpret_cast<const char*>(&number), sizeof number)};
}

} // namespace qx::test
