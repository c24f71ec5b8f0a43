// Files that a process is still making, and those that it was making when it ended.
#pragma once

#include <string>

namespace qx {

// A name that no other process, thread or attempt uses: three numbers behind start, and ending.
std::wstring UniqueName(const std::wstring& start, const wchar_t* ending);

// Deletes the files whose names UniqueName has made of start, a path, and ending, unless they are so young that another
// process, maybe on another computer, may still be at work. What cannot be deleted stays. Never throws for the folder's
// sake.
void RemoveAbandonedFiles(const std::wstring& start, const wchar_t* ending);

} // namespace qx
