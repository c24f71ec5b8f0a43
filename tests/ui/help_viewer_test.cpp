#include "text/help.h"

#include "support/built_help.h"
#include "support/help_viewer.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace qx {
namespace {

namespace fs = std::filesystem;
using test::OwnerWithHelp;
using test::ViewerWindow;

// First, while the viewer is not loaded yet.
TEST(HelpViewer, WithoutAViewerNothingHappens)
{
    const test::HiddenHelpViewer hidden;
    ShowHelp(OwnerWithHelp(), nullptr, 15619);
    EXPECT_EQ(ViewerWindow(), nullptr);
    EXPECT_EQ(GetModuleHandleW(L"hhctrl.ocx"), nullptr);
}

TEST(HelpViewer, TheSystemsViewerOpensItsWindowWithOurHelp)
{
    ShowHelp(OwnerWithHelp(), nullptr, 15619);
    const HWND window = ViewerWindow();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(IsWindowVisible(window));
    wchar_t title[100] = L"";
    GetWindowTextW(window, title, 100);
    EXPECT_STREQ(title, L"QX MFP Send Fax Help");
    DestroyWindow(window);
}

TEST(HelpViewer, IsTheOneOfTheSystemFolderAndStaysLoaded)
{
    ShowHelp(OwnerWithHelp(), nullptr, 15596);
    wchar_t expected[MAX_PATH] = L"";
    GetSystemDirectoryW(expected, MAX_PATH);
    wchar_t loaded[MAX_PATH] = L"";
    ASSERT_NE(GetModuleFileNameW(GetModuleHandleW(L"hhctrl.ocx"), loaded, MAX_PATH), 0u);
    EXPECT_TRUE(fs::equivalent(fs::path(loaded).parent_path(), expected));
    if (const HWND window = ViewerWindow())
        DestroyWindow(window);
}

} // namespace
} // namespace qx
