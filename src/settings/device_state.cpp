#include "settings/device_state.h"

#include "base/limits.h"
#include "base/module.h"
#include "base/number_text.h"
#include "base/printer.h"
#include "base/text.h"
#include "base/trace.h"
#include "record/fax_job_data.h"
#include "settings/key_set.h"
#include "settings/names.h"
#include "settings/registry.h"

#include <algorithm>
#include <cwchar>
#include <string>

namespace qx {

namespace {

// Flags become 0 or 1; the others keep their value.
enum class Meaning { Flag, Value };

struct DeviceNumber {
    const wchar_t* name;
    DWORD FaxJobData::* field;
    Meaning meaning;
};

// In the order in which they are read. The odd spelling of the last is the device-status software's.
constexpr DeviceNumber kDeviceNumbers[] = {
    {L"PCFAX_SEND_OPERATIONAL", &FaxJobData::PcFaxSendOperational, Meaning::Flag},
    {L"FAX_NOTIFICATION_AVAILABLE", &FaxJobData::NotificationAvailable, Meaning::Flag},
    {L"FAX_BILLING_CODE_ENABLED", &FaxJobData::BillingCodeEnabled, Meaning::Flag},
    {L"FAX_BILLING_CODE_MINLENGTH", &FaxJobData::BillingCodeMinLength, Meaning::Value},
    {L"EMAIL-SERVICE-OPERATIONAL", &FaxJobData::EmailServiceOperational, Meaning::Value},
};

// Of type REG_DWORD only; 0 for everything else.
DWORD DeviceValue(HKEY key, const wchar_t* name) noexcept
{
    DWORD value = 0;
    DWORD type = REG_NONE;
    return ReadDword(key, name, value, &type) && type == REG_DWORD ? value : 0;
}

void ReadBillingCode(FaxJobData& record)
{
    if (ValueType(record.hBidiInfoKey, kBillingCodeValue) != REG_SZ)
        return;
    std::wstring stored;
    ReadString(record.hBidiInfoKey, kBillingCodeValue, stored);
    const std::wstring code = stored.c_str();
    if (std::ranges::all_of(code, AllowedInBillingCode))
        SetBillingCode(record, std::wstring(Cut(code, kBillingCodeLimit)).c_str());
}

// Without a bitmap there is nothing to lock the cover page to: the state is then unknown, whatever the lock says.
DWORD CoverPageLockOf(HANDLE printer, const std::wstring& overlayPath) noexcept
{
    DWORD lock = 0;
    if (ReadPrinterNumber(printer, kDriverData, kCoverPageLockValue, lock) != ERROR_SUCCESS || overlayPath.empty())
        return kCoverPageLockUnknown;
    return lock != 0 ? kCoverPageLocked : kCoverPageFree;
}

void TraceCoverPageLock(DWORD lock) noexcept
{
    switch (lock) {
    case kCoverPageFree:
        return Trace({L"GetPrinterDataExW  is passing and lock  is disabled "});
    case kCoverPageLocked:
        return Trace({L"GetPrinterDataExW  is passing and lock  is enabled "});
    default:
        return Trace({L"GetPrinterDataExW  is failing and lock  is unknown "});
    }
}

// GetNativeSystemInfo is looked up by name: a 32-bit program on the oldest systems finds only the other.
WORD NativeProcessorArchitecture() noexcept
{
    const auto getNative = SystemFunction<decltype(GetSystemInfo)>(L"kernel32", "GetNativeSystemInfo");
    SYSTEM_INFO info{};
    (getNative != nullptr ? getNative : GetSystemInfo)(&info);
    return info.wProcessorArchitecture;
}

} // namespace

void ReadDeviceState(FaxJobData& record, HANDLE printer)
{
    record.PrinterHandle = printer;
    OpenDeviceStateKey(KeySetOf(record));
    for (const DeviceNumber& number : kDeviceNumbers) {
        const DWORD value = DeviceValue(record.hBidiInfoKey, number.name);
        record.*number.field = number.meaning == Meaning::Flag ? value != 0 : value;
    }
    ReadBillingCode(record);
}

void ReadCoverPageLock(FaxJobData& record)
{
    const std::wstring path =
        ReadPrinterText(record.PrinterHandle, kDriverData, kCoverPagePathValue, kPrinterTextUnits).value_or(L"");
    record.CoverPageLock = CoverPageLockOf(record.PrinterHandle, path);
    if (record.CoverPageLock != kCoverPageLockUnknown)
        SetDefaultOverlayPath(record, path.c_str());
    TraceCoverPageLock(record.CoverPageLock);
}

std::vector<DeviceNumberName> DeviceNumberNames()
{
    std::vector<DeviceNumberName> names;
    for (const DeviceNumber& number : kDeviceNumbers)
        names.push_back({number.name, number.meaning == Meaning::Flag});
    return names;
}

bool IsSpoolerThunkHost()
{
    if (NativeProcessorArchitecture() != PROCESSOR_ARCHITECTURE_AMD64)
        return false;
    wchar_t executable[MAX_PATH] = L"";
    const DWORD units = GetModuleFileNameW(nullptr, executable, MAX_PATH);
    return IsSpoolerThunkHostFile({executable, units});
}

bool IsSpoolerThunkHostFile(std::wstring_view executable)
{
    const std::size_t separator = executable.find_last_of(L"\\,");
    const std::wstring name(separator == std::wstring_view::npos ? executable : executable.substr(separator + 1));
    return _wcsicmp(name.c_str(), L"splwow64.exe") == 0;
}

} // namespace qx
