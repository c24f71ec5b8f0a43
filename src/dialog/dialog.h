// One dialog procedure for all dialogs and pages. A dialog is a state struct, a TextOwner with a member `HWND dialog`,
// and one constant that describes it: Dialog<State>.
#pragma once

#include "base/activation_context.h"
#include "base/guarded.h"
#include "base/module.h"
#include "dialog/announcements.h"
#include "dialog/controls.h"

#include <windows.h> // before the headers that build on it

#include <commctrl.h>
#include <prsht.h>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace qx {

// What the user does to a control, and the function that answers. Commands and notifications share the table: their
// codes cannot collide.
template <class State> struct Route {
    int control;
    UINT code;
    void (*run)(State&);
};

// The ids of a template and of its right-to-left twin.
struct DialogTemplate {
    int leftToRight;
    int rightToLeft;
    int Id(bool mirrored = IsRightToLeftUi()) const noexcept { return mirrored ? rightToLeft : leftToRight; }
};

template <class State> struct Dialog {
    DialogTemplate ids;
    Text title = {}; // id 0: none, as for a page, whose tab is the sheet's business
    std::span<const Control> controls;
    std::span<const Route<State>> routes;
    // Fills the dialog. Title, captions and limits are set; nothing that a control sends meanwhile is routed.
    void (*fill)(State&);
    // Every message that no route has taken; FALSE: not handled. Null: there are none.
    INT_PTR (*other)(State&, UINT message, WPARAM, LPARAM) = nullptr;
    // Of a page: it could not be filled, and shows what is not so.
    void (*couldNotBeFilled)(State&) noexcept = nullptr;
    // Somebody listens: what a screen reader does not find by itself, besides the labels of lists. Null: nothing.
    void (*announce)(State&, Announcements&) = nullptr;
};

// The state of a dialog, or null with the last error ERROR_INVALID_DATA.
template <class State> State* StateOf(HWND dialog) noexcept
{
    auto* const state = reinterpret_cast<State*>(GetWindowLongPtrW(dialog, GWLP_USERDATA));
    if (state == nullptr)
        SetLastError(ERROR_INVALID_DATA);
    return state;
}

template <class State>
INT_PTR RunRoute(std::span<const Route<std::type_identity_t<State>>> routes, State& state, int control, UINT code)
{
    for (const Route<State>& route : routes) {
        if (route.control == control && route.code == code) {
            route.run(state);
            return TRUE;
        }
    }
    return FALSE;
}

// What DWLP_MSGRESULT and a TRUE answer amount to, in one expression.
inline INT_PTR Answer(HWND dialog, LONG_PTR result) noexcept
{
    SetWindowLongPtrW(dialog, DWLP_MSGRESULT, result);
    return TRUE;
}

// Context help on systems whose dialogs do not have it by themselves; the title; captions and limits.
void PrepareDialog(const TextOwner& texts, HWND dialog, const Text& title, std::span<const Control> controls);

template <class State> INT_PTR InitializeDialog(const Dialog<State>& description, HWND dialog, State* state)
{
    if (state == nullptr) {
        SetLastError(ERROR_INVALID_DATA);
        return FALSE;
    }
    state->dialog = dialog;
    PrepareDialog(*state, dialog, description.title, description.controls);
    description.fill(*state);
    // Stored last: the notifications that filling a control sends are ours, not the user's.
    SetWindowLongPtrW(dialog, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(state));
    if (StateOf<State>(dialog) != state)
        throw std::runtime_error("the dialog cannot keep its state"); // it would answer no button
    return !IsChild(dialog, GetFocus());                              // FALSE keeps a focus that fill has set
}

// Not every system looks whether the default button is on before Enter presses it.
bool IsClickOfDisabledButton(HWND dialog, UINT message, WPARAM w) noexcept;

// Only the top-level window hears of other system colours, and lists keep those that they were made with.
void PassColorChangeOn(HWND window) noexcept;

// What a dialog does with a message that is not its own business: Cancel ends it, help is shown or ends here.
INT_PTR AnswerAsEveryDialog(const TextOwner& texts, HWND dialog, UINT message, WPARAM w, LPARAM l,
                            std::span<const Control> controls);

