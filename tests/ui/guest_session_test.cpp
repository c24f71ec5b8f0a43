// What the printing program finds after a session: its own state, untouched.
#include "host/provision.h"
#include "res/cover_page_ids.h"
#include "res/fax_job_page_ids.h"
#include "support/send_fax_session.h"
#include "support/temporary_folder.h"

#include <combaseapi.h>
#include <gtest/gtest.h>
#include <xmmintrin.h>

namespace qx::test {
namespace {

struct HostState {
    std::wstring directory;
    unsigned floatingPoint = 0;
    DWORD errorMode = 0;
    HANDLE dpiContext = nullptr;
    HCURSOR cursor = nullptr;
    HANDLE activationContext = nullptr;
    APTTYPE apartment = APTTYPE_CURRENT;
    bool operator==(const HostState&) const = default;
};

HANDLE ThreadDpiContext()
{
    using Get = HANDLE(WINAPI*)();
    const auto get = reinterpret_cast<Get>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetThreadDpiAwarenessContext")));
    return get != nullptr ? get() : nullptr;
}

HostState Snapshot()
{
    HostState state;
    wchar_t directory[MAX_PATH] = L"";
    GetCurrentDirectoryW(MAX_PATH, directory);
    state.directory = directory;
    state.floatingPoint = _mm_getcsr();
    state.errorMode = GetThreadErrorMode();
    state.dpiContext = ThreadDpiContext();
    state.cursor = GetCursor();
    GetCurrentActCtx(&state.activationContext);
    if (state.activationContext != nullptr)
        ReleaseActCtx(state.activationContext);
    APTTYPEQUALIFIER qualifier;
    if (CoGetApartmentType(&state.apartment, &qualifier) != S_OK)
        state.apartment = APTTYPE_CURRENT; // not initialised
    return state;
}

// A printing program's thread, with COM in a mode of its choice, that calls the module while the test drives the sheet.
class PrintingProgram {
public:
    explicit PrintingProgram(DWORD comMode) : comMode_(comMode) { session_.SetDefault(L"ApplyDefaults", 1u); }

    static constexpr DWORD kNoCom = 0xFFFFFFFF;

    void SendOneFax()
    {
        session_.Start([this] { Print(); });
        host::UiDriver& ui = session_.Ui();
        ui.WaitForControl(IDC_FAX_NUMBER);
        ui.Type(IDC_NAME_BOX, L"Ann");
        ui.Type(IDC_FAX_NUMBER, L"5550100");
        ui.Press(IDC_ADD_TO_PHONE_BOOK); // saves the phone book, through COM
        ui.Check(IDC_COVER_PAGE, true);
        const HWND sheet = ui.Dialog();
        ui.Press(IDC_BROWSE);
        ChooseImage(ui, sheet);
        EXPECT_EQ(ui.Text(IDC_IMAGE), image_.native());
        EXPECT_EQ(std::filesystem::current_path(), directory_);
        ui.Press(IDOK);
        session_.End();
    }

    void ExpectSentAndUntouched()
    {
        EXPECT_EQ(session_.Record().Cancelled, 0u);
        EXPECT_TRUE(std::filesystem::exists(session_.PhoneBookFile()));
        EXPECT_EQ(after_.directory, before_.directory);
        EXPECT_EQ(after_.floatingPoint, before_.floatingPoint);
        EXPECT_EQ(after_.errorMode, before_.errorMode);
        EXPECT_EQ(after_.dpiContext, before_.dpiContext);
        EXPECT_EQ(after_.cursor, before_.cursor);
        EXPECT_EQ(after_.activationContext, before_.activationContext);
        EXPECT_EQ(after_.apartment, before_.apartment);
    }

private:
    void Print()
    {
        const bool initialised = comMode_ != kNoCom && SUCCEEDED(CoInitializeEx(nullptr, comMode_));
        _mm_setcsr(_mm_getcsr() & ~static_cast<unsigned>(_MM_MASK_DIV_ZERO));
        SetCursor(LoadCursorW(nullptr, IDC_CROSS));
        before_ = Snapshot();
        session_.Call();
        after_ = Snapshot();
        if (initialised)
            CoUninitialize();
    }

    // The file dialog belongs to the thread that shows the sheet, or to one beside it.
    HWND WaitForFileDialog(HWND sheet)
    {
        for (int i = 0; i < 2000; ++i, Sleep(10)) {
            for (HWND dialog = nullptr; (dialog = FindWindowExW(nullptr, dialog, L"#32770", nullptr)) != nullptr;) {
                if (dialog != sheet && IsWindowVisible(dialog) && GetWindow(dialog, GW_OWNER) == sheet)
                    return dialog;
            }
        }
        throw std::runtime_error("no file dialog appears");
    }

    void ChooseImage(host::UiDriver& ui, HWND sheet)
    {
        const HWND dialog = WaitForFileDialog(sheet);
        const DWORD thread = GetWindowThreadProcessId(dialog, nullptr);
        EXPECT_FALSE(IsWindowEnabled(sheet));
        DWORD_PTR ignored = 0;
        EXPECT_TRUE(SendMessageTimeoutW(sheet, WM_NULL, 0, 0, SMTO_NORMAL, 10000, &ignored)) << "the sheet hangs";
        if (thread == session_.UiThread()) {
            EXPECT_NE(comMode_, static_cast<DWORD>(COINIT_MULTITHREADED));
            ui.AnswerFileDialog(image_);
        } else {
            const HANDLE ended = OpenThread(SYNCHRONIZE, FALSE, thread);
            host::UiDriver(thread, ended).AnswerFileDialog(image_);
            CloseHandle(ended);
        }
        ui.WaitForControl(IDC_IMAGE);
        for (int i = 0; i < 1000 && ui.Text(IDC_IMAGE).empty(); ++i) // the thread beside it hands the name over
            Sleep(10);
        EXPECT_TRUE(IsWindowEnabled(sheet));
        EXPECT_EQ(GetForegroundWindow(), sheet);
    }

    DWORD comMode_;
    const std::filesystem::path directory_ = std::filesystem::current_path();
    const TemporaryFolder folder_;
    const std::filesystem::path image_ = folder_.NewFile(L"logo.bmp");
    HostState before_, after_;
    SendFaxSession session_; // ends before what its thread uses
};

class GuestSession : public testing::TestWithParam<DWORD> {};

TEST_P(GuestSession, ThePrintingProgramsStateIsWhatItWas)
{
    PrintingProgram program(GetParam());
    program.SendOneFax();
    program.ExpectSentAndUntouched();
}

INSTANTIATE_TEST_SUITE_P(ComModes, GuestSession,
                         testing::Values(PrintingProgram::kNoCom, static_cast<DWORD>(COINIT_APARTMENTTHREADED),
                                         static_cast<DWORD>(COINIT_MULTITHREADED)));

TEST(GuestSession, ASheetWithoutAnOwnerComesToTheFront)
{
    SendFaxSession session; // its thread has no window, so none is active
    session.SetDefault(L"ApplyDefaults", 1u);
    session.Start();
    const HWND sheet = session.Ui().Dialog();
    session.Ui().Settle();
    EXPECT_EQ(GetWindow(sheet, GW_OWNER), nullptr);
    EXPECT_EQ(GetForegroundWindow(), sheet);
}

} // namespace
} // namespace qx::test
