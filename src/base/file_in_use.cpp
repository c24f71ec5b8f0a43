#include "base/file_in_use.h"

namespace qx {

namespace {

UniqueFile Open(const std::wstring& path, DWORD access) noexcept
{
    UniqueFile file;
    RetryWhileInUse([&] {
        file.Reset(CreateFileW(path.c_str(), access, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
        return static_cast<bool>(file);
    });
    return file;
}

} // namespace

UniqueFile OpenForReading(const std::wstring& path) noexcept
{
    return Open(path, GENERIC_READ);
}

UniqueFile OpenForWriting(const std::wstring& path) noexcept
{
    return Open(path, GENERIC_WRITE);
}

bool FlushToDisk(const std::wstring& path) noexcept
{
    const UniqueFile file = OpenForWriting(path);
    return file && FlushFileBuffers(file.Get());
}

} // namespace qx
