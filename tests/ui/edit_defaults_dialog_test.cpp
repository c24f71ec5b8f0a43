#include "pages/edit_defaults_dialog.h"
#include "record/fax_job_data.h"
#include "res/edit_defaults_ids.h"
#include "settings/device_state.h"
#include "settings/fax_defaults.h"
#include "settings/key_set.h"
#include "support/dialog_thread.h"
#include "support/failing_calls.h"
#include "support/test_printer.h"
#include "support/user_defaults.h"

#include <gtest/gtest.h>
#include <optional>

namespace qx {
namespace {

using namespace test;

// The dialog alone: what it does to the working copy that its opener keeps.
class EditDefaultsDialogTest : public ::testing::Test {
protected:
    EditDefaultsDialogTest()
    {
        ReadDeviceState(Defaults(), printer.Handle());
        dialog.printer = printer.Handle();
        dialog.defaults = &Defaults();
    }

    FaxJobData& Defaults() { return defaults.Get(); }

    host::UiDriver& Open()
    {
        conversation.emplace([this] { answer = ShowModal<kEditDefaultsDialog>(nullptr, dialog); });
        conversation->Ui().WaitForControl(IDC_APPLY_DEFAULTS);
        return conversation->Ui();
    }

    void Press(int button)
    {
        conversation->Ui().Press(button);
        conversation->End();
    }

    TestPrinter printer;
    OwnedFaxJobData defaults;
    KeySet keys{defaults.Get()};
    EditDefaultsDialog dialog;
    INT_PTR answer = 0;
    std::optional<DialogThread> conversation;
};

TEST_F(EditDefaultsDialogTest, OkOnAFirstUseTellsThatTheseAreTheFirstDefaults)
{
    Defaults().PrinterHandle = nullptr;
    Open().Type(IDC_SENDER_NAME, L"Ann Lee");
    EXPECT_EQ(Defaults().DefaultsSaved, 1u);
    EXPECT_EQ(Defaults().SenderName, nullptr); // the working copy waits for OK
    Press(IDOK);
    EXPECT_EQ(answer, IDOK);
    EXPECT_EQ(Defaults().DefaultsSaved, 1u);
    EXPECT_STREQ(Defaults().SenderName, L"Ann Lee");
    EXPECT_EQ(Defaults().PrinterHandle, printer.Handle());

    Open();
    EXPECT_EQ(Defaults().DefaultsSaved, 0u); // they are stored now
    Press(IDOK);
}

TEST_F(EditDefaultsDialogTest, CancelOnAFirstUseClearsIt)
{
    Open();
    EXPECT_EQ(Defaults().DefaultsSaved, 1u);
    Press(IDCANCEL);
    EXPECT_EQ(answer, IDCANCEL);
    EXPECT_EQ(Defaults().DefaultsSaved, 0u);
}

TEST_F(EditDefaultsDialogTest, EscapeCancels)
{
    Open().PressKey(VK_ESCAPE);
    conversation->End();
    EXPECT_EQ(answer, IDCANCEL);
    EXPECT_EQ(Defaults().DefaultsSaved, 0u);
}

TEST_F(EditDefaultsDialogTest, EscapeInTheNotesCancels)
{
    host::UiDriver& ui = Open();
    ui.Check(IDC_COVER_PAGE, true);
    ui.Type(IDC_NOTES, L"Hello");
    ui.PressKey(VK_ESCAPE);
    conversation->End();
    EXPECT_EQ(answer, IDCANCEL);
}

TEST_F(EditDefaultsDialogTest, ANumberThatNoButtonStandsForChecksNone)
{
    Defaults().Resolution = 7;
    host::UiDriver& ui = Open();
    for (const int button : {IDC_STANDARD, IDC_FINE, IDC_SUPERFINE})
        EXPECT_FALSE(ui.IsChecked(button)) << button;
    Press(IDOK);
    EXPECT_EQ(Defaults().Resolution, 0u);
}

// It is asked again next time, and may have what it has had before.
TEST_F(EditDefaultsDialogTest, WhatADeviceThatCannotBeReadDoesNotOfferStaysAsItWasStored)
{
    UserDefaults stored = SampleDefaults();
    stored[L"OverlayPath"] = L""; // there is no such image
    SetDefaultsOf(Defaults(), stored);
    SaveFaxDefaults(Defaults());
    const UniqueKey device = printer.Key(L"QXBIDIInfo");
    for (const DeviceNumber& number : kDeviceNumbers)
        PutNumber(device.Get(), number.name, 1);

    FailingCalls<decltype(RegQueryValueExW), struct DeviceReads> reads(nullptr, "RegQueryValueExW",
                                                                       ERROR_ACCESS_DENIED);
    long read = 0;
    for (const DeviceNumber& number : kDeviceNumbers) {
        reads.FailOnly(++read);
        dialog.deviceIsKnown = ReadDeviceState(Defaults(), printer.Handle());
        reads.FailNone();
        stored[L"SenderName"] = number.name;
        Open().Type(IDC_SENDER_NAME, number.name);
        Press(IDOK);
        EXPECT_EQ(DefaultsIn(printer.Key(L"QX-FAX\\Default").Get()), stored) << number.name;
        EXPECT_EQ(DefaultsOf(Defaults()), stored) << number.name;
    }
}

} // namespace
} // namespace qx
