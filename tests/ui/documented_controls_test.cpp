// The controls of the other tests, when they are asked to behave as documented.
#include "support/documented_controls.h"

#include <commctrl.h>
#include <gtest/gtest.h>

namespace qx::test {
namespace {

class DocumentedControlsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        parent = CreateWindowW(WC_DIALOG, L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 400, 300, nullptr, nullptr,
                               nullptr, nullptr);
        SetForegroundWindow(parent);
    }
    ~DocumentedControlsTest() override { DestroyWindow(parent); }

    HWND Child(const wchar_t* className, DWORD style, int id)
    {
        return CreateWindowW(className, L"", WS_CHILD | WS_VISIBLE | style, 0, 0, 200, 100, parent,
                             reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
    }

    HWND parent = nullptr;
    DocumentedControls controls;
};

TEST_F(DocumentedControlsTest, ADisabledControlLeavesTheFocusNowhere)
{
    const HWND edit = Child(L"Edit", 0, 1);
    SetFocus(edit);
    ASSERT_EQ(GetFocus(), edit);
    EnableWindow(edit, FALSE);
    EXPECT_EQ(GetFocus(), nullptr);
}

TEST_F(DocumentedControlsTest, AnAutomaticRadioButtonChecksItselfWithTheFocus)
{
    const HWND first = Child(L"Button", BS_AUTORADIOBUTTON | WS_GROUP, 1);
    const HWND second = Child(L"Button", BS_AUTORADIOBUTTON, 2);
    SetFocus(second);
    EXPECT_EQ(SendMessageW(second, BM_GETCHECK, 0, 0), BST_CHECKED);
    SetFocus(first);
    EXPECT_EQ(SendMessageW(first, BM_GETCHECK, 0, 0), BST_CHECKED);
    EXPECT_EQ(SendMessageW(second, BM_GETCHECK, 0, 0), BST_UNCHECKED);
}

TEST_F(DocumentedControlsTest, AListIsNotScrolledBeforeItIsDrawnAgain)
{
    const INITCOMMONCONTROLSEX classes{sizeof classes, ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&classes);
    const HWND list = Child(WC_LISTVIEWW, LVS_REPORT | LVS_NOCOLUMNHEADER, 1);
    LVCOLUMNW column{};
    column.mask = LVCF_WIDTH;
    column.cx = 100;
    SendMessageW(list, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    SendMessageW(list, WM_SETREDRAW, FALSE, 0);
    LVITEMW item{};
    for (item.iItem = 0; item.iItem < 100; ++item.iItem)
        SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    SendMessageW(list, LVM_SCROLL, 0, 500);
    SendMessageW(list, WM_SETREDRAW, TRUE, 0);
    EXPECT_EQ(SendMessageW(list, LVM_GETTOPINDEX, 0, 0), 0);
    SendMessageW(list, LVM_SCROLL, 0, 500);
    EXPECT_GT(SendMessageW(list, LVM_GETTOPINDEX, 0, 0), 0);
}

} // namespace
} // namespace qx::test
