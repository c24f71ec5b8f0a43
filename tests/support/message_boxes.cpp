#include "support/message_boxes.h"

#include <utility>

namespace qx::test {

namespace {

constexpr int kBoxText = 0xFFFF; // id of the text in a message box

thread_local MessageBoxes* t_boxes = nullptr;

std::wstring TextOf(HWND window)
{
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)), L'\0');
    GetWindowTextW(window, text.data(), static_cast<int>(text.size()) + 1);
    return text;
}

} // namespace

MessageBoxes::MessageBoxes(int answer)
    : answer_(answer), hook_(SetWindowsHookExW(WH_CBT, Hook, nullptr, GetCurrentThreadId()))
{
    t_boxes = this;
}

MessageBoxes::~MessageBoxes()
{
    UnhookWindowsHookEx(hook_);
    t_boxes = nullptr;
}

std::vector<MessageBoxes::Box> MessageBoxes::Take()
{
    return std::exchange(boxes_, {});
}

std::vector<std::wstring> MessageBoxes::TakeTexts()
{
    std::vector<std::wstring> texts;
    for (Box& box : Take())
        texts.push_back(std::move(box.text));
    return texts;
}

LRESULT CALLBACK MessageBoxes::Hook(int code, WPARAM w, LPARAM l)
{
    const auto window = reinterpret_cast<HWND>(w);
    const HWND text = code == HCBT_ACTIVATE ? GetDlgItem(window, kBoxText) : nullptr;
    // Activated again after it was answered, the box is on its way out.
    if (text != nullptr && GetPropW(window, L"answered") == nullptr) {
        SetPropW(window, L"answered", reinterpret_cast<HANDLE>(1));
        t_boxes->boxes_.push_back({TextOf(window), TextOf(text)});
        PostMessageW(window, WM_COMMAND, static_cast<WPARAM>(t_boxes->answer_), 0);
    }
    return CallNextHookEx(nullptr, code, w, l);
}

} // namespace qx::test
