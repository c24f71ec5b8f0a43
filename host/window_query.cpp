#include "host/window_query.h"

namespace qx::host {

namespace {

BOOL CALLBACK Append(HWND window, LPARAM windows)
{
    reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window);
    return TRUE;
}

} // namespace

std::wstring ClassOf(HWND window)
{
    wchar_t name[64] = L"";
    GetClassNameW(window, name, 64);
    return name;
}

bool IsOfClass(HWND window, const wchar_t* name)
{
    return lstrcmpiW(ClassOf(window).c_str(), name) == 0;
}

std::vector<HWND> ChildrenOf(HWND parent)
{
    std::vector<HWND> children;
    EnumChildWindows(parent, Append, reinterpret_cast<LPARAM>(&children));
    return children;
}

std::vector<HWND> WindowsOf(DWORD thread)
{
    std::vector<HWND> windows;
    EnumThreadWindows(thread, Append, reinterpret_cast<LPARAM>(&windows));
    return windows;
}

} // namespace qx::host
