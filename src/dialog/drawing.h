// Owners for drawing: what a device context is and holds only for a while.
#pragma once

#include "base/unique.h"

namespace qx {

using UniqueMemoryDc = Unique<NullEmpty<HDC, DeleteDC>>;

// The device context of a window's client area.
class WindowDc {
public:
    explicit WindowDc(HWND window) noexcept : window_(window), dc_(GetDC(window)) {}
    ~WindowDc() { ReleaseDC(window_, dc_); }
    WindowDc(const WindowDc&) = delete;
    WindowDc& operator=(const WindowDc&) = delete;

    HDC Get() const noexcept { return dc_; }

private:
    HWND window_;
    HDC dc_;
};

// The object is selected into the device context while this lives.
class SelectedObject {
public:
    SelectedObject(HDC dc, HGDIOBJ object) noexcept : dc_(dc), previous_(SelectObject(dc, object)) {}
    ~SelectedObject() { SelectObject(dc_, previous_); }
    SelectedObject(const SelectedObject&) = delete;
    SelectedObject& operator=(const SelectedObject&) = delete;

private:
    HDC dc_;
    HGDIOBJ previous_;
};

} // namespace qx
