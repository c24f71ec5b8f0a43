// What the device and the administrator allow, as left in the registry and in the printer's data by others.
#pragma once

#include <qxfax/send_fax.h>
#include <string_view>

namespace qx {

// CoverPageLock of the job record.
inline constexpr DWORD kCoverPageFree = 0;
inline constexpr DWORD kCoverPageLocked = 1;
inline constexpr DWORD kCoverPageLockUnknown = 2;

// Fills the record's printer handle and device flags. A flag that the device-status software has not left, or left in
// another type, is off, and so is one that cannot be read, or of which it is not known where to look: then the answer
// is false. The billing code does not count.
bool ReadDeviceState(FaxJobData& record, HANDLE printer);

// Fills CoverPageLock and, unless the lock is unknown, DefaultOverlayPath from the data of record.PrinterHandle.
void ReadCoverPageLock(FaxJobData& record);

// A number that the device-status software leaves.
struct DeviceNumber {
    const wchar_t* name;
    DWORD FaxJobData::* field;
    bool isFlag = false; // becomes 0 or 1; else the number itself counts
};

// In the order in which they are read. The odd spelling of the last is the device-status software's.
inline constexpr DeviceNumber kDeviceNumbers[] = {
    {L"PCFAX_SEND_OPERATIONAL", &FaxJobData::PcFaxSendOperational, true},
    {L"FAX_NOTIFICATION_AVAILABLE", &FaxJobData::NotificationAvailable, true},
    {L"FAX_BILLING_CODE_ENABLED", &FaxJobData::BillingCodeEnabled, true},
    {L"FAX_BILLING_CODE_MINLENGTH", &FaxJobData::BillingCodeMinLength},
    {L"EMAIL-SERVICE-OPERATIONAL", &FaxJobData::EmailServiceOperational},
};

// Whether this process is the spooler's host for 32-bit programs on a 64-bit system.
bool IsSpoolerThunkHost();

// The rule behind it: executable is the path of the process's file.
bool IsSpoolerThunkHostFile(std::wstring_view executable);

} // namespace qx
