// Combo boxes that behave as Windows documents where the system that the tests run on differs:
//   - The list's selection is brought in line with the edit after CBN_EDITCHANGE, not before: as long as the combo box
//     has not opened the list itself there is none, else it is the first row that begins with the text.
//   - F4 and Alt with an arrow open and close the list; opening it selects the first row that begins with the text and
//     writes it into the edit, without CBN_SELCHANGE.
#pragma once

#include "base/no_copy.h"

#include <windows.h>

namespace qx::test {

// While it lives, for the combo boxes that this thread creates. A second one adds nothing.
class WindowsComboBoxes : NoCopy {
public:
    WindowsComboBoxes();
    ~WindowsComboBoxes();

private:
    HHOOK hook_ = nullptr;
};

} // namespace qx::test
