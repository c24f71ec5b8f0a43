// What a debugger is told. There is no log file.
#pragma once

#include <initializer_list>

namespace qx {

// One line, "qxfaxui: " and the parts one behind the other; cut after 255 characters. Needs no memory and keeps the
// thread's last error.
void Trace(std::initializer_list<const wchar_t*> parts) noexcept;

} // namespace qx
