// The turns of a user who lives on the thread that shows the dialogs: he gets one whenever a dialog waits for him and
// everything that was posted is done.
#pragma once

#include "base/no_copy.h"
#include "events.h"

#include <functional>
#include <map>
#include <windows.h>

namespace qx::test {

class Turns : NoCopy {
public:
    using Take = std::function<void(HWND dialog, Place place)>;

    explicit Turns(Take take);
    ~Turns();

    // Around a session.
    void Begin() const;
    void End() const;

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l);
    void Give();
    Place PlaceOf(HWND dialog);

    const Take take_;
    HWND window_ = nullptr;
    HWND busyWith_ = nullptr; // the dialog in which the user is doing something
    struct Known {
        HWND mark = nullptr; // the control by which it is known
        Place place = Place::None;
    };
    std::map<HWND, Known> places_; // of the dialogs that have been there
    static inline Turns* current_ = nullptr;
};

} // namespace qx::test
