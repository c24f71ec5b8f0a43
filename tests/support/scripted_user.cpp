#include "scripted_user.h"

#include "host/window_query.h"

#include <algorithm>
#include <utility>

namespace qx::test {

namespace {

constexpr UINT_PTR kTimer = 1;
constexpr UINT kTickMilliseconds = 10; // a timer's message comes when all others are done
constexpr int kTries = 4;
constexpr int kMostBoxes = 12;

using host::ChildrenOf;
using host::IsOfClass;

HWND TopDialog()
{
    for (const HWND window : host::WindowsOf(GetCurrentThreadId())) {
        if (IsOfClass(window, L"#32770") && IsWindowVisible(window) && IsWindowEnabled(window))
            return window;
    }
    return nullptr;
}

// A message box has nothing but a text, an icon and buttons of the standard answers.
bool IsBox(HWND dialog)
{
    const std::vector<HWND> children = ChildrenOf(dialog);
    return !children.empty() && std::ranges::all_of(children, [](HWND child) {
        const int id = GetDlgCtrlID(child);
        return IsOfClass(child, L"Static") || (IsOfClass(child, L"Button") && id >= IDOK && id <= IDCONTINUE);
    });
}

} // namespace

ScriptedUser::ScriptedUser(std::vector<Step> steps) : steps_(std::move(steps))
{
    window_ = NewMessageWindow(L"qx_scripted_user", Procedure);
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    SetTimer(window_, kTimer, kTickMilliseconds, nullptr);
}

ScriptedUser::~ScriptedUser()
{
    DestroyWindow(window_);
}

LRESULT CALLBACK ScriptedUser::Procedure(HWND window, UINT message, WPARAM w, LPARAM l)
{
    auto* const self = reinterpret_cast<ScriptedUser*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_TIMER && self != nullptr) {
        self->Tick();
        return 0;
    }
    return DefWindowProcW(window, message, w, l);
}

void ScriptedUser::Tick()
{
    const HWND dialog = TopDialog();
    // A dialog that is still carrying out a step may wait with its messages running.
    if (dialog == nullptr || dialog == busyWith_)
        return;
    TakeUp(dialog);
    const HWND outer = std::exchange(busyWith_, dialog);
    if (IsBox(dialog)) {
        Agree(dialog);
    } else if (gaveUp_ || next_ == steps_.size()) {
        CloseIt(dialog);
    } else {
        const std::size_t step = next_++;
        const int tries = std::exchange(tries_, 0);
        try {
            steps_[step](*this);
        } catch (const std::exception&) {
            next_ = step;
            tries_ = tries + 1;
            gaveUp_ = tries_ == kTries;
        }
    }
    busyWith_ = outer;
}

void ScriptedUser::Agree(HWND box)
{
    // The same box again and again has to be got rid of otherwise.
    if (++boxes_ <= kMostBoxes)
        Answer(box, {IDYES, IDOK, IDRETRY, IDCANCEL});
    else
        Answer(box, {IDCANCEL, IDNO, IDOK});
}

void ScriptedUser::CloseIt(HWND dialog)
{
    gaveUp_ = true; // once closing, always closing
    PressCancel(dialog);
}

} // namespace qx::test
