#include "base/printer.h"

#include "base/limits.h"
#include "base/text.h"

namespace qx {

std::optional<std::wstring> ReadPrinterText(HANDLE printer, const wchar_t* key, const wchar_t* name, std::size_t units)
{
    std::wstring text(std::min(units, kPrinterTextUnits), L'\0'); // as a rule enough: each call may go to a server
    DWORD bytes = 0;
    const auto read = [&] {
        DWORD type = 0;
        return GetPrinterDataExW(printer, key, name, &type, reinterpret_cast<BYTE*>(text.data()),
                                 static_cast<DWORD>(text.size() * sizeof(wchar_t)), &bytes);
    };
    DWORD status = read();
    if (status == ERROR_MORE_DATA && bytes <= units * sizeof(wchar_t)) {
        text.assign((bytes + 1) / sizeof(wchar_t), L'\0');
        status = read();
    }
    if (status != ERROR_SUCCESS)
        return std::nullopt;
    return text.c_str(); // up to its terminator, or ours
}

LSTATUS ReadPrinterNumber(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD& out) noexcept
{
    DWORD value = 0;
    DWORD type = 0;
    DWORD bytes = 0;
    const DWORD status =
        GetPrinterDataExW(printer, key, name, &type, reinterpret_cast<BYTE*>(&value), sizeof value, &bytes);
    if (status == ERROR_SUCCESS)
        out = value;
    return static_cast<LSTATUS>(status);
}

bool IsLocalPrinter(HANDLE printer)
{
    const auto buffer = QuerySpooler<PRINTER_INFO_2W>(
        [printer](BYTE* out, DWORD bytes, DWORD* needed) { return GetPrinterW(printer, 2, out, bytes, needed); });
    return buffer && *OrEmpty(reinterpret_cast<const PRINTER_INFO_2W*>(buffer->data())->pServerName) == L'\0';
}

PrinterDriver::PrinterDriver(HANDLE printer)
    : information_(QuerySpooler<DRIVER_INFO_3W>([printer](BYTE* out, DWORD bytes, DWORD* needed) {
          return GetPrinterDriverW(printer, nullptr, 3, out, bytes, needed);
      }))
{
}

// Never null.
const wchar_t* PrinterDriver::Member(wchar_t* DRIVER_INFO_3W::* member) const noexcept
{
    return information_ ? OrEmpty(reinterpret_cast<const DRIVER_INFO_3W*>(information_->data())->*member) : L"";
}

std::wstring PrinterDriver::FileBeside(std::wstring_view name) const
{
    const std::wstring_view path = Member(&DRIVER_INFO_3W::pDriverPath);
    const std::size_t folderEnd = path.rfind(L'\\') + 1;
    return folderEnd == 0 ? std::wstring() : std::wstring(path.substr(0, folderEnd)).append(name);
}

std::vector<std::wstring> PrinterDriver::DependentFiles() const
{
    std::vector<std::wstring> files;
    for (const wchar_t* file = Member(&DRIVER_INFO_3W::pDependentFiles); *file != L'\0';
         file += files.back().size() + 1)
        files.emplace_back(file);
    return files;
}

} // namespace qx
