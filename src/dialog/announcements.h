// What a screen reader says of controls and rows where it would find less by itself: names that are given to the system
// by direct annotation. A system that does not offer it goes on saying what it finds.
#pragma once

#include "base/no_copy.h"

#include <map>
#include <string>
#include <utility>
#include <windows.h>

namespace qx {

// Sent to a dialog by itself, after a screen reader has asked for it: COM is not to be used while that one waits.
inline constexpr UINT kListenerHasCome = WM_USER + 104;

// Of one dialog, on its thread. None of the functions fails in a way that anybody sees.
class Announcements : NoCopy {
public:
    // Those of a dialog, or null as long as nobody listens: then nothing needs to be said, and nothing costs any time.
    static Announcements* Of(HWND dialog) noexcept;

    explicit Announcements(HWND dialog) noexcept : dialog_(dialog) {}
    ~Announcements();

    // The control's name from now on, instead of its label or text.
    void Name(int control, const std::wstring& name) noexcept;
    // And it is said at once, wherever the keyboard focus is.
    void Say(int control, const std::wstring& name) noexcept;
    // Rows of a list by their number; all others go by what they show.
    void NameRows(HWND list, const std::map<int, std::wstring>& names) noexcept;
    // Every list by the label before it, which not every system looks for.
    void NameLists() noexcept;

private:
    using Element = std::pair<HWND, DWORD>; // CHILDID_SELF, or the number of a row, from 1 on

    void Replace(const std::map<Element, std::wstring>& names);

    HWND dialog_;
    std::map<Element, std::wstring> names_; // that the system has taken
};

// For every message of a dialog, before it is answered. True when a screen reader has just begun to listen: whatever it
// could not find out by itself is to be said.
bool FollowListeners(HWND dialog, UINT message);

// What stands before a control, as it is read aloud: without the mark of its access key. Empty when no label does.
std::wstring LabelOf(HWND control);

} // namespace qx
