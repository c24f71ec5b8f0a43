#include "cabinet.h"

#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <windows.h>

#include <setupapi.h>

namespace qx::test {

namespace {

constexpr std::size_t kHeaderBytes = 36;
constexpr std::size_t kFolderBytes = 8;
constexpr std::size_t kBlockLimit = 0x8000;

void Append(std::string& out, std::uint64_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        out.push_back(static_cast<char>(value >> 8 * i & 0xFF));
}

UINT CALLBACK Unpack(PVOID folder, UINT notification, UINT_PTR first, UINT_PTR) noexcept
{
    if (notification != SPFILENOTIFY_FILEINCABINET)
        return NO_ERROR;
    auto& file = *reinterpret_cast<FILE_IN_CABINET_INFO_W*>(first);
    const auto target = *static_cast<const std::filesystem::path*>(folder) / file.NameInCabinet;
    lstrcpynW(file.FullTargetName, target.c_str(), MAX_PATH);
    return FILEOP_DOIT;
}

} // namespace

void WriteCabinet(const std::filesystem::path& path, const std::vector<CabinetFile>& files)
{
    std::string entries;
    std::string data;
    for (const CabinetFile& file : files) {
        Append(entries, file.content.size(), 4);
        Append(entries, data.size(), 4);
        Append(entries, 0, 2);          // folder
        Append(entries, 0x21 << 16, 4); // date and time
        Append(entries, 0x20, 2);       // attributes
        entries += file.name + '\0';
        data += file.content;
    }
    if (data.size() >= kBlockLimit)
        throw std::runtime_error("too much content for one block");

    const std::size_t filesAt = kHeaderBytes + kFolderBytes;
    const std::size_t dataAt = filesAt + entries.size();
    std::string cabinet = "MSCF";
    Append(cabinet, 0, 4);
    Append(cabinet, dataAt + 8 + data.size(), 4);
    Append(cabinet, 0, 4);
    Append(cabinet, filesAt, 4);
    Append(cabinet, 0, 4);
    Append(cabinet, 0x0103, 2); // version
    Append(cabinet, 1, 2);      // folders
    Append(cabinet, files.size(), 2);
    Append(cabinet, 0, 6); // flags, set, number in the set
    Append(cabinet, dataAt, 4);
    Append(cabinet, 1, 2); // blocks
    Append(cabinet, 0, 2); // no compression
    cabinet += entries;
    Append(cabinet, 0, 4); // no checksum
    Append(cabinet, data.size(), 2);
    Append(cabinet, data.size(), 2);
    cabinet += data;
    std::ofstream(path, std::ios::binary) << cabinet;
}

void UnpackCabinet(const std::filesystem::path& cabinet, const std::filesystem::path& folder)
{
    std::filesystem::path to = folder;
    if (!SetupIterateCabinetW(std::filesystem::absolute(cabinet).c_str(), 0, Unpack, &to))
        throw std::runtime_error("cannot unpack " + cabinet.string());
}

} // namespace qx::test
