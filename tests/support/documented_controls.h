// Controls that behave as Windows documents them where those here differ. For the controls that one thread creates:
//   - a control that is disabled while it has the keyboard focus leaves the focus nowhere;
//   - an automatic radio button that gets the focus checks itself and says that it was clicked;
//   - a list view learns how far it can be scrolled when redrawing comes back, and is not scrolled before; emptied, it
//     is at its top;
//   - combo boxes do what windows_combo_box.h says.
#pragma once

#include "base/no_copy.h"
#include "support/windows_combo_box.h"

#include <memory>
#include <windows.h>

namespace qx::test {

class DocumentedControls : NoCopy {
public:
    DocumentedControls(); // for the calling thread
    ~DocumentedControls();

    // For the run of a test program that asks for it (environment variable QX_DOCUMENTED_CONTROLS); else null.
    static std::unique_ptr<DocumentedControls> WhenAsked();

private:
    WindowsComboBoxes comboBoxes_;
    HHOOK hook_;
};

} // namespace qx::test
