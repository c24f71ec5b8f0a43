#include "dialog/file_dialog.h"

#include "base/activation_context.h"
#include "base/apartment.h"
#include "base/guarded.h"

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

} // namespace

bool AskForFileName(BOOL(WINAPI* ask)(OPENFILENAMEW*), OPENFILENAMEW& dialog) noexcept
{
    // Kept for no longer than the dialog: it is the whole program's, which may move it on purpose while the sheet is
    // open.
    std::wstring directory;
    Guarded([&] { directory = CurrentDirectory(); });
    if (directory.empty())
        dialog.Flags |= OFN_NOCHANGEDIR; // as far as the dialog heeds it
    BOOL chosen = FALSE;
    Guarded([&] {
        RunInSingleThreadedApartment(
            [&] {
                const ActivationScope context;
                chosen = ask(&dialog);
            },
            dialog.hwndOwner);
    });
    if (!directory.empty())
        SetCurrentDirectoryW(directory.c_str());
    return chosen != FALSE;
}

} // namespace qx
