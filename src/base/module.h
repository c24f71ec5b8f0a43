// The image that this code is linked into: where templates, bitmaps and the manifest are found.
#pragma once

#include <windows.h>

namespace qx {

HINSTANCE ModuleInstance() noexcept;

// A function of a library that every process has, of which the oldest supported systems lack the function; null there.
template <class Function> Function* SystemFunction(const wchar_t* library, const char* name) noexcept
{
    const HMODULE module = GetModuleHandleW(library);
    return reinterpret_cast<Function*>(
        reinterpret_cast<void*>(module != nullptr ? GetProcAddress(module, name) : nullptr));
}

// Major version of the operating system.
DWORD WindowsMajorVersion() noexcept;

// The user's default UI language is Arabic or Hebrew: dialogs open their right-to-left twins.
bool IsRightToLeftUi() noexcept;

} // namespace qx
