// The languages of this build: the list that translators keep, those without texts left out.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <ostream>
#include <string>
#include <vector>
#include <windows.h>

namespace qx::test {

struct Language {
    std::string code;
    std::string helpCode;
    std::vector<LANGID> ids; // every one that is to see the texts, the main one first
    bool hasHelp = false;
    bool isRightToLeft = false;
    bool hasKeysInParentheses = false;

    LANGID Id() const { return ids.front(); }
    bool Serves(LANGID id) const { return std::ranges::find(ids, id) != ids.end(); }
};

inline const std::vector<Language>& Languages()
{
    static const std::vector<Language> languages{
#include "languages.inc"
    };
    return languages;
}

// The language with those texts; null when Windows' users of that id are to see English.
inline const Language* LanguageOf(LANGID id)
{
    const auto language = std::ranges::find_if(Languages(), [=](const Language& row) { return row.Serves(id); });
    return language != Languages().end() ? &*language : nullptr;
}

// The one that tools/with-wine.sh was asked for, perhaps with a region (de-AT).
inline const Language& LanguageOfTheRun()
{
    const char* const asked = std::getenv("QX_LANG");
    const std::string code = asked != nullptr ? asked : "en";
    const auto exact = std::ranges::find(Languages(), code, &Language::code);
    if (exact != Languages().end())
        return *exact;
    return *std::ranges::find(Languages(), code.substr(0, code.rfind('-')), &Language::code);
}

inline void PrintTo(const Language& language, std::ostream* out)
{
    *out << language.code;
}

} // namespace qx::test
