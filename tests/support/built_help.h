// The help as it was built, and the window in which the system's viewer shows it.
#pragma once

#include "support/built.h"
#include "text/localized_text.h"

#include <windows.h>

namespace qx::test {

// The compiled help that the dependent file stands for: one that is there in every build.
inline std::filesystem::path BuiltHelp()
{
    return BuiltFolder() / "QXZHL" QX_HELP_ENDING ".CHM";
}

inline TextOwner OwnerWithHelp()
{
    return TextOwner(nullptr, (BuiltHelp().native() + L"::/qxhelp.txt").c_str());
}

// The viewer's window in this process, or null.
inline HWND ViewerWindow()
{
    for (HWND window = nullptr; (window = FindWindowExW(nullptr, window, L"HH Parent", nullptr)) != nullptr;) {
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        if (process == GetCurrentProcessId())
            return window;
    }
    return nullptr;
}

} // namespace qx::test
