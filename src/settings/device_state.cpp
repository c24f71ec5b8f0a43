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

// The value is 0 unless it is of type REG_DWORD.
LSTATUS QueryDeviceValue(HKEY key, const wchar_t* name, DWORD& value) noexcept
{
    DWORD type = REG_NONE;
    value = 0;
    const LSTATUS status = QueryDword(key, name, value, &type);
    if (type != REG_DWORD)
        value = 0;
    return status;
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
    if (ReadPrinterNumber(printer, kDriverData, kCoverPageLockValue, lock) != ERROR_SUCCESS || overlayPath.empty()) {
        Trace({L"GetPrinterDataExW  is failing and lock  is unknown "});
        return kCoverPageLockUnknown;
    }
    if (lock == 0) {
        Trace({L"GetPrinterDataExW  is passing and lock  is disabled "});
        return kCoverPageFree;
    }
    Trace({L"GetPrinterDataExW  is passing and lock  is enabled "});
    return kCoverPageLocked;
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

bool ReadDeviceState(FaxJobData& record, HANDLE printer)
{
    record.PrinterHandle = printer;
    bool isRead = OpenDeviceStateKey(KeySetOf(record));
    for (const DeviceNumber& number : kDeviceNumbers) {
        DWORD value = 0;
        const LSTATUS status = QueryDeviceValue(record.hBidiInfoKey, number.name, value);
        record.*number.field = number.isFlag ? value != 0 : value;
        isRead = isRead && (record.hBidiInfoKey == nullptr || IsAnswer(status));
    }
    ReadBillingCode(record);
    return isRead;
}

void ReadCoverPageLock(FaxJobData& record)
{
    const std::wstring path =
        ReadPrinterText(record.PrinterHandle, kDriverData, kCoverPagePathValue, kPrinterTextUnits).value_or(L"");
    record.CoverPageLock = CoverPageLockOf(record.PrinterHandle, path);
    if (record.CoverPageLock != kCoverPageLockUnknown)
        SetDefaultOverlayPath(record, path.c_str());
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
    const std::wstring name(executable.substr(executable.find_last_of(L"\\,") + 1)); // all of it without either
    return _wcsicmp(name.c_str(), L"splwow64.exe") == 0;
}

} // namespace qx
