#include "dialog/contrast.h"

namespace qx {

namespace {

bool IsHighContrast() noexcept
{
    HIGHCONTRASTW contrast{};
    contrast.cbSize = sizeof contrast;
    return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0) &&
           (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

int Brightness(int systemColor) noexcept
{
    const COLORREF color = GetSysColor(systemColor);
    return 3 * GetRValue(color) + 6 * GetGValue(color) + GetBValue(color);
}

} // namespace

bool HasRoomForColors(int textColor, int groundColor) noexcept
{
    return !IsHighContrast() && Brightness(textColor) <= Brightness(groundColor);
}

} // namespace qx
