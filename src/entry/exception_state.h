// Exceptions of a thread when there is no memory left.
#pragma once

namespace qx {

// Gives back the calling thread's place for its exceptions; it takes one again with the next exception.
void ReleaseExceptionState() noexcept;

} // namespace qx
