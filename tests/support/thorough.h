// How long a test goes on that never has enough: QX_THOROUGH=1 in the environment makes it long.
#pragma once

#include <cstdlib>

namespace qx::test {

inline int Rounds(int usual, int thorough)
{
    return std::getenv("QX_THOROUGH") != nullptr ? thorough : usual;
}

} // namespace qx::test
