// A user of the test's own: an empty documents folder and an empty registry, for this process only.
#pragma once

#include "base/no_copy.h"
#include "base/unique.h"
#include "support/temporary_folder.h"

#include <string>
#include <vector>

namespace qx::test {

class DocumentsFolder : NoCopy {
public:
    DocumentsFolder();  // throws std::runtime_error
    ~DocumentsFolder(); // removes the folder with all that is in it, and the registry

    std::wstring Path() const { return folder_.Path().wstring(); } // without a backslash at its end
    std::wstring File(const std::wstring& name) const { return (folder_ / name).wstring(); }
    // What stands for the documents folder in the registry; null: nothing.
    void SetPersonal(const wchar_t* path) const;
    // Names of the files in the folder, sorted.
    std::vector<std::wstring> Files() const;

private:
    TemporaryFolder folder_;
    std::wstring registryPath_;
    UniqueKey registry_;
};

bool IsHidden(const std::wstring& path);
void MakeOld(const std::wstring& path); // it was last written years ago

} // namespace qx::test
