// One opaque block of bytes per process that the driver parks here between two calls.
#pragma once

#include <windows.h>

namespace qx {

BOOL StoreEscapeData(const void* data, DWORD size) noexcept;
BOOL FetchEscapeData(void** buffer, DWORD* size) noexcept;

} // namespace qx
