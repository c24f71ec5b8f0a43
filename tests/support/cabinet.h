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

// Unpacks all of a cabinet into a folder. Throws std::runtime_error when it cannot.
void UnpackCabinet(const std::filesystem::path& cabinet, const std::filesystem::path& folder);

} // namespace qx::test
