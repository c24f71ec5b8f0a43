// A property sheet whose pages are there before its buttons have their places. Where Wine lays the buttons out first,
// the documentation of property sheets promises nothing.
#pragma once

#include "base/no_copy.h"

#include <windows.h>

namespace qx::test {

// For sheets that thread shows while it lives: the Send button gets place and size for the last time right before the
// sheet is shown. One at a time.
class LateButtons : NoCopy {
public:
    explicit LateButtons(DWORD thread); // of this process
    ~LateButtons();

private:
    HHOOK hook_;
};

} // namespace qx::test
