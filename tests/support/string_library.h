// The built string library, read from outside: all its texts, by language.
#pragma once

#include "base/no_copy.h"

#include <map>
#include <string>
#include <vector>
#include <windows.h>

namespace qx::test {

using TextTable = std::map<unsigned, std::wstring>; // by text id

class StringLibrary : NoCopy {
public:
    // Loads the library as the module does; throws when it is not there.
    StringLibrary();
    ~StringLibrary();

    HMODULE Module() const { return module_; }
    const std::map<LANGID, TextTable>& Languages() const { return languages_; }
    // The kinds of resources it holds, in ascending order.
    const std::vector<WORD>& ResourceTypes() const { return types_; }

private:
    HMODULE module_;
    std::map<LANGID, TextTable> languages_;
    std::vector<WORD> types_;
};

} // namespace qx::test
