// What a power cut may leave of files: a recording of the calls that changed them, and every folder that there may be
// when the computer starts again.
//
// What reaches the disk in its own time may be lost: a file's content until the file is flushed, a name (of a file that
// was made, renamed or deleted) until the file is flushed or a later renaming is written through. Whatever is pending
// may be there or not, in any combination; content that is lost may be the old one, zeros, or half of the new one.
#pragma once

#include "support/every_call.h"

#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace qx::test {

using FolderState = std::map<std::filesystem::path, std::string>; // contents by path

class DiskRecording {
public:
    // Of these folders with all below them, and of the files beside file whose names begin as its.
    DiskRecording(std::vector<std::filesystem::path> folders, std::filesystem::path file);

    void Take(const WatchedCall& call);

    // Each once.
    std::vector<FolderState> StatesAfterPowerCut() const;

    // The files that are recorded, as they are now.
    FolderState Now() const;
    // Makes the folders so.
    void Restore(const FolderState& state) const;

private:
    struct SeenFile {
        std::pair<std::uint64_t, std::uint64_t> place; // on its volume
        std::string content;
    };
    using Snapshot = std::map<std::filesystem::path, SeenFile>;

    enum class Step { Names, Content, FileIsFlushed, NamesAreFlushed };
    struct Change {
        Step step;
        std::map<std::filesystem::path, int> names; // files by their new names; none: the name is gone
        int file;
        std::string content;
    };
    static constexpr int kNone = -1;

    std::vector<std::filesystem::path> Files() const;
    Snapshot Look() const;
    void NoteChanges();
    std::vector<std::size_t> PendingAt(std::size_t end) const;
    FolderState StateAt(std::size_t end, const std::vector<std::size_t>& lost, int lostContent) const;

    std::vector<std::filesystem::path> folders_;
    std::filesystem::path file_;
    std::map<std::filesystem::path, int> firstNames_;
    std::map<int, std::string> firstContents_;
    std::vector<Change> changes_;

    std::mutex lock_;
    Snapshot last_;
    std::map<std::pair<std::uint64_t, std::uint64_t>, int> files_; // that have a name, by their places
    int fileCount_ = 0;
};

} // namespace qx::test
