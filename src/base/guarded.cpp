#include "base/guarded.h"

#include <exception>
#include <iterator>
#include <windows.h>

namespace qx {

namespace {

// Without memory of its own: that may be what the exception is about. What the library says is ASCII.
void Trace(const char* text) noexcept
{
    wchar_t wide[256];
    std::size_t units = 0;
    for (; text[units] != '\0' && units < std::size(wide) - 1; ++units)
        wide[units] = static_cast<wchar_t>(static_cast<unsigned char>(text[units]));
    wide[units] = L'\0';
    OutputDebugStringW(wide);
}

} // namespace

void TraceException() noexcept
{
    try {
        throw;
    } catch (const std::exception& e) {
        OutputDebugStringW(L"qxfaxui: ");
        Trace(e.what());
        OutputDebugStringW(L"\n");
    } catch (...) {
        OutputDebugStringW(L"qxfaxui: unknown exception\n");
    }
}

} // namespace qx
