// Compiled help, read from outside through the system's own reader.
#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace qx::test {

// The files of a compiled help file by name, without the folders and the compiler's own ones. Throws
// std::runtime_error when it cannot be read.
std::map<std::string, std::string> ReadCompiledHelp(const std::filesystem::path& chm);

} // namespace qx::test
