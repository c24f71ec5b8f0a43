// What the stand-in for the help viewer was asked to show.
#pragma once

#include <windows.h> // before the headers that build on it

#include <objbase.h>

namespace qx::test {

struct HelpRequest {
    HWND owner;
    wchar_t page[512];
    UINT command;
    DWORD_PTR data;
    DWORD thread;      // that asked
    APTTYPE apartment; // of that thread; APTTYPE_CURRENT: none
};

// Exported by the stand-in: hands out the oldest request that was not handed out yet. FALSE: there is none.
using TakeHelpRequest = BOOL(WINAPI*)(HelpRequest* request);

} // namespace qx::test
