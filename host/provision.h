// Installing a driver and a printer as the module meets them, and taking it all back.
//
// Everything goes through the spooler's own functions, so it is the same on Windows and under Wine. Needs the right to
// install printers. All functions throw std::runtime_error (UTF-8) when something fails.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>
#include <windows.h>

namespace qx::host {

// A REG_DWORD or a REG_SZ.
struct RegistryValue {
    std::wstring name;
    std::variant<DWORD, std::wstring> value;
};

// What the device-status software reports of a device that can do everything and demands nothing.
std::vector<RegistryValue> WillingDevice();

struct PrinterSetup {
    std::wstring printer = L"QX MFP Fax";
    std::wstring driver = L"QX MFP Fax Driver";

    // Where the built module lies; its files are copied into the driver folder.
    std::filesystem::path moduleFolder;
    bool textLibrary = true; // false: takes it out of the driver folder; fails when another driver has it there
    std::filesystem::path textLibraryFile; // instead of the one in the module's folder
    bool help = true;                      // false: no cabinet, no help names, no dependent help file

    // Printer data. Without a value none is set.
    std::optional<std::wstring> guid = L"{3C0D5B1E-5B0A-4E5B-9C55-0D2C1B9E7A10}";
    std::optional<std::wstring> spoolerName; // "DsSpooler" "PrinterName"; the printer's own name unless given
    std::optional<DWORD> version;            // of the phone book; missing before the first session
    std::optional<std::wstring> helpCabinet = L"QXFAXHLP.CAB";
    std::optional<std::wstring> helpFile = L"QXZH_XX_" QX_HELP_ENDING L".CHM";
    std::optional<DWORD> coverPageLock = 0;
    std::optional<std::wstring> coverPagePath;

    std::vector<RegistryValue> device = WillingDevice(); // of the current user; written only with a GUID
    void SetDevice(std::wstring name, std::variant<DWORD, std::wstring> value); // adds it, or replaces its value
};

// Installs the driver (unless it is there), copies the module's files, adds the printer and sets its data and the
// device state. A printer of that name is set up anew.
void Provision(const PrinterSetup& setup);

// Removes the printer, the current user's device state, and, with the last printer of its driver, the driver and those
// of its files that no other driver has. The user's own settings and phone book stay.
void Unprovision(const std::wstring& printer);

// Removes the printer alone. Answers whether there was one of that name.
bool RemovePrinter(const std::wstring& printer);

// Writes a value below HKEY_CURRENT_USER, creating the key when needed.
void SetUserValue(const std::wstring& key, const RegistryValue& value);

// Removes all that the current user has in the registry for the GUID, settings included.
void RemoveUserSettings(const std::wstring& guid);

// HKEY_CURRENT_USER's key of the GUID.
std::wstring UserKey(const std::wstring& guid);

// The folder where the spooler keeps the files of 64-bit drivers.
std::filesystem::path DriverFolder();

} // namespace qx::host
