#include "base/guarded.h"

#include "base/trace.h"

#include <exception>
#include <iterator>

namespace qx {

namespace {

// Without memory of its own: that may be what the exception is about. What the library says is ASCII.
void TraceAscii(const char* text) noexcept
{
    wchar_t wide[200] = L"";
    for (std::size_t i = 0; text[i] != '\0' && i < std::size(wide) - 1; ++i)
        wide[i] = static_cast<wchar_t>(static_cast<unsigned char>(text[i]));
    Trace({L"an exception was stopped: ", wide});
}

} // namespace

void TraceException() noexcept
{
    try {
        throw;
    } catch (const std::exception& e) {
        TraceAscii(e.what());
    } catch (...) {
        Trace({L"an unknown exception was stopped"});
    }
}

} // namespace qx
