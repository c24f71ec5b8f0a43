#include "phonebook/ui/phone_book_changed.h"

namespace qx {

namespace {

constexpr UINT kPatienceMilliseconds = 500; // with each window

} // namespace

UINT PhoneBookChangedMessage() noexcept
{
    static const UINT message = RegisterWindowMessageW(L"PB_{d12b6b3a-3fee-4506-3f95-b1885bcf2149}");
    return message;
}

void BroadcastPhoneBookChanged() noexcept
{
    DWORD_PTR ignored = 0;
    SendMessageTimeoutW(HWND_BROADCAST, PhoneBookChangedMessage(), 0, 0, SMTO_ABORTIFHUNG, kPatienceMilliseconds,
                        &ignored);
}

} // namespace qx
