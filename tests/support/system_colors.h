// Windows as its users have coloured it.
#pragma once

#include "base/activation_context.h"
#include "support/patched_function.h"
#include "support/redirected_import.h"

#include <ostream>
#include <utility>
#include <vector>
#include <windows.h>

namespace qx::test {

using ColorTable = std::vector<std::pair<int, COLORREF>>; // by the number of the system colour

// The system's colours, put back in the end.
class SystemColors {
public:
    explicit SystemColors(const ColorTable& colors)
    {
        std::vector<COLORREF> wanted;
        for (const auto& [index, color] : colors) {
            indexes_.push_back(index);
            before_.push_back(GetSysColor(index));
            wanted.push_back(color);
        }
        SetSysColors(static_cast<int>(indexes_.size()), indexes_.data(), wanted.data());
    }
    ~SystemColors() { SetSysColors(static_cast<int>(indexes_.size()), indexes_.data(), before_.data()); }
    SystemColors(const SystemColors&) = delete;
    SystemColors& operator=(const SystemColors&) = delete;

private:
    std::vector<int> indexes_;
    std::vector<COLORREF> before_;
};

// ---- high contrast, as Windows comes with it

struct Palette {
    const char* name;
    COLORREF ground, text, disabled, selection, selectedText, link, edge;

    // Everything that is drawn in it: the colours of the system's own parts follow from the few.
    ColorTable Table() const
    {
        ColorTable table;
        for (const int index : {COLOR_WINDOW, COLOR_BTNFACE, COLOR_MENU, COLOR_SCROLLBAR, COLOR_INFOBK,
                                COLOR_ACTIVECAPTION, COLOR_INACTIVECAPTION, COLOR_GRADIENTACTIVECAPTION,
                                COLOR_GRADIENTINACTIVECAPTION, COLOR_APPWORKSPACE, COLOR_BACKGROUND, COLOR_MENUBAR})
            table.emplace_back(index, ground);
        for (const int index : {COLOR_WINDOWTEXT, COLOR_BTNTEXT, COLOR_MENUTEXT, COLOR_INFOTEXT, COLOR_CAPTIONTEXT,
                                COLOR_INACTIVECAPTIONTEXT, COLOR_WINDOWFRAME, COLOR_3DDKSHADOW})
            table.emplace_back(index, text);
        for (const int index :
             {COLOR_BTNSHADOW, COLOR_BTNHIGHLIGHT, COLOR_3DLIGHT, COLOR_ACTIVEBORDER, COLOR_INACTIVEBORDER})
            table.emplace_back(index, edge);
        table.emplace_back(COLOR_GRAYTEXT, disabled);
        table.emplace_back(COLOR_HIGHLIGHT, selection);
        table.emplace_back(COLOR_MENUHILIGHT, selection);
        table.emplace_back(COLOR_HIGHLIGHTTEXT, selectedText);
        table.emplace_back(COLOR_HOTLIGHT, link);
        return table;
    }
};

inline void PrintTo(const Palette& palette, std::ostream* out)
{
    *out << palette.name;
}

inline constexpr Palette kHighContrastBlack{"black",           RGB(0, 0, 0), RGB(255, 255, 255), RGB(63, 242, 63),
                                            RGB(26, 235, 255), RGB(0, 0, 1), RGB(255, 255, 0),   RGB(192, 192, 193)};
inline constexpr Palette kHighContrastWhite{"white",         RGB(255, 255, 255), RGB(0, 0, 0),   RGB(96, 0, 0),
                                            RGB(55, 0, 110), RGB(255, 255, 254), RGB(0, 0, 159), RGB(110, 110, 111)};

// High contrast is on: in the system's colours, without themes, and for module, which asks whether it is. As if it had
// always been: before the dialogs are there.
class HighContrast {
public:
    HighContrast(HMODULE module, const Palette& palette)
        : colors_(palette.Table()), asked_("SystemParametersInfoW", Tell, module)
    {
        TellCommonControls();
    }
    ~HighContrast() = default;
    HighContrast(const HighContrast&) = delete;
    HighContrast& operator=(const HighContrast&) = delete;

private:
    static BOOL WINAPI Tell(UINT action, UINT parameter, void* out, UINT flags)
    {
        if (action != SPI_GETHIGHCONTRAST)
            return SystemParametersInfoW(action, parameter, out, flags);
        static_cast<HIGHCONTRASTW*>(out)->dwFlags = HCF_HIGHCONTRASTON;
        return TRUE;
    }
    static HANDLE WINAPI NoTheme(HWND, const wchar_t*) { return nullptr; }
    static HANDLE WINAPI NoThemeForDpi(HWND, const wchar_t*, UINT) { return nullptr; }
    static BOOL WINAPI No() { return FALSE; }

    // They keep the colours that they were loaded with until one of them hears of others.
    static void TellCommonControls()
    {
        const ActivationScope context;
        const HWND list =
            CreateWindowW(L"SysListView32", L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
        SendMessageW(list, WM_SYSCOLORCHANGE, 0, 0);
        DestroyWindow(list);
    }

    struct AfterColors {
        ~AfterColors() { TellCommonControls(); }
    };

    AfterColors afterColors_; // they hear of the old ones, too
    SystemColors colors_;
    RedirectedImport<decltype(SystemParametersInfoW)> asked_;
    HMODULE themes_ = LoadLibraryW(L"uxtheme.dll");
    PatchedFunction openTheme_{L"uxtheme.dll", "OpenThemeData", NoTheme};
    PatchedFunction openThemeForDpi_{L"uxtheme.dll", "OpenThemeDataForDpi", NoThemeForDpi};
    PatchedFunction isActive_{L"uxtheme.dll", "IsThemeActive", No};
    PatchedFunction isThemed_{L"uxtheme.dll", "IsAppThemed", No};
};

} // namespace qx::test
