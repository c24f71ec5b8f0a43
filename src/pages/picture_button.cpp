#include "pages/picture_button.h"

#include "base/window_procedure.h"
#include "dialog/access_key.h"
#include "dialog/contrast.h"
#include "dialog/dialog.h"
#include "dialog/drawing.h"

#include <algorithm>
#include <utility>

namespace qx {

namespace {

// In the picture's palette.
constexpr std::size_t kGround = 0;
constexpr std::size_t kAreas[] = {kGround, 2, 3}; // everything else is drawn on them

RGBQUAD Quad(int systemColor) noexcept
{
    const COLORREF color = GetSysColor(systemColor);
    return {GetBValue(color), GetGValue(color), GetRValue(color), 0};
}

template <class Colors> Colors InSystemColors(const Colors& drawn) noexcept
{
    Colors colors = drawn;
    if (!HasRoomForColors(COLOR_BTNTEXT, COLOR_BTNFACE)) {
        colors.fill(Quad(COLOR_BTNTEXT));
        for (const std::size_t area : kAreas)
            colors[area] = Quad(COLOR_BTNFACE);
    }
    colors[kGround] = Quad(COLOR_BTNFACE);
    return colors;
}

void Frame(HDC dc, RECT& place, int systemColor) noexcept
{
    FrameRect(dc, &place, GetSysColorBrush(systemColor));
    InflateRect(&place, -1, -1);
}

} // namespace

void PictureButton::Attach(HWND button, int bitmap)
{
    picture_.Reset(static_cast<HBITMAP>(
        LoadImageW(ModuleInstance(), MAKEINTRESOURCEW(bitmap), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)));
    {
        const UniqueMemoryDc dc(CreateCompatibleDC(nullptr));
        const SelectedObject selected(dc.Get(), picture_.Get());
        GetDIBColorTable(dc.Get(), 0, static_cast<UINT>(colors_.size()), colors_.data());
    }
    button_ = button;
    HookWithData(button, Procedure, this, previous_);
}

void PictureButton::Name(const std::wstring& text, const std::wstring& caption)
{
    SetWindowTextW(button_, caption.c_str());
    tip_ = text;
    if (const wchar_t key = AccessKeyOf(caption))
        tip_.append(L" (Alt+").append(1, key).append(L")");
}

// Once, when the pointer first comes: a window of its own would be felt when the page opens. move is that message,
// which the tooltip counts from.
void PictureButton::GiveTooltip(const MSG& move)
{
    if (tip_.empty())
        return;
    std::wstring text = std::exchange(tip_, {});
    // Goes with the page.
    const HWND tooltip = CreateWindowExW(0, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, 0, 0, 0,
                                         0, GetParent(button_), nullptr, ModuleInstance(), nullptr);
    TTTOOLINFOW tool{};
    tool.cbSize = TTTOOLINFOW_V2_SIZE;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS | (IsRightToLeftUi() ? TTF_RTLREADING : 0u);
    tool.hwnd = GetParent(button_);
    tool.uId = reinterpret_cast<UINT_PTR>(button_);
    tool.lpszText = text.data();
    SendMessageW(tooltip, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    SendMessageW(tooltip, TTM_RELAYEVENT, 0, reinterpret_cast<LPARAM>(&move));
}

// ---- drawing --------------------------------------------------------------------------------------------------------

void PictureButton::DrawPicture(HDC dc, const RECT& place) const noexcept
{
    const UniqueMemoryDc source(CreateCompatibleDC(dc));
    const SelectedObject picture(source.Get(), picture_.Get());
    const Colors colors = InSystemColors(colors_);
    SetDIBColorTable(source.Get(), 0, static_cast<UINT>(colors.size()), colors.data());
    // From a mirrored source to a mirrored target: the picture stays as it was drawn.
    SetLayout(source.Get(), GetLayout(dc));
    BITMAP size{};
    GetObjectW(picture_.Get(), sizeof size, &size);
    BitBlt(dc, place.left, place.top, std::min<int>(size.bmWidth, place.right - place.left),
           std::min<int>(size.bmHeight, place.bottom - place.top), source.Get(), 0, 0, SRCCOPY);
}

// The edges are drawn over the picture, which leaves room for them.
bool PictureButton::Draw(const DRAWITEMSTRUCT& item) const noexcept
{
    const bool pressed = (item.itemState & ODS_SELECTED) != 0;
    RECT place = item.rcItem;
    FillRect(item.hDC, &place, GetSysColorBrush(COLOR_BTNFACE));
    DrawPicture(item.hDC, place);
    Frame(item.hDC, place, isDefault_ ? COLOR_HIGHLIGHT : COLOR_BTNSHADOW);
    if (pressed)
        DrawEdge(item.hDC, &place, EDGE_SUNKEN, BF_RECT);
    else if (isHot_)
        Frame(item.hDC, place, COLOR_HOTLIGHT);
    if ((item.itemState & ODS_FOCUS) != 0 && (item.itemState & ODS_NOFOCUSRECT) == 0) {
        SetTextColor(item.hDC, GetSysColor(COLOR_BTNTEXT));
        SetBkColor(item.hDC, GetSysColor(COLOR_BTNFACE));
        InflateRect(&place, -1, -1);
        DrawFocusRect(item.hDC, &place);
    }
    return true;
}

// ---- the button's messages ------------------------------------------------------------------------------------------

void PictureButton::SetHot(bool hot) noexcept
{
    if (isHot_ == hot)
        return;
    isHot_ = hot;
    InvalidateRect(button_, nullptr, FALSE);
    TRACKMOUSEEVENT leaving{sizeof leaving, TME_LEAVE, button_, 0};
    if (hot)
        TrackMouseEvent(&leaving);
}

LRESULT PictureButton::CallPrevious(UINT message, WPARAM w, LPARAM l) const noexcept
{
    return CallWindowProcW(previous_, button_, message, w, l);
}

LRESULT PictureButton::Handle(UINT message, WPARAM w, LPARAM l)
{
    switch (message) {
    case WM_GETDLGCODE: {
        // An owner-drawn button says no more than that it is one: the dialog manager would never make it the default
        // button, and Enter would go to the one that sends.
        const MSG* const asked = KeystrokeAskedAbout(l);
        return CallPrevious(message, w, l) | (isDefault_ ? DLGC_DEFPUSHBUTTON : DLGC_UNDEFPUSHBUTTON) |
               (asked != nullptr && asked->wParam == VK_RETURN ? DLGC_WANTMESSAGE : 0);
    }
    case BM_SETSTYLE: // how the dialog manager makes a button the default one; this one stays owner-drawn
        isDefault_ = (w & BS_TYPEMASK) == BS_DEFPUSHBUTTON;
        InvalidateRect(button_, nullptr, FALSE);
        return 0;
    case WM_KEYDOWN:
        if (w != VK_RETURN)
            break;
        if (!IsRepeated(l))
            SendMessageW(GetParent(button_), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(button_), BN_CLICKED),
                         reinterpret_cast<LPARAM>(button_));
        return 0;
    case WM_MOUSEMOVE:
        SetHot(true);
        GiveTooltip({.hwnd = button_, .message = message, .wParam = w, .lParam = l, .time = 0, .pt = {}});
        break;
    case WM_MOUSELEAVE:
        SetHot(false);
        break;
    case WM_NCDESTROY:
        if (GetWindowLongPtrW(button_, GWLP_WNDPROC) == reinterpret_cast<LONG_PTR>(Procedure))
            SetWindowLongPtrW(button_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous_));
        break;
    default:
        break;
    }
    return CallPrevious(message, w, l);
}

LRESULT CALLBACK PictureButton::Procedure(HWND window, UINT message, WPARAM w, LPARAM l) noexcept
{
    return Guarded<LRESULT>(0, [&] {
        auto* const button = reinterpret_cast<PictureButton*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        return button != nullptr ? button->Handle(message, w, l) : DefWindowProcW(window, message, w, l);
    });
}

} // namespace qx
