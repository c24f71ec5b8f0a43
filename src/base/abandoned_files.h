// Files that a process was still making when it ended.
#pragma once

#include <string>
#include <string_view>

namespace qx {

// Deletes the files of a folder (its path with a backslash at its end) whose names match pattern, with wildcards, and
// are names of ours, unless they are so young that another process, maybe on another computer, may still be at work.
// What cannot be deleted stays. Never throws for the folder's sake.
void RemoveAbandonedFiles(const std::wstring& folder, const std::wstring& pattern,
                          bool (*isOurs)(std::wstring_view name, const void* context), const void* context = nullptr);

// Takes decimal digits, at least one, off the beginning. False, with rest as it was, when there are none.
bool TakeNumber(std::wstring_view& rest) noexcept;

} // namespace qx
