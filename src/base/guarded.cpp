#include "base/guarded.h"

#include <exception>
#include <windows.h>

namespace qx {

void TraceException() noexcept
{
    try {
        throw;
    } catch (const std::exception& e) {
        OutputDebugStringA("qxfaxui: ");
        OutputDebugStringA(e.what());
        OutputDebugStringA("\n");
    } catch (...) {
        OutputDebugStringA("qxfaxui: unknown exception\n");
    }
}

} // namespace qx
