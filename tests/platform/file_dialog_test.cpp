// What surrounds the system's file dialogs. The dialog itself is played by the test.
#include "base/no_copy.h"
#include "dialog/file_dialog.h"

#include "base/apartment.h"
#include "support/failing_calls.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <objbase.h>
#include <thread>
#include <vector>

namespace qx {
namespace {

namespace fs = std::filesystem;

// What the dialog does, for the test that runs.
std::function<bool(OPENFILENAMEW&)> g_dialog;

BOOL WINAPI PlayedDialog(OPENFILENAMEW* dialog)
{
    return g_dialog(*dialog);
}

bool Ask(HWND owner, std::function<bool(OPENFILENAMEW&)> dialog)
{
    g_dialog = std::move(dialog);
    OPENFILENAMEW open{};
    open.lStructSize = sizeof open;
    open.hwndOwner = owner;
    return AskForFileName(PlayedDialog, open);
}

APTTYPE Apartment()
{
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier;
    return SUCCEEDED(CoGetApartmentType(&type, &qualifier)) ? type : APTTYPE_CURRENT; // the latter: none
}

constexpr DWORD kNoCom = 0xFFFFFFFF;

// Runs body on a thread of its own, whose COM is in that mode.
template <class Body> void OnThread(DWORD comMode, Body body)
{
    std::thread([&] {
        const bool initialised = comMode != kNoCom && SUCCEEDED(CoInitializeEx(nullptr, comMode));
        EXPECT_EQ(initialised, comMode != kNoCom);
        body();
        if (initialised)
            CoUninitialize();
    }).join();
}

// A window with a child, and the messages that were dispatched to either.
class Owner : NoCopy {
public:
    Owner()
        : window_(CreateWindowExW(0, L"Static", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr)),
          child_(CreateWindowExW(0, L"Static", L"", WS_CHILD, 0, 0, 9, 9, window_, nullptr, nullptr, nullptr))
    {
        for (const HWND window : {window_, child_}) {
            SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
            SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Procedure));
        }
    }
    ~Owner() { DestroyWindow(window_); }

    HWND Window() const { return window_; }
    HWND Child() const { return child_; }
    const std::vector<UINT>& Messages() const { return messages_; }

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l)
    {
        auto* const owner = reinterpret_cast<Owner*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        const bool input =
            (message >= WM_KEYFIRST && message <= WM_KEYLAST) || (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST);
        if (message >= WM_APP || input)
            owner->messages_.push_back(message);
        return message == WM_APP ? 42 : DefWindowProcW(window, message, w, l);
    }

    HWND window_, child_;
    std::vector<UINT> messages_;
};

TEST(FileDialog, WhereTheUserGoesDoesNotMoveTheProgramsDirectory)
{
    for (const DWORD comMode : {kNoCom, DWORD{COINIT_APARTMENTTHREADED}, DWORD{COINIT_MULTITHREADED}}) {
        OnThread(comMode, [] {
            const fs::path before = fs::current_path();
            ASSERT_TRUE(Ask(nullptr, [](OPENFILENAMEW&) { return SetCurrentDirectoryW(L"C:\\windows\\system32"); }));
            EXPECT_EQ(fs::current_path(), before);
        });
    }
}

TEST(FileDialog, ADirectoryThatNobodyTellsIsLeftToADialogThatDoesNotMoveIt)
{
    const fs::path before = fs::current_path();
    test::WhileEachFails<decltype(GetCurrentDirectoryW)>("GetCurrentDirectoryW", 0u, [&](const std::string& what) {
        EXPECT_TRUE(Ask(nullptr, [](const OPENFILENAMEW& dialog) {
            if ((dialog.Flags & OFN_NOCHANGEDIR) == 0)
                SetCurrentDirectoryW(L"C:\\windows");
            return true;
        })) << what;
        EXPECT_EQ(fs::current_path(), before) << what;
        fs::current_path(before);
    });
}

TEST(FileDialog, ItsAnswerIsHandedOn)
{
    EXPECT_TRUE(Ask(nullptr, [](OPENFILENAMEW&) { return true; }));
    EXPECT_FALSE(Ask(nullptr, [](OPENFILENAMEW&) { return false; }));
}

TEST(FileDialog, RunsOnTheCallersThreadWhereComAllowsIt)
{
    for (const DWORD comMode : {kNoCom, DWORD{COINIT_APARTMENTTHREADED}}) {
        OnThread(comMode, [] {
            DWORD thread = 0;
            Ask(nullptr, [&](OPENFILENAMEW&) { return (thread = GetCurrentThreadId()) != 0; });
            EXPECT_EQ(thread, GetCurrentThreadId());
        });
    }
}

