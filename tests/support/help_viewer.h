// The help viewer in the system folder of the test's own Windows, taken away or replaced for a while.
#pragma once

#include "base/no_copy.h"
#include "help_request.h"

#include <vector>

namespace qx::test {

// While it lives, the system folder has no help viewer. Only for a process that has not loaded the viewer.
class HiddenHelpViewer : NoCopy {
public:
    HiddenHelpViewer();
    ~HiddenHelpViewer();
};

// A viewer that only takes notes, in the system's place from the first use to the end of the program. (Once loaded, a
// viewer stays in the process, so another one cannot follow it.)
class HelpViewerStandIn {
public:
    static HelpViewerStandIn& OfThisProgram();

    // What it was asked since the last call, in order.
    std::vector<HelpRequest> TakeRequests();

private:
    HelpViewerStandIn();

    HiddenHelpViewer hidden_;
};

} // namespace qx::test
