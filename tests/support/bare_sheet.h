// The system's own share of what a session costs.
#pragma once

namespace qx::test {

// A modal property sheet of the module's two templates, used and drawn as in a session, with nothing of the module in
// it; it closes itself. Of the program's own resources. Wine's version-6 controls lose 17 blocks with every one. Throws
// std::runtime_error when it does not appear.
void ShowBareSheet();

} // namespace qx::test
