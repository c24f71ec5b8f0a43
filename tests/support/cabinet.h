// Cabinets made for a test, with names that no packing program would write.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace qx::test {

struct CabinetFile {
    std::string name;
    std::string content;
};

// Stored without compression. All contents together are shorter than 32 KB.
void WriteCabinet(const std::filesystem::path& path, const std::vector<CabinetFile>& files);

} // namespace qx::test
