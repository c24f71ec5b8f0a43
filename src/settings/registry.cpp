#include "settings/registry.h"

#include "base/text.h"

#include <cwchar>

namespace qx {

namespace {

constexpr std::size_t kSpareUnits = 10;
constexpr int kMostLooks = 10; // at a text that grows meanwhile

// Of a list of strings, up to and with its final terminator.
std::size_t ListUnits(const wchar_t* list) noexcept
{
    std::size_t units = 1;
    for (const wchar_t* text = list; *text != L'\0'; text += std::wcslen(text) + 1)
        units += std::wcslen(text) + 1;
    return units;
}

// ERROR_MORE_DATA when somebody stores a longer text between the question for its size and that for itself.
LSTATUS LookAtString(HKEY key, const wchar_t* name, std::wstring& out)
{
    DWORD bytes = 0;
    if (const LSTATUS status = RegQueryValueExW(key, name, nullptr, nullptr, nullptr, &bytes); status != ERROR_SUCCESS)
        return status;
    // An odd byte at the end falls into the spare units and reads as part of no character of the text.
    std::wstring buffer(bytes / sizeof(wchar_t) + kSpareUnits, L'\0');
    const LSTATUS status =
        RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(buffer.data()), &bytes);
    if (status != ERROR_SUCCESS)
        return status;
    if (bytes % sizeof(wchar_t) != 0)
        buffer[bytes / sizeof(wchar_t)] = L'\0';
    out = std::move(buffer);
    return ERROR_SUCCESS;
}

} // namespace

LSTATUS QueryString(HKEY key, const wchar_t* name, std::wstring& out)
{
    if (key == nullptr)
        return ERROR_INVALID_HANDLE;
    LSTATUS status = ERROR_MORE_DATA;
    for (int looks = 0; looks < kMostLooks && status == ERROR_MORE_DATA; ++looks)
        status = LookAtString(key, name, out);
    return status != ERROR_MORE_DATA ? status : ERROR_BUSY;
}

bool ReadString(HKEY key, const wchar_t* name, std::wstring& out)
{
    return QueryString(key, name, out) == ERROR_SUCCESS;
}

LSTATUS QueryDword(HKEY key, const wchar_t* name, DWORD& out, DWORD* type) noexcept
{
    if (key == nullptr)
        return ERROR_INVALID_HANDLE;
    DWORD value = 0;
    DWORD bytes = sizeof value;
    const LSTATUS status = RegQueryValueExW(key, name, nullptr, type, reinterpret_cast<BYTE*>(&value), &bytes);
    if (status == ERROR_SUCCESS)
        out = value;
    return status;
}

bool ReadDword(HKEY key, const wchar_t* name, DWORD& out, DWORD* type) noexcept
{
    return QueryDword(key, name, out, type) == ERROR_SUCCESS;
}

bool IsAnswer(LSTATUS status) noexcept
{
    return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND || status == ERROR_MORE_DATA;
}

DWORD ValueType(HKEY key, const wchar_t* name) noexcept
{
    DWORD type = REG_NONE;
    if (key == nullptr || RegQueryValueExW(key, name, nullptr, &type, nullptr, nullptr) != ERROR_SUCCESS)
        return REG_NONE;
    return type;
}

bool WriteString(HKEY key, const wchar_t* name, const wchar_t* text, DWORD type) noexcept
{
    if (type != REG_SZ && type != REG_MULTI_SZ)
        return true;
    if (key == nullptr)
        return false;
    const wchar_t* const stored = OrEmpty(text);
    const std::size_t units = type == REG_SZ ? std::wcslen(stored) + 1 : ListUnits(stored);
    return RegSetValueExW(key, name, 0, type, reinterpret_cast<const BYTE*>(stored),
                          static_cast<DWORD>(units * sizeof(wchar_t))) == ERROR_SUCCESS;
}

bool WriteDword(HKEY key, const wchar_t* name, DWORD value) noexcept
{
    return key != nullptr && RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                                            sizeof value) == ERROR_SUCCESS;
}

} // namespace qx
