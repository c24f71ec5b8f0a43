// One process at a time reads or writes a phone book file, and one computer at a time replaces it.
#pragma once

#include "base/no_copy.h"
#include "base/unique.h"

#include <string>

namespace qx {

// Waits a moment for the other processes to finish. Goes on without the guard when that takes too long, or when there
// is none to be had: no lock may keep a user from his phone book. A process that died with the guard does not count.
class FileGuard : NoCopy {
public:
    explicit FileGuard(const std::wstring& path);
    ~FileGuard();

private:
    UniqueKernelHandle mutex_;
    bool owned_ = false;
};

// The same towards programs on other computers that share the folder, for those who replace the file: a file behind its
// name that nobody else can open meanwhile, and that goes with its holder. Readers need none: they find the old file or
// the new one. It goes on without, too.
class FolderLock : NoCopy {
public:
    explicit FolderLock(const std::wstring& path);

private:
    UniqueFile file_;
};

} // namespace qx
