// Windows lays text out on several threads at a time. Wine 8 keeps its fonts for that in a list that two threads
// damage, which then crashes or never ends; with this the controls lay their texts out one after another.
#pragma once

namespace qx::test {

// For the rest of the process, in every module that is loaded by now.
void LockTextLayout();

} // namespace qx::test
