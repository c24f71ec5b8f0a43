#include "host/job.h"

#include "base/printer.h"
#include "host/utf8.h"

#include <stdexcept>

namespace qx::host {

FaxModule::FaxModule(const std::filesystem::path& file) : module_(LoadLibraryW(file.c_str()))
{
    if (!module_)
        throw std::runtime_error(SystemError("cannot load the module " + Utf8(file.native()), GetLastError()));
    displayFaxUi_ = reinterpret_cast<decltype(displayFaxUi_)>(
        reinterpret_cast<void*>(GetProcAddress(module_.Get(), "DisplayFaxUI")));
    if (displayFaxUi_ == nullptr)
        throw std::runtime_error(Utf8(file.native()) + " is not the module: it does not export DisplayFaxUI");
}

UniquePrinter OpenFaxPrinter(const std::wstring& name)
{
    UniquePrinter printer;
    std::wstring changeable = name;
    PRINTER_DEFAULTSW all{};
    all.DesiredAccess = PRINTER_ALL_ACCESS;
    // A user who may only print must still be able to fax.
    if (OpenPrinterW(changeable.data(), printer.Receive(), &all) ||
        OpenPrinterW(changeable.data(), printer.Receive(), nullptr))
        return printer;
    throw std::runtime_error(SystemError("no such printer: '" + Utf8(name) + "'", GetLastError()));
}

std::filesystem::path ModuleOf(HANDLE printer)
{
    const auto buffer = QuerySpooler<DRIVER_INFO_3W>([printer](BYTE* out, DWORD bytes, DWORD* needed) {
        return GetPrinterDriverW(printer, nullptr, 3, out, bytes, needed);
    });
    if (!buffer)
        throw std::runtime_error(SystemError("the printer has no driver", GetLastError()));
    const auto& driver = *reinterpret_cast<const DRIVER_INFO_3W*>(buffer->data());
    return std::filesystem::path(driver.pDriverPath).parent_path() / L"qxfaxui.dll";
}

} // namespace qx::host
