#include "pages/send_button.h"

#include "dialog/dialog.h"

#include <gtest/gtest.h>
#include <tuple>

namespace qx {
namespace {

// A window that stands for the sheet, with the one button that counts. Without a text library.
class SendButton : public ::testing::TestWithParam<DWORD> {
protected:
    SendButton()
        : sheet(CreateWindowExW(GetParam(), L"Static", L"", WS_POPUP, 100, 100, 500, 100, nullptr, nullptr, nullptr,
                                nullptr)),
          button(CreateWindowW(L"Button", L"-&Send", WS_CHILD | WS_VISIBLE, 250, 40, 75, 23, sheet,
                               reinterpret_cast<HMENU>(IDOK), nullptr, nullptr))
    {
    }
    ~SendButton() override { DestroyWindow(sheet); }

    // In the sheet's own coordinates: in a mirrored one x grows towards the left.
    RECT Place() const
    {
        RECT place;
        GetWindowRect(button, &place);
        MapWindowPoints(HWND_DESKTOP, sheet, reinterpret_cast<POINT*>(&place), 2);
        return place;
    }
    int Width() const { return static_cast<int>(Place().right - Place().left); }
    void Fit(bool preview) { FitSendButton(texts, sheet, preview, growth); }

    TextOwner texts;
    HWND sheet;
    HWND button;
    SendButtonGrowth growth;
};

bool Same(const RECT& a, const RECT& b)
{
    return EqualRect(&a, &b) != FALSE;
}

TEST_P(SendButton, GrowsTowardsWhereALineBeginsAndReturns)
{
    const RECT before = Place();
    Fit(true);
    EXPECT_EQ(WindowText(button), L"-Preview and &Send");
    EXPECT_LT(Place().left, before.left);
    EXPECT_EQ(Place().right, before.right);
    Fit(false);
    EXPECT_EQ(WindowText(button), L"-&Send "); // with its trailing blank
    EXPECT_TRUE(Same(Place(), before));
}

TEST_P(SendButton, ReturnsToItsFirstSizeAfterAnyNumberOfToggles)
{
    const RECT before = Place();
    for (int i = 0; i < 25; ++i) {
        Fit(true);
        Fit(true); // asked twice, grown once
        const int grown = Width();
        Fit(true);
        EXPECT_EQ(Width(), grown);
        Fit(false);
        Fit(false);
        EXPECT_TRUE(Same(Place(), before));
    }
}

TEST_P(SendButton, TheSheetsCaptionAndItsOwnWithATrailingBlankAreTheSame)
{
    const int before = Width();
    SetWindowTextW(button, L"-&Send");
    Fit(true);
    const int grown = Width();
    Fit(false);
    SetWindowTextW(button, L"-&Send ");
    Fit(true);
    EXPECT_EQ(Width(), grown);
    EXPECT_GT(grown, before);
}

// The sheet's first caption is neither of the two; the growth then waits until the sheet has given it its own.
TEST_P(SendButton, NeverShrinksWithoutHavingGrownBefore)
{
    const RECT before = Place();
    SetWindowTextW(button, L"OK");
    Fit(true);
    EXPECT_EQ(WindowText(button), L"-Preview and &Send");
    EXPECT_TRUE(Same(Place(), before));
    Fit(false);
    EXPECT_TRUE(Same(Place(), before));

    SetWindowTextW(button, L"OK");
    Fit(true);
    SetWindowTextW(button, L"-&Send"); // the sheet is hooked
    Fit(true);
    EXPECT_LT(Place().left, before.left);
    Fit(false);
    EXPECT_TRUE(Same(Place(), before));
}

TEST_P(SendButton, IsLeftAloneWhereThereIsNone)
{
    DestroyWindow(button);
    Fit(true);
    EXPECT_FALSE(growth.has_value());
}

INSTANTIATE_TEST_SUITE_P(LeftToRight, SendButton, ::testing::Values(0u));
INSTANTIATE_TEST_SUITE_P(RightToLeft, SendButton, ::testing::Values(static_cast<DWORD>(WS_EX_LAYOUTRTL)));

} // namespace
} // namespace qx
