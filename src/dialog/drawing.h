// Owners for drawing: what a device context is and holds only for a while.
#pragma once

#include "base/no_copy.h"
#include "base/unique.h"

namespace qx {

using UniqueMemoryDc = Unique<HDC, DeleteDC>;

// The device context of a window's client area.
class WindowDc : NoCopy {
public:
    explicit WindowDc(HWND window) noexcept : window_(window), dc_(GetDC(window)) {}
    ~WindowDc() { ReleaseDC(window_, dc_); }

    HDC Get() const noexcept { return dc_; }

private:
    HWND window_;
    HDC dc_;
};

// The object is selected into the device context while this lives.
class SelectedObject : NoCopy {
public:
    SelectedObject(HDC dc, HGDIOBJ object) noexcept : dc_(dc), previous_(SelectObject(dc, object)) {}
    ~SelectedObject() { SelectObject(dc_, previous_); }

private:
    HDC dc_;
    HGDIOBJ previous_;
};

// A list box draws by itself what has changed while it did not redraw: telling it as well would be felt with every
// keystroke in the name box. A list view has to be told.
enum class DrawsChanges { WhenTold, ByItself };

// A list is filled while this lives: row by row into one that redraws takes a hundred times as long.
class RedrawOff : NoCopy {
public:
    explicit RedrawOff(HWND list, DrawsChanges drawsChanges = DrawsChanges::WhenTold) noexcept
        : list_(list), drawsChanges_(drawsChanges)
    {
        SendMessageW(list_, WM_SETREDRAW, FALSE, 0);
    }
    ~RedrawOff()
    {
        SendMessageW(list_, WM_SETREDRAW, TRUE, 0);
        if (drawsChanges_ == DrawsChanges::WhenTold)
            InvalidateRect(list_, nullptr, TRUE);
    }

private:
    HWND list_;
    DrawsChanges drawsChanges_;
};

} // namespace qx
