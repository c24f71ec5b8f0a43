// Every dialog of the module, for tests that hold for all of them.
#pragma once

#include "dialog/dialog.h"

#include <ostream>
#include <span>
#include <windows.h>

namespace qx::test {

struct DialogCase {
    const char* name;
    DialogTemplate ids;
    std::span<const Control> controls;
    bool isPage = false;  // shares its letters with the Send button
    int fittedButton = 0; // a button that the dialog widens for its caption; 0: none
};

std::span<const DialogCase> AllDialogs();

inline void PrintTo(const DialogCase& dialog, std::ostream* out)
{
    *out << dialog.name;
}

} // namespace qx::test
