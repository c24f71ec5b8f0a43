// What the spooler knows about the driver of a printer.
#pragma once

#include <string>
#include <vector>
#include <windows.h>
#include <winspool.h>

namespace qx {

// The driver information of level 3, with full paths. False when the spooler does not tell.
class PrinterDriver {
public:
    explicit PrinterDriver(HANDLE printer);

    explicit operator bool() const noexcept { return !information_.empty(); }
    // The folder of the driver file, without a backslash at its end; empty when unknown.
    std::wstring Folder() const;
    // The files that were installed with the driver, in the spooler's order.
    std::vector<std::wstring> DependentFiles() const;

private:
    const DRIVER_INFO_3W& Information() const noexcept;

    std::vector<BYTE> information_;
};

} // namespace qx
