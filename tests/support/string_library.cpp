#include "support/string_library.h"
#include "support/built.h"

#include <stdexcept>

namespace qx::test {

namespace {

constexpr unsigned kTextsPerBlock = 16;

// A block holds 16 texts, each a length and that many units; length 0: no text.
void ReadBlock(HMODULE module, WORD number, LANGID language, TextTable& texts)
{
    const HRSRC found = FindResourceExW(module, RT_STRING, MAKEINTRESOURCEW(number), language);
    const auto* at = static_cast<const wchar_t*>(LockResource(LoadResource(module, found)));
    for (unsigned i = 0; i < kTextsPerBlock; ++i) {
        const unsigned units = *at++;
        if (units != 0)
            texts[(number - 1u) * kTextsPerBlock + i].assign(at, units);
        at += units;
    }
}

BOOL CALLBACK ReadLanguage(HMODULE module, LPCWSTR, LPCWSTR name, WORD language, LONG_PTR languages)
{
    auto& tables = *reinterpret_cast<std::map<LANGID, TextTable>*>(languages);
    ReadBlock(module, LOWORD(name), language, tables[language]);
    return TRUE;
}

BOOL CALLBACK ReadName(HMODULE module, LPCWSTR type, LPWSTR name, LONG_PTR languages)
{
    return EnumResourceLanguagesW(module, type, name, ReadLanguage, languages);
}

BOOL CALLBACK ReadType(HMODULE, LPWSTR type, LONG_PTR types)
{
    reinterpret_cast<std::vector<WORD>*>(types)->push_back(IS_INTRESOURCE(type) ? LOWORD(type) : WORD{0});
    return TRUE;
}

} // namespace

StringLibrary::StringLibrary()
    : module_(LoadLibraryExW((BuiltFolder() / L"QXTEXT64.DLL").c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES))
{
    if (module_ == nullptr)
        throw std::runtime_error("QXTEXT64.DLL cannot be loaded");
    EnumResourceTypesW(module_, ReadType, reinterpret_cast<LONG_PTR>(&types_));
    EnumResourceNamesW(module_, RT_STRING, ReadName, reinterpret_cast<LONG_PTR>(&languages_));
}

StringLibrary::~StringLibrary()
{
    FreeLibrary(module_);
}

} // namespace qx::test
