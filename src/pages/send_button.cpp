#include "pages/send_button.h"

#include "dialog/button_width.h"
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

// How much wider the preview caption is on the button.
int ExtraWidth(HWND sheet, HWND button, const std::wstring& preview, const std::wstring& send) noexcept
{
    const WindowDc dc(sheet);
    const auto font = reinterpret_cast<HGDIOBJ>(SendMessageW(button, WM_GETFONT, 0, 0));
    const SelectedObject selected(dc.Get(), font != nullptr ? font : GetStockObject(SYSTEM_FONT));
    return TextWidth(dc.Get(), preview) - TextWidth(dc.Get(), send);
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
        Widen(button, *growth, 0);
    } else if (!preview && growth && SameCaption(current, previewAndSend)) {
        Widen(button, -*growth, 0);
        growth.reset();
    }
    SetWindowTextW(button, (preview ? previewAndSend : send).c_str());
}

} // namespace qx
