#include "base/module.h"

extern "C" IMAGE_DOS_HEADER __ImageBase; // put there by the linker

namespace qx {

HINSTANCE ModuleInstance() noexcept
{
    return reinterpret_cast<HINSTANCE>(&__ImageBase);
}

DWORD WindowsMajorVersion() noexcept
{
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    GetVersionExW(&version);
    return version.dwMajorVersion; // 0 when the system does not tell
}

bool IsRightToLeftUi() noexcept
{
    const WORD primary = PRIMARYLANGID(GetUserDefaultUILanguage());
    return primary == LANG_ARABIC || primary == LANG_HEBREW;
}

} // namespace qx
