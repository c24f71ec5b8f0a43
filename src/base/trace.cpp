#include "base/trace.h"

#include "base/limits.h"
#include "base/text.h"

namespace qx {

void Trace(std::initializer_list<const wchar_t*> parts) noexcept
{
    const DWORD error = GetLastError();
    wchar_t line[kTextUnits] = L"qxfaxui: ";
    const std::span text(line, kTextUnits - 1); // the line's end always fits
    for (const wchar_t* const part : parts)
        AppendText(text, part);
    AppendText(line, L"\n");
    OutputDebugStringW(line);
    SetLastError(error);
}

} // namespace qx
