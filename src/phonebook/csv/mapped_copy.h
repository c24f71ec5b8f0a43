// Copying to and from a mapped view of a file.
#pragma once

#include <cstddef>

namespace qx {

// False when a page of either block could not be read from its file or written to it: a share that was dropped, a stick
// that was pulled, a disk that is full. Some bytes may have been copied then. Other faults are not answered here.
bool CopyMapped(void* to, const void* from, std::size_t bytes) noexcept;

} // namespace qx
