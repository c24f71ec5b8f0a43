// One process at a time reads or writes a phone book file.
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

} // namespace qx
