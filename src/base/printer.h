// What the spooler knows about a printer and its driver. Of a printer that it does not know, null included, nothing is
// known.
#pragma once

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include <windows.h>
#include <winspool.h>

namespace qx {

// Calls one of the spooler's functions that fill a buffer: query(buffer, bytes, &needed). Each call may go to a server:
// there is a second one only when the answer is larger than usual. None when it fails.
template <class Info, class Query> std::optional<std::vector<BYTE>> QuerySpooler(Query query)
{
    constexpr std::size_t kUsual = 4096;
    std::vector<BYTE> buffer(std::max(sizeof(Info), kUsual));
    DWORD bytes = 0;
    if (query(buffer.data(), static_cast<DWORD>(buffer.size()), &bytes))
        return buffer;
    if (bytes <= buffer.size())
        return std::nullopt;
    buffer.resize(bytes);
    if (!query(buffer.data(), bytes, &bytes))
        return std::nullopt;
    return buffer;
}

// Keys of a printer's data.
inline constexpr wchar_t kDriverData[] = L"PrinterDriverData";
inline constexpr wchar_t kPresetData[] = L"QXPresetRoot";

// A text of the printer's data, also one that lacks its terminator; its type is not checked. None when it cannot be
// read, or is stored in more than units UTF-16 units.
std::optional<std::wstring> ReadPrinterText(HANDLE printer, const wchar_t* key, const wchar_t* name,
                                            std::size_t units = std::numeric_limits<DWORD>::max());
// A number of the printer's data: any value of at most four bytes. ERROR_SUCCESS, or why it cannot be read.
LSTATUS ReadPrinterNumber(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD& out) noexcept;

// A printer of this computer, that is one that no print server stands behind.
bool IsLocalPrinter(HANDLE printer);

// The driver information of level 3, with full paths. False when the spooler does not tell.
class PrinterDriver {
public:
    explicit PrinterDriver(HANDLE printer);

    // The path of a file beside the driver's; empty when it is not known where that lies.
    std::wstring FileBeside(std::wstring_view name) const;
    // The files that were installed with the driver, in the spooler's order.
    std::vector<std::wstring> DependentFiles() const;

private:
    const wchar_t* Member(wchar_t* DRIVER_INFO_3W::* member) const noexcept;

    std::optional<std::vector<BYTE>> information_;
};

} // namespace qx
