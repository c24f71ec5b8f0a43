// The dialog procedure that all dialogs share, on the entry dialog's template.
#include "base/dialog.h"

#include "res/entry_ids.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace qx {
namespace {

struct Probe {
    HWND dialog = nullptr;
    int accepted = 0, initialized = 0;
    bool focusesCompany = false, throws = false;
};

void Accept(Probe& probe)
{
    ++probe.accepted;
    if (probe.throws)
        throw std::runtime_error("a command failed");
}

constexpr Route<Probe> kRoutes[] = {{IDOK, BN_CLICKED, Accept}};

void Initialize(Probe& probe)
{
    ++probe.initialized;
    if (probe.focusesCompany)
        SetFocus(GetDlgItem(probe.dialog, IDC_ENTRY_COMPANY));
}

std::span<const Route<Probe>> RoutesOf(const Probe&)
{
    return kRoutes;
}

INT_PTR HandleOther(Probe&, UINT message, WPARAM, LPARAM)
{
    return message == WM_APP;
}

class DialogTest : public ::testing::Test {
protected:
    HWND dialog = nullptr;

    void Create(Probe* probe)
    {
        dialog = CreateDialogParamW(ModuleInstance(), MAKEINTRESOURCEW(IDD_ENTRY), nullptr, DialogProcedure<Probe>,
                                    reinterpret_cast<LPARAM>(probe));
        ASSERT_NE(dialog, nullptr);
        ShowWindow(dialog, SW_SHOW);
    }
    INT_PTR Ask(UINT message, WPARAM w = 0) const { return DialogProcedure<Probe>(dialog, message, w, 0); }
    ~DialogTest() override { DestroyWindow(dialog); }
};

TEST_F(DialogTest, WithoutAStateNothingIsHandledAndTheLastErrorSaysInvalidData)
{
    Create(nullptr);
    for (const UINT message : {WM_INITDIALOG, WM_COMMAND, WM_APP, WM_HELP}) {
        SetLastError(0);
        EXPECT_EQ(Ask(message, IDOK), FALSE);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_DATA));
    }
}

TEST_F(DialogTest, RouteAnswersForItsControlAndCodeAlone)
{
    Probe probe;
    Create(&probe);
    EXPECT_EQ(probe.initialized, 1);
    EXPECT_EQ(Ask(WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED)), TRUE);
    EXPECT_EQ(Ask(WM_COMMAND, MAKEWPARAM(IDOK, BN_DOUBLECLICKED)), FALSE);
    EXPECT_EQ(Ask(WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED)), FALSE);
    EXPECT_EQ(Ask(WM_APP), TRUE);
    EXPECT_EQ(probe.accepted, 1);
}

TEST_F(DialogTest, ExceptionOfACommandStopsAtTheProcedure)
{
    Probe probe{.throws = true};
    Create(&probe);
    EXPECT_EQ(Ask(WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED)), FALSE);
    EXPECT_EQ(probe.accepted, 1);
}

TEST_F(DialogTest, FocusThatStartUpSetsIsKept)
{
    Probe probe{.focusesCompany = true};
    Create(&probe);
    EXPECT_EQ(GetDlgCtrlID(GetFocus()), IDC_ENTRY_COMPANY);
}

TEST_F(DialogTest, OtherwiseTheFirstFieldGetsTheFocus)
{
    Probe probe;
    Create(&probe);
    EXPECT_EQ(GetDlgCtrlID(GetFocus()), IDC_ENTRY_NAME);
}

TEST_F(DialogTest, DisabledControlHandsTheFocusOn)
{
    Probe probe;
    Create(&probe);
    FocusControl(dialog, IDC_ENTRY_COMPANY);
    EnableControl(dialog, IDC_ENTRY_COMPANY, false);
    EXPECT_EQ(GetDlgCtrlID(GetFocus()), IDOK);
    EnableControl(dialog, IDC_ENTRY_COMPANY, true);
    EXPECT_EQ(GetDlgCtrlID(GetFocus()), IDOK);
}

} // namespace
} // namespace qx
