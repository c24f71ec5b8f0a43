// The ways to reach a value of the registry. Each answers whether it succeeded; a failed read leaves out alone.
#pragma once

#include <string>
#include <windows.h>

namespace qx {

// out receives the whole stored value and ten terminators behind it: a value of several strings can be walked, and
// one that was stored without a terminator ends all the same. Use out.c_str() for the first string.
bool ReadString(HKEY key, const wchar_t* name, std::wstring& out);
// With the system's answer, or ERROR_BUSY for a text that grows with every look at it.
LSTATUS QueryString(HKEY key, const wchar_t* name, std::wstring& out);
// Any value of at most four bytes; its type is not checked, and told when asked for.
bool ReadDword(HKEY key, const wchar_t* name, DWORD& out, DWORD* type = nullptr) noexcept;
LSTATUS QueryDword(HKEY key, const wchar_t* name, DWORD& out, DWORD* type = nullptr) noexcept; // likewise
// Whether the system has told what is stored: a value, or that there is none, or one longer than what it stands for.
// Everything else is a failure, behind which there may be anything.
bool IsAnswer(LSTATUS status) noexcept;
// REG_...; REG_NONE when there is no such value.
DWORD ValueType(HKEY key, const wchar_t* name) noexcept;
// type is REG_SZ or REG_MULTI_SZ (text is then a list that ends with an empty string). Any other type writes nothing
// and answers true.
bool WriteString(HKEY key, const wchar_t* name, const wchar_t* text, DWORD type) noexcept;
bool WriteDword(HKEY key, const wchar_t* name, DWORD value) noexcept;

} // namespace qx
