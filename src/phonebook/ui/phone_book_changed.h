// How open phone book lists, in this process and in others, learn that the phone book file has changed.
#pragma once

#include <windows.h>

namespace qx {

// The registered window message; 0 when it could not be registered. On receipt a list reloads the book and refills.
UINT PhoneBookChangedMessage() noexcept;

// For every window that answers the message, once it is there: lets the message in although this program may be more
// privileged (elevated) than the one that has changed the phone book.
void ListenForPhoneBookChanged(HWND window) noexcept;

// Tells every top-level window, the caller's own included. Waits at most half a second for each, and not at all for
// one that hangs.
void BroadcastPhoneBookChanged() noexcept;

} // namespace qx