template <class State>
INT_PTR DispatchDialogMessage(const Dialog<State>& description, HWND dialog, UINT message, WPARAM w, LPARAM l)
{
    State* const state = StateOf<State>(dialog);
    if (state == nullptr)
        return FALSE;
    if (FollowListeners(dialog, message)) {
        Announcements& announcements = *Announcements::Of(dialog);
        announcements.NameLists();
        if (description.announce != nullptr)
            description.announce(*state, announcements);
        return TRUE;
    }
    if (message == WM_SYSCOLORCHANGE)
        PassColorChangeOn(dialog);
    if (IsClickOfDisabledButton(dialog, message, w))
        return TRUE;
    if (message == WM_COMMAND && RunRoute(description.routes, *state, LOWORD(w), HIWORD(w)))
        return TRUE;
    if (message == WM_NOTIFY) {
        const auto& header = *reinterpret_cast<const NMHDR*>(l);
        if (RunRoute(description.routes, *state, static_cast<int>(header.idFrom), header.code))
            return TRUE;
        // Nobody wants to hear of each of ten thousand rows that a list gives up.
        if (header.code == static_cast<UINT>(LVN_DELETEALLITEMS))
            return Answer(dialog, TRUE);
    }
    if (description.other != nullptr) {
        if (const INT_PTR answer = description.other(*state, message, w, l))
            return answer;
    }
    return AnswerAsEveryDialog(*state, dialog, message, w, l, description.controls);
}

template <class State>
INT_PTR RunDialog(const Dialog<State>& description, HWND dialog, UINT message, WPARAM w, LPARAM l) noexcept
{
    constexpr INT_PTR kThrown = -1;
    const INT_PTR answer = Guarded<INT_PTR>(message == WM_INITDIALOG ? kThrown : FALSE, [&]() -> INT_PTR {
        if (message == WM_INITDIALOG)
            return InitializeDialog(description, dialog, reinterpret_cast<State*>(l));
        return DispatchDialogMessage(description, dialog, message, w, l);
    });
    if (message != WM_INITDIALOG || answer != kThrown)
        return answer;
    EndDialog(dialog, -1);
    return FALSE;
}

// The state is the creation parameter. A dialog that could not be filled for lack of memory would answer no button: it
// ends at once instead.
template <const auto& kDialog> INT_PTR CALLBACK DialogProcedure(HWND dialog, UINT message, WPARAM w, LPARAM l) noexcept
{
    return RunDialog(kDialog, dialog, message, w, l);
}

// What every page of a sheet has to do itself: Escape in a field of several lines closes the field's parent, which is
// the page and not the sheet; and the theme's ground of a page is that of its fields that cannot be edited, too, unless
// the page says otherwise. FALSE: not one of these messages.
INT_PTR AnswerAsPage(HWND page, UINT message, WPARAM w, LPARAM l) noexcept;

template <class State>
INT_PTR RunPage(const Dialog<State>& description, HWND dialog, UINT message, WPARAM w, LPARAM l) noexcept
{
    constexpr INT_PTR kThrown = -1;
    const auto* const page = message == WM_INITDIALOG ? reinterpret_cast<const PROPSHEETPAGEW*>(l) : nullptr;
    State* const created = page != nullptr ? reinterpret_cast<State*>(page->lParam) : nullptr;
    const INT_PTR answer = Guarded<INT_PTR>(kThrown, [&]() -> INT_PTR {
        if (message == WM_INITDIALOG)
            return InitializeDialog(description, dialog, created);
        if (const INT_PTR asPage = AnswerAsPage(dialog, message, w, l))
            return asPage;
        return DispatchDialogMessage(description, dialog, message, w, l);
    });
    if (answer != kThrown)
        return answer;
    if (created != nullptr)
        description.couldNotBeFilled(*created);
    if (message == WM_NOTIFY && reinterpret_cast<const NMHDR*>(l)->code == static_cast<UINT>(PSN_APPLY))
        return Answer(dialog, PSNRET_INVALID);
    return FALSE;
}

