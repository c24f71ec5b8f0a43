#include "dialog/file_dialog.h"

#include "base/activation_context.h"
#include "base/apartment.h"
#include "base/guarded.h"
#include "base/no_copy.h"

#include <string>

namespace qx {

namespace {

std::wstring CurrentDirectory()
{
    std::wstring directory(GetCurrentDirectoryW(0, nullptr), L'\0');
    const DWORD units = GetCurrentDirectoryW(static_cast<DWORD>(directory.size()), directory.data());
    directory.resize(units < directory.size() ? units : 0);
    return directory;
}

// Not for longer than a dialog: it is the whole program's, which may move it on purpose while the sheet is open.
class CurrentDirectoryKept : NoCopy {
public:
    CurrentDirectoryKept() noexcept
    {
        Guarded([&] { directory_ = CurrentDirectory(); });
    }
    ~CurrentDirectoryKept()
    {
        if (!directory_.empty())
            SetCurrentDirectoryW(directory_.c_str());
    }

private:
    std::wstring directory_;
};

} // namespace

bool AskForFileName(BOOL(WINAPI* ask)(OPENFILENAMEW*), OPENFILENAMEW& dialog) noexcept
{
    BOOL chosen = FALSE;
    Guarded([&] {
        const CurrentDirectoryKept directory;
        RunInSingleThreadedApartment(
            [&] {
                const ActivationScope context;
                chosen = ask(&dialog);
            },
            dialog.hwndOwner);
    });
    return chosen != FALSE;
}

} // namespace qx
