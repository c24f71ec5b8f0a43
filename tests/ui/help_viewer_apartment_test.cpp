// The system's help viewer beside a thread in the multithreaded COM apartment. A program of its own: Wine shows only
// the first viewer of a process.
#include "support/built_help.h"
#include "text/help.h"
#include "text/help_viewer.h"

#include <gtest/gtest.h>
#include <objbase.h>

namespace qx {
namespace {

TEST(HelpViewerApartment, TheViewerLivesOnAThreadOfItsOwn)
{
    ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)));
    ShowHelp(test::OwnerWithHelp(), nullptr, 15619);
    const HWND window = test::ViewerWindow();
    EXPECT_TRUE(IsWindowVisible(window));
    EXPECT_NE(GetWindowThreadProcessId(window, nullptr), GetCurrentThreadId());
    DWORD_PTR ignored = 0; // nobody here fetches messages, and it answers all the same
    EXPECT_TRUE(SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, 10000, &ignored));
    CloseHelpViewer();
    EXPECT_FALSE(IsWindow(window));
    CoUninitialize();
}

} // namespace
} // namespace qx
