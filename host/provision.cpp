#include "host/provision.h"

#include "base/no_copy.h"
#include "base/printer.h"
#include "base/unique.h"
#include "host/utf8.h"

#include <algorithm>
#include <set>
#include <span>
#include <stdexcept>

namespace qx::host {

namespace {

namespace fs = std::filesystem;

constexpr wchar_t kEnvironment[] = L"Windows x64";
constexpr wchar_t kDriver[] = L"QXFAXDRV.DLL";
constexpr wchar_t kModule[] = L"qxfaxui.dll";
constexpr wchar_t kTextLibrary[] = L"QXTEXT64.DLL";
// The module takes the names of its help files from this one's.
constexpr wchar_t kHelp[] = L"QXZHL" QX_HELP_ENDING L".CHM";
constexpr wchar_t kSettingsRoot[] = L"Software\\Quillmarsh\\";
constexpr wchar_t kDeviceKey[] = L"QXBIDIInfo";

[[noreturn]] void Throw(const std::string& what, DWORD error)
{
    throw std::runtime_error(SystemError(what, error));
}

// The spooler's functions take texts that they do not change as changeable ones.
wchar_t* Changeable(const std::wstring& text)
{
    return const_cast<wchar_t*>(text.c_str());
}

UniquePrinter OpenPrinterForAll(const std::wstring& name)
{
    PRINTER_DEFAULTSW defaults{};
    defaults.DesiredAccess = PRINTER_ALL_ACCESS;
    UniquePrinter printer;
    OpenPrinterW(Changeable(name), printer.Receive(), &defaults);
    return printer;
}

// ---- the driver ----------------------------------------------------------------------------------------------------

// The files of the driver that were built, the driver itself first.
fs::path SourceOf(const PrinterSetup& setup, const std::wstring& file)
{
    return file == kTextLibrary && !setup.textLibraryFile.empty() ? setup.textLibraryFile : setup.moduleFolder / file;
}

std::vector<std::wstring> DriverFiles(const PrinterSetup& setup)
{
    for (const wchar_t* file : {kDriver, kModule}) {
        if (!fs::exists(setup.moduleFolder / file))
            throw std::runtime_error("module not found: there is no " + Utf8((setup.moduleFolder / file).native()));
    }
    std::vector<std::wstring> files{kDriver, kModule};
    if (setup.textLibrary)
        files.emplace_back(kTextLibrary);
    if (setup.help)
        files.insert(files.end(), {setup.helpCabinet.value_or(kHelp), kHelp});
    std::erase_if(files, [&](const std::wstring& file) { return !fs::exists(SourceOf(setup, file)); });
    return files;
}

bool SameName(const std::wstring& a, const wchar_t* b)
{
    return CompareStringOrdinal(a.c_str(), -1, b, -1, TRUE) == CSTR_EQUAL;
}

// Drivers write the same file in different ways.
struct ByPath {
    bool operator()(const fs::path& a, const fs::path& b) const
    {
        return CompareStringOrdinal(a.lexically_normal().c_str(), -1, b.lexically_normal().c_str(), -1, TRUE) ==
               CSTR_LESS_THAN;
    }
};
using Files = std::set<fs::path, ByPath>;

// The files that the spooler has for the drivers whose name is wanted; nothing when it does not say.
template <class Wanted> std::optional<Files> FilesOfDrivers(Wanted wanted)
{
    DWORD count = 0;
    const auto buffer = QuerySpooler<DRIVER_INFO_3W>([&](BYTE* out, DWORD bytes, DWORD* needed) {
        return EnumPrinterDriversW(nullptr, const_cast<wchar_t*>(kEnvironment), 3, out, bytes, needed, &count);
    });
    if (!buffer)
        return std::nullopt;
    Files files;
    for (const auto& info : std::span(reinterpret_cast<const DRIVER_INFO_3W*>(buffer->data()), count)) {
        if (!wanted(info.pName))
            continue;
        files.insert({info.pDriverPath, info.pConfigFile, info.pDataFile});
        for (const wchar_t* file = info.pDependentFiles; file != nullptr && *file != L'\0'; file += wcslen(file) + 1)
            files.insert(file);
    }
    return files;
}

// The files that the spooler has for the driver; none when it is not installed.
Files InstalledFiles(const std::wstring& driver)
{
    return FilesOfDrivers([&](const wchar_t* name) { return SameName(driver, name); }).value_or(Files());
}

// A file that another driver may need stays, and so do all while nobody knows.
bool IsFileOfAnotherDriver(const std::wstring& driver, const fs::path& file)
{
    const auto others = FilesOfDrivers([&](const wchar_t* name) { return !SameName(driver, name); });
    return !others || others->contains(file);
}

bool IsUpToDate(const PrinterSetup& setup)
{
    Files wanted;
    for (const std::wstring& file : DriverFiles(setup)) {
        const fs::path source = SourceOf(setup, file), installed = DriverFolder() / file;
        if (!fs::exists(installed))
            return false;
        if (fs::file_size(source) != fs::file_size(installed) ||
            fs::last_write_time(source) > fs::last_write_time(installed))
            return false;
        wanted.insert(installed);
    }
    return std::ranges::equal(InstalledFiles(setup.driver), wanted,
                              [](const fs::path& a, const fs::path& b) { return !ByPath()(a, b) && !ByPath()(b, a); });
}

// A folder with exactly the files of the driver, for the spooler to copy from.
class Staging : NoCopy {
public:
    explicit Staging(const PrinterSetup& setup)
        : folder_(fs::temp_directory_path() / (L"qxfax-driver-" + std::to_wstring(GetCurrentProcessId())))
    {
        fs::create_directories(folder_);
        for (const std::wstring& file : DriverFiles(setup)) {
            fs::copy_file(SourceOf(setup, file), folder_ / file, fs::copy_options::overwrite_existing);
            files_.push_back((folder_ / file).native());
        }
    }
    ~Staging()
    {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    const std::vector<std::wstring>& Files() const { return files_; } // the driver first

private:
    fs::path folder_;
    std::vector<std::wstring> files_;
};

// Before anything is changed.
void CheckThatTheTextLibraryCanGo(const std::wstring& driver)
{
    const fs::path library = DriverFolder() / kTextLibrary;
    if (fs::exists(library) && IsFileOfAnotherDriver(driver, library))
        throw std::runtime_error("cannot leave the text library out: another driver has it in the same folder");
}

void InstallDriver(const PrinterSetup& setup)
{
    if (!setup.textLibrary)
        fs::remove(DriverFolder() / kTextLibrary);
    if (IsUpToDate(setup))
        return;
    const Staging staging(setup);
    std::wstring dependents; // a list of terminated texts
    for (std::size_t i = 1; i < staging.Files().size(); ++i)
        dependents += staging.Files()[i] + L'\0';

    DRIVER_INFO_3W driver{};
    driver.cVersion = 3;
    driver.pName = Changeable(setup.driver);
    driver.pEnvironment = const_cast<wchar_t*>(kEnvironment);
    driver.pDriverPath = driver.pDataFile = driver.pConfigFile = Changeable(staging.Files().front());
    driver.pDependentFiles = Changeable(dependents);
    if (!AddPrinterDriverExW(nullptr, 3, reinterpret_cast<BYTE*>(&driver),
                             APD_COPY_ALL_FILES | APD_COPY_FROM_DIRECTORY))
        Throw("cannot install the driver '" + Utf8(setup.driver) + "'", GetLastError());
}

bool IsDriverUsed(const std::wstring& driver)
{
    DWORD count = 0;
    const auto buffer = QuerySpooler<PRINTER_INFO_2W>([&](BYTE* out, DWORD bytes, DWORD* needed) {
        return EnumPrintersW(PRINTER_ENUM_LOCAL, nullptr, 2, out, bytes, needed, &count);
    });
    if (!buffer)
        return false;
    const std::span printers(reinterpret_cast<const PRINTER_INFO_2W*>(buffer->data()), count);
    return std::ranges::any_of(printers, [&](const PRINTER_INFO_2W& printer) { return driver == printer.pDriverName; });
}

void RemoveDriver(const std::wstring& driver)
{
    const Files files = InstalledFiles(driver);
    const auto remove = [&](DWORD flags) {
        return DeletePrinterDriverExW(nullptr, const_cast<wchar_t*>(kEnvironment), Changeable(driver), flags, 3);
    };
    // Not every spooler removes the files itself.
    if (!remove(DPD_DELETE_UNUSED_FILES) && !remove(0))
        Throw("cannot remove the driver '" + Utf8(driver) + "'", GetLastError());
    for (const fs::path& file : files) {
        if (IsFileOfAnotherDriver(driver, file))
            continue;
        std::error_code ignored; // a file in use stays
        fs::remove(file, ignored);
    }
}

// ---- the printer ---------------------------------------------------------------------------------------------------

UniquePrinter MakePrinter(const PrinterSetup& setup)
{
    PRINTER_INFO_2W info{};
    info.pPrinterName = Changeable(setup.printer);
    info.pDriverName = Changeable(setup.driver);
    info.pPortName = const_cast<wchar_t*>(L"LPT1:");
    info.pPrintProcessor = const_cast<wchar_t*>(L"WinPrint");
    info.pDatatype = const_cast<wchar_t*>(L"RAW");
    UniquePrinter printer(AddPrinterW(nullptr, 2, reinterpret_cast<BYTE*>(&info)));
    if (!printer)
        Throw("cannot add the printer '" + Utf8(setup.printer) + "'", GetLastError());
    return printer;
}

void Check(DWORD error, const wchar_t* value)
{
    if (error != ERROR_SUCCESS)
        Throw("cannot set the printer data '" + Utf8(value) + "'", error);
}

void SetData(HANDLE printer, const wchar_t* key, const wchar_t* value, const std::wstring& text)
{
    const auto bytes = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    auto* const data = reinterpret_cast<BYTE*>(Changeable(text));
    Check(key == nullptr ? SetPrinterDataW(printer, const_cast<wchar_t*>(value), REG_SZ, data, bytes)
                         : SetPrinterDataExW(printer, key, value, REG_SZ, data, bytes),
          value);
}

void SetData(HANDLE printer, const wchar_t* key, const wchar_t* value, DWORD number)
{
    Check(SetPrinterDataExW(printer, key, value, REG_DWORD, reinterpret_cast<BYTE*>(&number), sizeof number), value);
}

void SetPrinterValues(HANDLE printer, const PrinterSetup& setup)
{
    if (setup.guid)
        SetData(printer, L"QXPresetRoot", L"QXRestrictedUserGuid", *setup.guid);
    if (setup.version)
        SetData(printer, L"QXPresetRoot", L"Version", *setup.version);
    SetData(printer, L"DsSpooler", L"PrinterName", setup.spoolerName.value_or(setup.printer));
    if (setup.help && setup.helpCabinet)
        SetData(printer, nullptr, L"HelpCabName", *setup.helpCabinet);
    if (setup.help && setup.helpFile)
        SetData(printer, nullptr, L"GPDHelpFileName", *setup.helpFile);
    if (setup.coverPageLock)
        SetData(printer, L"PrinterDriverData", L"FaxCPDefaultOverlayBitmapLock", *setup.coverPageLock);
    if (setup.coverPagePath)
        SetData(printer, L"PrinterDriverData", L"FaxCPDefaultOverlayBitmapPath", *setup.coverPagePath);
}

// ---- the user ------------------------------------------------------------------------------------------------------

DWORD WriteValue(HKEY key, const RegistryValue& value)
{
    const auto write = [&](DWORD type, const void* data, std::size_t bytes) {
        return static_cast<DWORD>(RegSetValueExW(key, value.name.c_str(), 0, type, static_cast<const BYTE*>(data),
                                                 static_cast<DWORD>(bytes)));
    };
    if (const auto* const number = std::get_if<DWORD>(&value.value))
        return write(REG_DWORD, number, sizeof *number);
    const auto& text = std::get<std::wstring>(value.value);
    return write(REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

std::optional<std::wstring> GuidOf(const std::wstring& printerName)
{
    const UniquePrinter printer = OpenPrinterForAll(printerName);
    wchar_t guid[260] = L"";
    DWORD type = 0, bytes = 0;
    if (!printer ||
        GetPrinterDataExW(printer.Get(), L"QXPresetRoot", L"QXRestrictedUserGuid", &type, reinterpret_cast<BYTE*>(guid),
                          sizeof guid - sizeof(wchar_t), &bytes) != ERROR_SUCCESS)
        return std::nullopt;
    return guid;
}

std::wstring DriverOf(const std::wstring& printerName)
{
    const UniquePrinter printer = OpenPrinterForAll(printerName);
    const auto buffer = QuerySpooler<PRINTER_INFO_2W>(
        [&](BYTE* out, DWORD bytes, DWORD* needed) { return GetPrinterW(printer.Get(), 2, out, bytes, needed); });
    return buffer ? reinterpret_cast<const PRINTER_INFO_2W*>(buffer->data())->pDriverName : L"";
}

} // namespace

std::vector<RegistryValue> WillingDevice()
{
    return {{L"PCFAX_SEND_OPERATIONAL", 1u},
            {L"FAX_NOTIFICATION_AVAILABLE", 1u},
            {L"FAX_BILLING_CODE_ENABLED", 0u},
            {L"FAX_BILLING_CODE_MINLENGTH", 0u},
            {L"EMAIL-SERVICE-OPERATIONAL", 1u}};
}

std::wstring UserKey(const std::wstring& guid)
{
    return kSettingsRoot + guid;
}

fs::path DriverFolder()
{
    wchar_t folder[MAX_PATH] = L"";
    DWORD bytes = 0;
    if (!GetPrinterDriverDirectoryW(nullptr, const_cast<wchar_t*>(kEnvironment), 1, reinterpret_cast<BYTE*>(folder),
                                    sizeof folder, &bytes))
        Throw("the spooler names no driver folder", GetLastError());
    return fs::path(folder) / L"3";
}

void PrinterSetup::SetDevice(std::wstring name, std::variant<DWORD, std::wstring> value)
{
    const auto known = std::ranges::find(device, name, &RegistryValue::name);
    if (known != device.end())
        known->value = std::move(value);
    else
        device.push_back({std::move(name), std::move(value)});
}

void SetUserValue(const std::wstring& key, const RegistryValue& value)
{
    UniqueKey opened;
    DWORD error = static_cast<DWORD>(RegCreateKeyExW(HKEY_CURRENT_USER, key.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                                                     nullptr, opened.Receive(), nullptr));
    if (error == ERROR_SUCCESS)
        error = WriteValue(opened.Get(), value);
    if (error != ERROR_SUCCESS)
        Throw("cannot write the registry value '" + Utf8(value.name) + "'", error);
}

bool RemovePrinter(const std::wstring& name)
{
    const UniquePrinter printer = OpenPrinterForAll(name);
    if (!printer)
        return false;
    if (!DeletePrinter(printer.Get()))
        Throw("cannot remove the printer '" + Utf8(name) + "'", GetLastError());
    return true;
}

void Provision(const PrinterSetup& setup)
{
    if (!setup.textLibrary)
        CheckThatTheTextLibraryCanGo(setup.driver);
    RemovePrinter(setup.printer);
    InstallDriver(setup);
    const UniquePrinter printer = MakePrinter(setup);
    SetPrinterValues(printer.Get(), setup);
    for (auto value = setup.device.begin(); setup.guid && value != setup.device.end(); ++value)
        SetUserValue(UserKey(*setup.guid) + L'\\' + kDeviceKey, *value);
}

void Unprovision(const std::wstring& printer)
{
    const std::optional<std::wstring> guid = GuidOf(printer);
    const std::wstring driver = DriverOf(printer);
    if (!RemovePrinter(printer))
        throw std::runtime_error("no such printer: '" + Utf8(printer) + "'");
    if (guid)
        RegDeleteTreeW(HKEY_CURRENT_USER, (UserKey(*guid) + L'\\' + kDeviceKey).c_str());
    if (!driver.empty() && !IsDriverUsed(driver))
        RemoveDriver(driver);
}

void RemoveUserSettings(const std::wstring& guid)
{
    RegDeleteTreeW(HKEY_CURRENT_USER, UserKey(guid).c_str());
}

} // namespace qx::host
