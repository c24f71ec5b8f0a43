// An owner-drawn button that shows a picture, and otherwise is a button like any other: Enter presses it while it has
// the focus, it looks pressed, hot, focused and default when it is, it has a tooltip and an access key.
#pragma once

#include "base/no_copy.h"
#include "base/unique.h"

#include <array>
#include <string>

namespace qx {

class PictureButton : NoCopy {
public:
    // button is owner-drawn, its window data are free, and it does not outlive this object. bitmap is a resource of the
    // module with 16 colours; how they follow the system's is said where it is drawn. Throws when button is not there,
    // or does not let itself be hooked.
    void Attach(HWND button, int bitmap);

    // text is what the tooltip shows, together with the key of caption, which is text with a letter marked; a screen
    // reader says it.
    void Name(const std::wstring& text, const std::wstring& caption);

    // For WM_DRAWITEM.
    bool Draw(const DRAWITEMSTRUCT& item) const noexcept;

private:
    using Colors = std::array<RGBQUAD, 16>;

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l) noexcept;
    LRESULT Handle(UINT message, WPARAM w, LPARAM l);
    LRESULT CallPrevious(UINT message, WPARAM w, LPARAM l) const noexcept;
    void SetHot(bool hot) noexcept;
    void GiveTooltip(const MSG& move);
    void DrawPicture(HDC dc, const RECT& place) const noexcept;

    HWND button_ = nullptr;
    WNDPROC previous_ = nullptr;
    UniqueBitmap picture_;
    Colors colors_{};  // of the picture, as it was drawn
    std::wstring tip_; // of the tooltip, until there is one
    bool isHot_ = false;
    bool isDefault_ = false; // the button that Enter presses
};

} // namespace qx
