#include "support/ui_language.h"

namespace qx::test {

namespace {

LANGID g_language = 0; // 0: the session's own

LANGID WINAPI Answer()
{
    if (g_language != 0)
        return g_language;
    static const auto system = reinterpret_cast<LANGID(WINAPI*)()>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32"), "GetUserDefaultUILanguage")));
    return system();
}

} // namespace

// The place through which code calls the system's function. The linker takes it from here instead of from the import
// library.
extern "C" {
extern LANGID(WINAPI* const ui_language_import)() __asm__("__imp_GetUserDefaultUILanguage");
LANGID(WINAPI* const ui_language_import)() = Answer;
}

UiLanguage::UiLanguage(LANGID language) noexcept : previous_(g_language)
{
    g_language = language;
}

UiLanguage::~UiLanguage()
{
    g_language = previous_;
}

} // namespace qx::test
