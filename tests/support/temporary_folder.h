// A folder that ends, with all that is in it, with its test; and files as plain bytes.
#pragma once

#include "base/no_copy.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <windows.h>

namespace qx::test {

class TemporaryFolder : NoCopy {
public:
    TemporaryFolder()
    {
        static std::atomic<int> count{0};
        path_ = std::filesystem::temp_directory_path() /
                (L"qx-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++count));
        std::filesystem::remove_all(path_); // of a process of that number that was ended in the middle
        std::filesystem::create_directories(path_);
    }
    ~TemporaryFolder();

    const std::filesystem::path& Path() const { return path_; }
    std::filesystem::path operator/(const std::wstring& name) const { return path_ / name; }
    std::filesystem::path NewFile(const std::wstring& name) const; // with a little content

private:
    std::filesystem::path path_;
};

inline void WriteBytes(const std::filesystem::path& file, std::string_view bytes)
{
    std::ofstream stream(file, std::ios::binary);
    if (!stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size())))
        throw std::runtime_error("no test file");
}

// "<no file>" when it cannot be opened.
inline std::string ReadBytes(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        return "<no file>";
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path_, ignored))
        SetFileAttributesW(entry.path().c_str(), FILE_ATTRIBUTE_NORMAL); // what is read-only stays otherwise
    std::filesystem::remove_all(path_, ignored);
}

inline std::filesystem::path TemporaryFolder::NewFile(const std::wstring& name) const
{
    WriteBytes(path_ / name, "BM");
    return path_ / name;
}

// The bytes of UTF-16, little-endian, without a mark.
inline std::string Utf16Bytes(std::wstring_view text)
{
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

inline const std::string kUtf16Mark = "\xFF\xFE";
inline const std::string kUtf8Mark = "\xEF\xBB\xBF";

} // namespace qx::test
