#include "pages/send_button.h"

#include "dialog/dialog.h"
#include "dialog/drawing.h"

namespace qx {

namespace {

// The sheet itself writes the built-in Send caption without the blank: both are the same caption.
std::wstring WithoutTrailingBlanks(const std::wstring& text)
{
    return text.substr(0, text.find_last_not_of(L' ') + 1);
}

bool SameCaption(const std::wstring& a, const std::wstring& b)
{
    return WithoutTrailingBlanks(a) == WithoutTrailingBlanks(b);
}

int TextWidth(HDC dc, const std::wstring& text) noexcept
{
    RECT area{};
    DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &area, DT_SINGLELINE | DT_CALCRECT);
    return area.right - area.left;
}

// How much wider the preview caption is on the button.
int ExtraWidth(HWND sheet, HWND button, const std::wstring& preview, const std::wstring& send) noexcept
{
    const WindowDc dc(sheet);
    const auto font = reinterpret_cast<HGDIOBJ>(SendMessageW(button, WM_GETFONT, 0, 0));
    const SelectedObject selected(dc.Get(), font != nullptr ? font : GetStockObject(SYSTEM_FONT));
    return TextWidth(dc.Get(), preview) - TextWidth(dc.Get(), send);
}

// Moves the edge where a line begins. Mapping the two corners at once keeps left the smaller x, so that in a mirrored
// sheet it is the button's right edge on screen.
void Widen(HWND sheet, HWND button, int pixels) noexcept
{
    RECT area;
    GetWindowRect(button, &area);
    MapWindowPoints(HWND_DESKTOP, sheet, reinterpret_cast<POINT*>(&area), 2);
    SetWindowPos(button, nullptr, area.left - pixels, area.top, area.right - area.left + pixels, area.bottom - area.top,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

} // namespace

void FitSendButton(const TextOwner& texts, HWND sheet, bool preview, SendButtonGrowth& growth)
{
    const HWND button = GetDlgItem(sheet, IDOK);
    if (button == nullptr)
        return;
    const std::wstring send = LocalizedText(texts, kSendText);
    const std::wstring previewAndSend = LocalizedText(texts, kPreviewAndSendText);
    const std::wstring current = WindowText(button);
    if (preview && !growth && SameCaption(current, send)) {
        growth = ExtraWidth(sheet, button, previewAndSend, send);
        Widen(sheet, button, *growth);
    } else if (!preview && growth && SameCaption(current, previewAndSend)) {
        Widen(sheet, button, -*growth);
        growth.reset();
    }
    SetWindowTextW(button, (preview ? previewAndSend : send).c_str());
}

} // namespace qx
