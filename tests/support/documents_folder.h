// A user of the test's own: an empty documents folder and an empty registry, for this process only.
#pragma once

#include "base/unique.h"

#include <string>
#include <vector>

namespace qx::test {

class DocumentsFolder {
public:
    DocumentsFolder();  // throws std::runtime_error
    ~DocumentsFolder(); // removes the folder with all that is in it, and the registry
    DocumentsFolder(const DocumentsFolder&) = delete;
    DocumentsFolder& operator=(const DocumentsFolder&) = delete;

    const std::wstring& Path() const noexcept { return path_; } // without a backslash at its end
    std::wstring File(const std::wstring& name) const { return path_ + L"\\" + name; }
    // What stands for the documents folder in the registry; null: nothing.
    void SetPersonal(const wchar_t* path) const;
    // Names of the files in the folder, sorted.
    std::vector<std::wstring> Files() const;

private:
    std::wstring path_;
    std::wstring registryPath_;
    UniqueKey registry_;
};

void WriteFileBytes(const std::wstring& path, const std::string& bytes);
std::string ReadFileBytes(const std::wstring& path); // "<no file>" when it cannot be opened
bool IsHidden(const std::wstring& path);
void MakeOld(const std::wstring& path); // it was last written years ago

} // namespace qx::test