TEST(FileDialog, GetsASingleThreadedApartmentOnAMultithreadedThread)
{
    OnThread(COINIT_MULTITHREADED, [] {
        APTTYPE inDialog = APTTYPE_CURRENT;
        ASSERT_TRUE(Ask(nullptr, [&](OPENFILENAMEW&) {
            inDialog = Apartment();
            return true;
        }));
        EXPECT_TRUE(inDialog == APTTYPE_STA || inDialog == APTTYPE_MAINSTA) << inDialog;
        EXPECT_EQ(Apartment(), APTTYPE_MTA);
    });
}

// A thread that is in the multithreaded apartment only because others are still may open one of its own.
TEST(FileDialog, AnotherThreadsApartmentDoesNotCount)
{
    OnThread(COINIT_MULTITHREADED, [] { OnThread(kNoCom, [] { EXPECT_FALSE(IsInMultithreadedApartment()); }); });
}

// A window that always has something to do, for some seconds.
ULONGLONG g_restlessUntil = 0;
LRESULT CALLBACK RestlessProcedure(HWND window, UINT message, WPARAM w, LPARAM l)
{
    if (message == WM_APP && GetTickCount64() < g_restlessUntil)
        PostMessageW(window, WM_APP, 0, 0);
    return DefWindowProcW(window, message, w, l);
}

TEST(FileDialog, ReturnsAlsoToAThreadWhoseMessagesNeverEnd)
{
    OnThread(COINIT_MULTITHREADED, [] {
        const HWND window =
            CreateWindowExW(0, L"Static", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(RestlessProcedure));
        g_restlessUntil = GetTickCount64() + 10000;
        PostMessageW(window, WM_APP, 0, 0);
        EXPECT_TRUE(Ask(nullptr, [](OPENFILENAMEW&) { return true; }));
        EXPECT_LT(GetTickCount64(), g_restlessUntil);
        DestroyWindow(window);
    });
}

TEST(FileDialog, TheOwnersWindowsLiveOnMeanwhile)
{
    OnThread(COINIT_MULTITHREADED, [] {
        const Owner owner;
        EXPECT_TRUE(Ask(owner.Window(), [&](OPENFILENAMEW&) {
            PostMessageW(owner.Child(), WM_APP + 1, 0, 0);
            DWORD_PTR answer = 0; // after what was posted before it
            return SendMessageTimeoutW(owner.Window(), WM_APP, 0, 0, SMTO_NORMAL, 10000, &answer) && answer == 42;
        }));
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
        EXPECT_EQ(owner.Messages().size(), 2u);
    });
}

TEST(FileDialog, TheOwnerHearsNothingOfTheUserMeanwhile)
{
    OnThread(COINIT_MULTITHREADED, [] {
        const Owner owner;
        Ask(owner.Child(), [&](OPENFILENAMEW&) {
            PostMessageW(owner.Child(), WM_KEYDOWN, VK_SPACE, 1);
            PostMessageW(owner.Window(), WM_LBUTTONDOWN, 0, 0);
            PostMessageW(owner.Child(), WM_APP + 1, 0, 0);
            while (owner.Messages().empty())
                Sleep(1); // until the last of them has come round
            return true;
        });
        EXPECT_EQ(owner.Messages(), std::vector<UINT>{WM_APP + 1});
    });
}

TEST(FileDialog, EndsWithAProgramThatQuits)
{
    OnThread(COINIT_MULTITHREADED, [] {
        const DWORD caller = GetCurrentThreadId();
        EXPECT_FALSE(Ask(nullptr, [&](OPENFILENAMEW&) {
            PostThreadMessageW(caller, WM_QUIT, 7, 0);
            MSG message; // as the loop of a modal dialog
            while (GetMessageW(&message, nullptr, 0, 0) > 0)
                DispatchMessageW(&message);
            PostQuitMessage(static_cast<int>(message.wParam));
            return false;
        }));
        MSG message{};
        EXPECT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)); // still to be heard by the program's own loop
        EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
        EXPECT_EQ(message.wParam, 7u);
    });
}

TEST(FileDialog, LeavesNoThreadBehind)
{
    OnThread(COINIT_MULTITHREADED, [] {
        HANDLE thread = nullptr;
        Ask(nullptr, [&](OPENFILENAMEW&) {
            thread = OpenThread(SYNCHRONIZE, FALSE, GetCurrentThreadId());
            return true;
        });
        EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_OBJECT_0);
        CloseHandle(thread);
    });
}

} // namespace
} // namespace qx
