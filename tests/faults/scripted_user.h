// A user who lives on the thread that shows the dialogs: quick, and there whatever fails. Each step is done when its
// dialog is there; message boxes are agreed to. When a step cannot be done, or when there are no more, everything is
// closed.
#pragma once

#include "base/no_copy.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>
#include <windows.h>

namespace qx::test {

class ScriptedUser : NoCopy {
public:
    using Step = std::function<void(ScriptedUser&)>;

    // Of the calling thread, which is to show the dialogs.
    explicit ScriptedUser(std::vector<Step> steps);
    ~ScriptedUser();

    // ---- for steps; what a user could not do throws
    HWND Dialog() const { return dialog_; }
    HWND Control(int id) const; // of the page shown, or the dialog
    std::wstring Text(int id) const;
    void Paste(int id, const std::wstring& text);
    void Check(int id, bool checked);
    void Press(int id);
    void PressSheet(int id); // a button of the sheet
    void GoToPage(int index);
    void SelectRows(int id, const std::vector<int>& rows);
    void ChooseFile(const std::filesystem::path& file);
    void AskForHelp(int id); // F1 in a control
    bool IsSheet() const;

    // ---- afterwards
    bool GaveUp() const { return gaveUp_; }

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l);
    void Tick();
    void Agree(HWND box);
    void CloseIt(HWND dialog);
    HWND Usable(int id) const;

    std::vector<Step> steps_;
    std::size_t next_ = 0;
    HWND window_ = nullptr;
    HWND dialog_ = nullptr;
    HWND busyWith_ = nullptr; // the dialog that a step acts on
    int tries_ = 0;
    int boxes_ = 0;
    bool gaveUp_ = false;
};

} // namespace qx::test
