// What the device and the administrator allow, as left in the registry and in the printer's data by others.
#pragma once

#include <qxfax/send_fax.h>
#include <string_view>
#include <vector>

namespace qx {

// CoverPageLock of the job record.
inline constexpr DWORD kCoverPageFree = 0;
inline constexpr DWORD kCoverPageLocked = 1;
inline constexpr DWORD kCoverPageLockUnknown = 2;

// Fills the record's printer handle and device flags. A flag that the device-status software has not left, or left in
// another type, is off.
void ReadDeviceState(FaxJobData& record, HANDLE printer);

// Fills CoverPageLock and, unless the lock is unknown, DefaultOverlayPath from the data of record.PrinterHandle.
void ReadCoverPageLock(FaxJobData& record);

// The numbers that the device-status software leaves, in the order in which they are read.
struct DeviceNumberName {
    const wchar_t* name;
    bool isFlag; // else the number itself counts
};
std::vector<DeviceNumberName> DeviceNumberNames();

// Whether this process is the spooler's host for 32-bit programs on a 64-bit system.
bool IsSpoolerThunkHost();

// The rule behind it: executable is the path of the process's file.
bool IsSpoolerThunkHostFile(std::wstring_view executable);

} // namespace qx