// A property page finds its state in the description that the sheet passes on. One that cannot answer the sheet's
// PSN_APPLY refuses it.
template <const auto& kPage> INT_PTR CALLBACK PageProcedure(HWND page, UINT message, WPARAM w, LPARAM l) noexcept
{
    return RunPage(kPage, page, message, w, l);
}

// Shows a modal dialog and answers what it ended with; -1 when it could not be shown.
template <const auto& kDialog, class State>
INT_PTR ShowModal(HWND owner, State& state, bool mirrored = IsRightToLeftUi()) noexcept
{
    static_assert(std::is_same_v<decltype(kDialog), const Dialog<State>&>);
    const ActivationScope context;
    return DialogBoxParamW(ModuleInstance(), MAKEINTRESOURCEW(kDialog.ids.Id(mirrored)), owner,
                           DialogProcedure<kDialog>, reinterpret_cast<LPARAM>(&state));
}

// ---- keys -----------------------------------------------------------------------------------------------------------

// The keystroke that a WM_GETDLGCODE asks about; null when it asks about all keys.
inline const MSG* KeystrokeAskedAbout(LPARAM question) noexcept
{
    const auto* const message = reinterpret_cast<const MSG*>(question);
    return message != nullptr && message->message == WM_KEYDOWN ? message : nullptr;
}

// Of a WM_KEYDOWN: the key is held down, maybe since another dialog was here.
inline bool IsRepeated(LPARAM keystroke) noexcept
{
    return (HIWORD(keystroke) & KF_REPEAT) != 0;
}

// ---- controls -------------------------------------------------------------------------------------------------------

// The text of a window, at most units UTF-16 units of it.
std::wstring WindowText(HWND window, std::size_t units = static_cast<std::size_t>(-1));

// The text of an edit field, at most units UTF-16 units of it. Throws when it cannot be read or the field is not there,
// where WindowText answers an empty text: for what is going to be sent or stored.
std::wstring FieldText(HWND edit, std::size_t units = static_cast<std::size_t>(-1));
inline std::wstring FieldText(HWND dialog, int field, std::size_t units = static_cast<std::size_t>(-1))
{
    return FieldText(GetDlgItem(dialog, field), units);
}
// Throws when the control does not take the text, or is not there.
void SetFieldText(HWND dialog, int control, const wchar_t* text);

// Whether a check box is checked, for what is going to be sent or stored. Throws when that cannot be told.
bool IsChecked(HWND dialog, int box);
// Of a check box or a radio button. Throws when it cannot be shown.
void SetChecked(HWND dialog, int button, bool checked);

// Whether a window is of one of the system's classes ("Edit"), in any letter case.
bool IsOfClass(HWND window, const wchar_t* name) noexcept;

// Moves the keyboard focus as the Tab key would: the default button, which is the sheet's for a page, follows.
void FocusControl(HWND dialog, int control) noexcept;

// The only way in which a dialog switches its controls off and on, or hides and shows them: a control that has the
// keyboard focus first hands it on to the field or list before it, where no key presses anything, while the dialog
// manager can still tell where it was; to the next button only where there is no field.
void EnableControl(HWND dialog, int control, bool enabled) noexcept;
void ShowControl(HWND dialog, int control, bool shown) noexcept;

// As far as its dialog decides, also while the dialog, a page of the sheet say, is hidden.
bool IsShown(HWND control) noexcept;

// Whether the keyboard focus may go to a control: it is enabled, and shown as far as its dialog decides.
bool CanTakeFocus(HWND control) noexcept;

// Where a control lies in its dialog, in pixels: left is the smaller x in a mirrored dialog, too.
RECT PlaceOf(HWND control) noexcept;
bool SetPlace(HWND control, const RECT& place) noexcept;

// A control whose styles cannot be told keeps them.
inline void AddStyle(HWND control, LONG_PTR style) noexcept
{
    if (const LONG_PTR styles = GetWindowLongPtrW(control, GWL_STYLE); styles != 0)
        SetWindowLongPtrW(control, GWL_STYLE, styles | style);
}

inline bool IsMirrored(HWND window) noexcept
{
    return (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_LAYOUTRTL) != 0;
}

// Of an edit field. In doubt yes: a question that fails is answered as by an empty one.
bool HasText(HWND window) noexcept;

} // namespace qx
