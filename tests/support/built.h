// What the tests find in the source tree and in the build, through the environment that ctest gives them.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace qx::test {

inline std::filesystem::path FolderIn(const char* variable)
{
    const char* const folder = std::getenv(variable);
    if (folder == nullptr)
        throw std::runtime_error(std::string(variable) + " is not set: run this test through ctest");
    return std::filesystem::absolute(folder);
}

inline std::filesystem::path SourceFolder()
{
    return FolderIn("QX_SOURCE_DIR");
}

// Where the module and its companions are.
inline std::filesystem::path BuiltFolder()
{
    return FolderIn("QX_BINARY_DIR");
}

} // namespace qx::test
