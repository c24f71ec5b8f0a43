// The per-user registry subtree of a printer, and the four ways to reach a value in it.
#pragma once

#include <optional>
#include <qxfax/send_fax.h>
#include <string>
#include <windows.h>

namespace qx {

// Keys of one printer's subtree; null when not open. Also the head of the driver's job record.
struct RegistryKeySet {
    HKEY hDefaultKey = nullptr;
    HKEY hAddressBookKey = nullptr;
    HKEY hJobDataKey = nullptr;
    HKEY hBidiInfoKey = nullptr;
    HKEY hMruListKey = nullptr;
    HANDLE PrinterHandle = nullptr; // not owned
};

RegistryKeySet& KeySetOf(FaxJobData& record) noexcept;

// The name that the printer's data gives to the user's subtree, at most 259 units; none when it cannot be read.
std::optional<std::wstring> RestrictedUserGuid(HANDLE printer);

// Opens, creating what is missing, the four settings keys of the set's printer. Without a subtree name, or on a
// failure, what could not be opened stays as it was, and later reads find nothing.
void OpenKeys(RegistryKeySet& set);
// Opens the key that the device-status software keeps for the set's printer, if there is one; the one held before is
// closed. Without a subtree name the one held before stays.
void OpenDeviceStateKey(RegistryKeySet& set);
// Closes the five keys and leaves them null.
void CloseKeys(RegistryKeySet& set) noexcept;

// The helpers answer whether they succeeded; a failed read leaves out alone.

// out receives the whole stored value and ten terminators behind it: a value of several strings can be walked, and
// one that was stored without a terminator ends all the same. Use out.c_str() for the first string.
bool ReadString(HKEY key, const wchar_t* name, std::wstring& out);
// Any value of at most four bytes; its type is not checked.
bool ReadDword(HKEY key, const wchar_t* name, DWORD& out) noexcept;
// REG_...; REG_NONE when there is no such value.
DWORD ValueType(HKEY key, const wchar_t* name) noexcept;
// type is REG_SZ or REG_MULTI_SZ (text is then a list that ends with an empty string). Any other type writes nothing
// and answers true.
bool WriteString(HKEY key, const wchar_t* name, const wchar_t* text, DWORD type) noexcept;
bool WriteDword(HKEY key, const wchar_t* name, DWORD value) noexcept;

} // namespace qx
