#include "base/printer_driver.h"

#include <string_view>

namespace qx {

namespace {

constexpr DWORD kLevel = 3;

std::vector<BYTE> ReadInformation(HANDLE printer)
{
    DWORD bytes = 0;
    GetPrinterDriverW(printer, nullptr, kLevel, nullptr, 0, &bytes);
    if (bytes < sizeof(DRIVER_INFO_3W))
        return {};
    std::vector<BYTE> information(bytes);
    if (!GetPrinterDriverW(printer, nullptr, kLevel, information.data(), bytes, &bytes))
        return {};
    return information;
}

} // namespace

PrinterDriver::PrinterDriver(HANDLE printer) : information_(ReadInformation(printer)) {}

const DRIVER_INFO_3W& PrinterDriver::Information() const noexcept
{
    return *reinterpret_cast<const DRIVER_INFO_3W*>(information_.data());
}

std::wstring PrinterDriver::Folder() const
{
    if (information_.empty() || Information().pDriverPath == nullptr)
        return {};
    const std::wstring_view path = Information().pDriverPath;
    const std::size_t end = path.rfind(L'\\');
    return end == std::wstring_view::npos ? std::wstring() : std::wstring(path.substr(0, end));
}

std::vector<std::wstring> PrinterDriver::DependentFiles() const
{
    std::vector<std::wstring> files;
    if (information_.empty() || Information().pDependentFiles == nullptr)
        return files;
    for (const wchar_t* file = Information().pDependentFiles; *file != L'\0'; file += files.back().size() + 1)
        files.emplace_back(file);
    return files;
}

} // namespace qx
