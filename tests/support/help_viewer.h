// The help viewer in the system folder of the test's own Windows, taken away or replaced for a while.
#pragma once

#include "help_request.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace qx::test {

// While it lives, the system folder has no help viewer. Only for a process that has not loaded the viewer.
class HiddenHelpViewer {
public:
    HiddenHelpViewer();
    ~HiddenHelpViewer();
    HiddenHelpViewer(const HiddenHelpViewer&) = delete;
    HiddenHelpViewer& operator=(const HiddenHelpViewer&) = delete;
};

// While it lives, a viewer that only takes notes is in its place. Once loaded, it stays in the process: one stand-in per
// test program.
class HelpViewerStandIn {
public:
    HelpViewerStandIn();
    ~HelpViewerStandIn();
    HelpViewerStandIn(const HelpViewerStandIn&) = delete;
    HelpViewerStandIn& operator=(const HelpViewerStandIn&) = delete;

    // What it was asked since the last call, in order.
    std::vector<HelpRequest> TakeRequests();

private:
    HiddenHelpViewer hidden_;
};

} // namespace qx::test
