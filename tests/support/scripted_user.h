// A user who lives on the thread that shows the dialogs: quick, and there whatever fails. Each step is done when its
// dialog is there; message boxes are agreed to. When a step cannot be done, or when there are no more, everything is
// closed.
#pragma once

#include "support/dialog_hands.h"

#include <functional>
#include <vector>
#include <windows.h>

namespace qx::test {

class ScriptedUser : public DialogHands {
public:
    using Step = std::function<void(ScriptedUser&)>;

    // Of the calling thread, which is to show the dialogs.
    explicit ScriptedUser(std::vector<Step> steps);
    ~ScriptedUser();

    bool GaveUp() const { return gaveUp_; }

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l);
    void Tick();
    void Agree(HWND box);
    void CloseIt(HWND dialog);

    std::vector<Step> steps_;
    std::size_t next_ = 0;
    HWND window_ = nullptr;
    HWND busyWith_ = nullptr; // the dialog that a step acts on
    int tries_ = 0;
    int boxes_ = 0;
    bool gaveUp_ = false;
};

} // namespace qx::test
