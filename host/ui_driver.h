// Drives the dialogs that another thread of this process shows, as a user would.
//
// Nothing here sleeps for luck. An action is put into the UI thread's message queue, followed by a marker; when the
// thread fetches the marker, the action has been carried out, and if it opened a dialog or a message box, that one's
// message loop is the one that fetched it. So after each call the next question can be asked at once. Only windows that
// are still to appear are waited for, with a deadline.
//
// All functions act on the dialog that the user can act on now: the innermost modal one. Controls are named by their
// id; in a property sheet these are the controls of the page shown, except the sheet's own buttons (IDOK, IDCANCEL,
// kHelpButton). A step that a user could not do (no such control, disabled, hidden) throws UiFailure.
#pragma once

#include "base/no_copy.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>
#include <windows.h>

namespace qx::host {

inline constexpr int kHelpButton = 9; // of a property sheet

// A step could not be done; the text (UTF-8) says why and what was on screen.
class UiFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct BoxContents {
    std::wstring title;
    std::wstring text;
    UINT icon = 0;            // MB_ICONERROR, MB_ICONWARNING, MB_ICONQUESTION, MB_ICONINFORMATION or 0
    std::vector<int> buttons; // IDOK, IDYES, ...
    bool operator==(const BoxContents&) const = default;
};

class UiDriver : NoCopy {
public:
    // uiThread shows the dialogs; finished (not owned) is set when it shows no more. One driver per process at a time;
    // all calls from one thread, never from the UI thread.
    UiDriver(DWORD uiThread, HANDLE finished);
    ~UiDriver();

    // How long a window may take to appear, and an action to be carried out. 20 seconds unless set.
    void SetPatience(std::chrono::milliseconds patience) { patience_ = patience; }

    // ---- what is there
    HWND Dialog();          // waits for one
    HWND DialogNow() const; // null when there is none
    HWND Page();            // the page shown when the dialog is a property sheet, else the dialog
    HWND Control(int id);
    bool HasControl(int id);
    std::wstring Title();
    bool Finished() const; // the UI thread shows no more dialogs

    // ---- waiting
    void WaitForControl(int id); // for a dialog (or page) that has it, visible
    void WaitForTitle(std::wstring_view title);
    BoxContents WaitForBox();
    void WaitForEnd();
    void Settle(); // until the UI thread has carried out all that was posted to it

    // ---- reading
    std::wstring Text(int id);
    bool IsEnabled(int id);
    bool IsVisible(int id);
    bool IsChecked(int id);
    int FocusedControl(); // id, a combo box standing for its edit field; 0 when nothing has the focus
    std::vector<std::wstring> ComboItems(int id);
    int RowCount(int id); // of a list view
    int ColumnCount(int id);
    std::wstring ColumnTitle(int id, int column);
    std::wstring CellText(int id, int row, int column);
    std::vector<std::wstring> Row(int id, int row);
    std::vector<int> SelectedRows(int id);

    // ---- acting
    void Press(int id);               // a button of any kind
    void Check(int id, bool checked); // presses the check box when it is not that already
    void Choose(int radioButton);
    void Type(int id, std::wstring_view text);     // replaces the text, key by key
    void TypeMore(int id, std::wstring_view text); // types at the caret, key by key
    void Paste(int id, const std::wstring& text);  // replaces the text in one step
    void Focus(int id);
    void Select(int id, int item); // an item of a combo box
    void DropDown(int id, bool open);
    void SelectRows(int id, const std::vector<int>& rows); // waits for these; the last one gets the row focus
    void DoubleClickRow(int id, int row);
    void ClickColumn(int id, int column);
    void GoToPage(int index);
    // Real keyboard input to the window with the focus. modifiers: any of VK_CONTROL, VK_SHIFT, VK_MENU.
    void PressKey(WORD key, const std::vector<WORD>& modifiers = {});
    void HoldKey(WORD key, int times); // down so often before it is released, as a keyboard repeats it
    BoxContents AnswerBox(int button); // waits for a message box, presses its button, says what it said
    void AnswerFileDialog(const std::filesystem::path& file); // waits for it, types the name and confirms
    void CloseEverything();                                   // cancels whatever is open until the end

    // Runs a function on the UI thread, as part of its message loop. Returns when it is done or has opened a dialog.
    void Do(std::function<void()> action);

    // ---- looking
    void SavePicture(const std::filesystem::path& file);       // the dialog
    void SaveScreenPicture(const std::filesystem::path& file); // all dialogs of the thread

private:
    template <class Condition> void WaitUntil(Condition condition, const std::string& what);
    HWND UsableControl(int id);
    HWND EditOf(int id);
    LRESULT Ask(HWND window, UINT message, WPARAM w = 0, LPARAM l = 0) const;
    std::wstring TextOf(HWND window) const;
    void HearTheDisplay();
    void SendKeys(std::vector<INPUT> inputs);
    [[noreturn]] void Fail(const std::string& what) const;
    std::string Describe() const;

    DWORD uiThread_;
    HANDLE finished_;
    HHOOK hook_ = nullptr;
    HWND known_ = nullptr; // the dialog that was seen to be ready
    std::chrono::milliseconds patience_{20000};
};

} // namespace qx::host
