#include "admin/command.h"

#include "phonebook/file/file_replacement.h"

#include <filesystem>

namespace qx::admin {

std::string Quoted(std::wstring_view text)
{
    return '"' + Utf8(text) + '"';
}

// ---- printers ------------------------------------------------------------------------------------------------------

namespace {

UniquePrinter Open(const std::wstring& name, ACCESS_MASK access)
{
    PRINTER_DEFAULTSW defaults{.pDatatype = nullptr, .pDevMode = nullptr, .DesiredAccess = access};
    UniquePrinter printer;
    std::wstring changeable = name;
    if (name.empty() || !OpenPrinterW(changeable.data(), printer.Receive(), &defaults)) {
        const DWORD error = name.empty() ? ERROR_INVALID_PRINTER_NAME : GetLastError();
        if (error == ERROR_INVALID_PRINTER_NAME)
            throw Refusal("there is no printer " + Quoted(name));
        throw Refusal(SystemError("cannot open the printer " + Quoted(name), error));
    }
    return printer;
}

DWORD TypeOf(HANDLE printer, const wchar_t* key, const wchar_t* name)
{
    DWORD type = REG_NONE;
    DWORD needed = 0;
    GetPrinterDataExW(printer, key, name, &type, nullptr, 0, &needed);
    return type;
}

} // namespace

UniquePrinter OpenPrinterToRead(const std::wstring& name)
{
    return Open(name, PRINTER_ACCESS_USE);
}

UniquePrinter OpenPrinterToConfigure(const std::wstring& name)
{
    return Open(name, PRINTER_ACCESS_USE | PRINTER_ACCESS_ADMINISTER);
}

std::optional<std::wstring> PrinterText(HANDLE printer, const wchar_t* key, const wchar_t* name)
{
    return TypeOf(printer, key, name) == REG_SZ ? ReadPrinterText(printer, key, name) : std::nullopt;
}

std::optional<DWORD> PrinterNumber(HANDLE printer, const wchar_t* key, const wchar_t* name)
{
    DWORD number = 0;
    if (TypeOf(printer, key, name) != REG_DWORD || ReadPrinterNumber(printer, key, name, number) != ERROR_SUCCESS)
        return std::nullopt;
    return number;
}

// ---- files ---------------------------------------------------------------------------------------------------------

std::wstring FullPath(const std::wstring& path)
{
    std::error_code error;
    const std::filesystem::path full = std::filesystem::absolute(path, error);
    return error ? path : std::filesystem::path(full).make_preferred().native();
}

std::string ReadFileOrRefuse(const std::wstring& path)
{
    std::string bytes;
    const DWORD error = ReadWholeFile(path, bytes);
    if (error != ERROR_SUCCESS)
        throw Refusal(SystemError("cannot read " + Quoted(path), error));
    return bytes;
}

void RefuseExistingFile(const std::wstring& path, bool overwrite)
{
    if (!overwrite && GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES)
        throw Refusal(Quoted(path) + " is there already; --overwrite replaces it");
}

void WriteFileOrRefuse(const std::wstring& path, std::string_view bytes, bool overwrite)
{
    RefuseExistingFile(path, overwrite);
    const UniqueFile file(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    if (!file || !WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
        written != bytes.size())
        throw Refusal(SystemError("cannot write " + Quoted(path), GetLastError()));
}

} // namespace qx::admin
