#include "base/file_in_use.h"

namespace qx {

UniqueFile OpenWhenFree(const std::wstring& path, DWORD access) noexcept
{
    UniqueFile file;
    RetryWhileInUse([&] {
        file.Reset(CreateFileW(path.c_str(), access, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
        return static_cast<bool>(file);
    });
    return file;
}

bool FlushToDisk(const std::wstring& path) noexcept
{
    const UniqueFile file = OpenWhenFree(path, GENERIC_WRITE);
    return file && FlushFileBuffers(file.Get());
}

} // namespace qx
