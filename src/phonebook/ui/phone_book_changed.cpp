#include "phonebook/ui/phone_book_changed.h"

#include "base/module.h"

#include <atomic>

namespace qx {

namespace {

constexpr UINT kPatienceMilliseconds = 500; // with each window

using ChangeFilter = BOOL WINAPI(HWND, UINT, DWORD, void*);
constexpr DWORD kAllow = 1; // MSGFLT_ALLOW

} // namespace

UINT PhoneBookChangedMessage() noexcept
{
    static std::atomic<UINT> registered = 0;
    if (registered == 0) // asked for again after a refusal: later lists are to hear of changes
        registered = RegisterWindowMessageW(L"PB_{d12b6b3a-3fee-4506-3f95-b1885bcf2149}");
    return registered;
}

void ListenForPhoneBookChanged(HWND window) noexcept
{
    // Systems that lack the function have no such filter for a single window.
    const auto changeFilter = SystemFunction<ChangeFilter>(L"user32", "ChangeWindowMessageFilterEx");
    if (changeFilter != nullptr)
        changeFilter(window, PhoneBookChangedMessage(), kAllow, nullptr);
}

void BroadcastPhoneBookChanged() noexcept
{
    DWORD_PTR ignored = 0;
    SendMessageTimeoutW(HWND_BROADCAST, PhoneBookChangedMessage(), 0, 0, SMTO_ABORTIFHUNG, kPatienceMilliseconds,
                        &ignored);
}

} // namespace qx
