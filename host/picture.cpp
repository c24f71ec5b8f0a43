#include "host/picture.h"

#include "base/no_copy.h"
#include "base/unique.h"
#include "host/utf8.h"

#include <algorithm>
#include <objidl.h>
#include <stdexcept>

// Its header calls them without saying whose they are.
namespace Gdiplus {
using std::max; // NOLINT(misc-unused-using-decls)
using std::min; // NOLINT(misc-unused-using-decls)
} // namespace Gdiplus
#include <gdiplus.h>

namespace qx::host {

namespace {

constexpr CLSID kPngEncoder = {0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};

class GdiPlus : NoCopy {
public:
    GdiPlus()
    {
        const Gdiplus::GdiplusStartupInput input;
        if (Gdiplus::GdiplusStartup(&token_, &input, nullptr) != Gdiplus::Ok)
            throw std::runtime_error("GDI+ does not start");
    }
    ~GdiPlus() { Gdiplus::GdiplusShutdown(token_); }

private:
    ULONG_PTR token_ = 0;
};

class ScreenDc : NoCopy {
public:
    ScreenDc() noexcept : dc_(GetDC(nullptr)), memory_(CreateCompatibleDC(dc_)) {}
    ~ScreenDc()
    {
        DeleteDC(memory_);
        ReleaseDC(nullptr, dc_);
    }

    UniqueBitmap Copy(const RECT& area) const
    {
        const int width = area.right - area.left;
        const int height = area.bottom - area.top;
        UniqueBitmap bitmap(CreateCompatibleBitmap(dc_, width, height));
        const HGDIOBJ previous = SelectObject(memory_, bitmap.Get());
        BitBlt(memory_, 0, 0, width, height, dc_, area.left, area.top, SRCCOPY);
        SelectObject(memory_, previous);
        return bitmap;
    }

private:
    HDC dc_;
    HDC memory_;
};

} // namespace

void SaveScreenPicture(const RECT& rectangle, const std::filesystem::path& file)
{
    const GdiPlus gdiPlus;
    const UniqueBitmap copy = ScreenDc().Copy(rectangle);
    Gdiplus::Bitmap picture(copy.Get(), nullptr);
    if (picture.Save(file.c_str(), &kPngEncoder, nullptr) != Gdiplus::Ok)
        throw std::runtime_error("cannot write the picture " + Utf8(file.native()));
}

} // namespace qx::host
