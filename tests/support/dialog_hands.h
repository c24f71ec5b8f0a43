// What a user's hands do in one dialog of the thread they live on, or on the page of a sheet that is shown: quick, and
// there whatever fails. What a user could not do throws.
#pragma once

#include "base/no_copy.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>
#include <windows.h>

namespace qx::test {

class NotUsable : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// GetDlgItem for controls that are asked for again and again: Wine asks another process each time. NULL when there is
// none.
HWND ItemOf(HWND dialog, int id);

class DialogHands : NoCopy {
public:
    HWND Dialog() const { return dialog_; }
    bool IsSheet() const;
    HWND Control(int id) const; // of the page shown, or the dialog
    bool IsEnabled(int id) const { return IsWindowEnabled(Control(id)) != FALSE; }
    std::wstring Text(int id) const;

    void Paste(int id, const std::wstring& text); // in the place of all that is there
    void Check(int id, bool checked);
    void Press(int id);
    void PressSheet(int id); // a button of the sheet
    void GoToPage(int index);
    void SelectRows(int id, const std::vector<int>& rows);
    void ChooseFile(const std::filesystem::path& file);
    void AskForHelp(int id); // F1 in a control

protected:
    void TakeUp(HWND dialog); // from now on
    HWND Page() const { return page_; }

private:
    HWND Usable(int id) const;

    HWND dialog_ = nullptr;
    HWND page_ = nullptr;
};

// ---- in any window of the thread, wherever the focus is

void PressKeyIn(HWND window, WPARAM key);
void PressAltKeyIn(HWND window, WPARAM key);         // with Alt held
void PasteInto(HWND edit, const std::wstring& text); // in the place of all that is there
void ClickArrowOf(HWND combo);
// With the mouse, at a row of a list box.
POINT MiddleOfRow(HWND list, int row);
void HoverRow(HWND list, int row);
void ClickRow(HWND list, int row);

// The mailbox of a user who lives on a thread.
HWND NewMessageWindow(const wchar_t* className, WNDPROC procedure);

// Closes a message box, a file dialog or any other by its button or key for that.
void PressCancel(HWND dialog);
// Presses the first of these answers that a message box offers.
void Answer(HWND box, const std::vector<int>& answers);

} // namespace qx::test
