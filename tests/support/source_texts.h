// The texts that the sources of the module name.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace qx::test {

// A text id with the built-in text behind it in the source; empty when there is none.
struct NamedText {
    unsigned id = 0;
    std::wstring fallback;
    std::string file;
};

struct SourceTexts {
    std::vector<NamedText> named;
    std::set<unsigned> numbers; // every number in the sources, text id or not
};

// Of one source file. Comments do not count.
void CollectTexts(std::string source, const std::string& file, SourceTexts& texts);

// Of all files of the module; throws when there are none.
SourceTexts TextsOfTheModule();

} // namespace qx::test
