#include "text/help_viewer.h"

#include "base/apartment.h"
#include "base/lock.h"
#include "base/text.h"

#include <algorithm>
#include <array>
#include <htmlhelp.h>
#include <memory>
#include <utility>

namespace qx {

namespace {

using ShowPage = decltype(&HtmlHelpW);

// From the system folder only: a file of that name in the printing program's folder is not the viewer.
ShowPage LoadViewer() noexcept
{
    wchar_t path[MAX_PATH];
    const UINT units = GetSystemDirectoryW(path, MAX_PATH);
    if (units == 0 || units >= MAX_PATH || FAILED(AppendText(path, L"\\hhctrl.ocx")))
        return nullptr;
    const UniqueModule viewer(LoadLibraryExW(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
    if (!viewer)
        return nullptr;
    // Its windows and threads live on after the call: one that does not stay in the process cannot be used.
    HMODULE pinned = nullptr;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN, path, &pinned))
        return nullptr;
    return reinterpret_cast<ShowPage>(reinterpret_cast<void*>(GetProcAddress(viewer.Get(), "HtmlHelpW")));
}

// ---- viewers of threads that are in the multithreaded apartment -----------------------------------------------------

struct ViewerThread {
    DWORD caller = 0; // id of the thread that asks for help; 0: the place is free
    ApartmentThread* thread = nullptr;
};

Lock g_lock;
std::array<ViewerThread, 32> g_viewerThreads; // what a caller finds is its own: only it puts it there and takes it away

// Null when there is none and none can be had.
ApartmentThread* ViewerThreadOfCaller()
{
    const DWORD caller = GetCurrentThreadId();
    {
        const Locked locked(g_lock);
        const auto known = std::ranges::find(g_viewerThreads, caller, &ViewerThread::caller);
        if (known != g_viewerThreads.end())
            return known->thread;
    }
    auto made = std::make_unique<ApartmentThread>();
    const Locked locked(g_lock);
    const auto place = std::ranges::find(g_viewerThreads, DWORD{0}, &ViewerThread::caller);
    if (!*made || place == g_viewerThreads.end())
        return nullptr;
    *place = {caller, made.get()};
    return made.release();
}

} // namespace

void ShowHelpPage(HWND owner, const std::wstring& page)
{
    const ShowPage showPage = LoadViewer();
    if (showPage == nullptr)
        return;
    const auto show = [&] { showPage(owner, page.c_str(), HH_DISPLAY_TOPIC, 0); };
    if (!IsInMultithreadedApartment())
        show();
    else if (ApartmentThread* const thread = ViewerThreadOfCaller())
        thread->Run(show, nullptr);
}

void CloseHelpViewer() noexcept
{
    ViewerThread ended;
    {
        const Locked locked(g_lock);
        const auto known = std::ranges::find(g_viewerThreads, GetCurrentThreadId(), &ViewerThread::caller);
        if (known != g_viewerThreads.end())
            ended = std::exchange(*known, {});
    }
    delete ended.thread;
}

} // namespace qx
