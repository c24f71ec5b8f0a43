// Replacing a file in one step, and keeping copies of it.
#pragma once

#include "base/no_copy.h"
#include "phonebook/book/phone_book_storage.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qx {

// Of others, which come between looking at a file and replacing it.
inline constexpr int kMostSavesWaitedFor = 20;

// A new, empty file that is to take the place of path, which exists and is no link. It lies beside path, or in the
// temporary folder when the folder of path takes no second file; there is none when it can lie nowhere. It is hidden
// only when it takes the place: a hidden one could not be saved over. It is removed again unless it took the place.
class Replacement : NoCopy {
public:
    explicit Replacement(const std::wstring& path);
    ~Replacement();

    explicit operator bool() const noexcept { return !temporary_.empty(); }
    const std::wstring& Path() const noexcept { return temporary_; }

    // Asked right before the old content goes, each time that is tried: it stays when the answer is false.
    using MayGo = std::function<bool()>;

    // Puts the new content, once it is safely on the disk, where the old one was: in one step when it lies beside it.
    // Otherwise it is written over the old one, of which a copy lies in the temporary folder until that is done; when
    // it fails the old content is put back, and the copy stays unless that succeeded. What somebody else saves until
    // the first byte is written counts as the old content, and is asked for. The file keeps its security and its
    // attributes and is hidden. False: the old content is there.
    bool TakePlace(const MayGo& mayGo);

private:
    bool Create(const std::wstring& start);
    bool Rename(const MayGo& mayGo);
    bool Overwrite(const MayGo& mayGo);

    const std::wstring path_;
    std::wstring temporary_;
    std::vector<BYTE> ownSecurity_; // which it had before it got that of path
    std::wstring elsewhere_;        // what its name begins with in the temporary folder; empty when it lies beside path
};

// Removes what processes that died while replacing path left beside it: files of a replacement's name that are older
// than path, which has just been saved, by more than any save takes. This computer's clock is not asked: that of a
// share may be another, and what a second computer is still making would look old.
void RemoveAbandonedReplacements(const std::wstring& path) noexcept;

// Keeps a byte-identical, hidden copy of path beside it, or in the temporary folder when the folder of path takes no
// second file; unless there is one already or the file is empty or not there. Never replaces an older copy. False when
// the copy is not safely on the disk.
bool KeepCopy(const std::wstring& path);

// The copies that KeepCopy has left, as full paths: those beside path by their numbers, then those in the temporary
// folder, which may be of another folder's file of the same name.
std::vector<std::wstring> KeptCopies(const std::wstring& path);

// FILE_ATTRIBUTE_... False also when the file cannot be asked.
bool HasAttribute(const std::wstring& path, DWORD attribute) noexcept;

// The file that a link leads to; path itself when it is none, or leads nowhere. A link to a file that is not there
// leads nowhere with OPEN_EXISTING; with OPEN_ALWAYS the file is made, empty.
std::wstring FollowLink(const std::wstring& path, DWORD disposition = OPEN_EXISTING);

// None when the file cannot be asked.
std::optional<FileStamp> StampOf(const std::wstring& path) noexcept;

// Reads the whole file. ERROR_SUCCESS; the error of opening it; or ERROR_FILE_TOO_LARGE when it opened but could not be
// read, or is longer than any phone book. out is left alone then. stamp, if given, is that of what was read.
DWORD ReadWholeFile(const std::wstring& path, std::string& out, std::optional<FileStamp>* stamp = nullptr);

} // namespace qx
