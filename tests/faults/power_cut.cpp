#include "power_cut.h"

#include "base/unique.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <optional>
#include <set>
#include <windows.h>

namespace qx::test {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMostInAllCombinations = 8; // pending changes
constexpr int kOldContent = 0, kZeros = 1, kHalf = 2, kLostContents = 3;

using Place = std::pair<std::uint64_t, std::uint64_t>;

std::optional<Place> PlaceOf(HANDLE file)
{
    BY_HANDLE_FILE_INFORMATION info{};
    if (!GetFileInformationByHandle(file, &info))
        return std::nullopt;
    return Place{info.dwVolumeSerialNumber, std::uint64_t{info.nFileIndexHigh} << 32 | info.nFileIndexLow};
}

UniqueFile OpenBesideOthers(const fs::path& path)
{
    return UniqueFile(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

std::string ContentOf(HANDLE file)
{
    LARGE_INTEGER size{};
    GetFileSizeEx(file, &size);
    std::string content(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    ReadFile(file, content.data(), static_cast<DWORD>(content.size()), &read, nullptr);
    content.resize(read);
    return content;
}

void Remove(const fs::path& file)
{
    SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
    DeleteFileW(file.c_str());
}

// Which of the pending changes may be lost together.
std::vector<std::vector<std::size_t>> LossesOf(const std::vector<std::size_t>& pending)
{
    std::vector<std::vector<std::size_t>> losses;
    if (pending.size() <= kMostInAllCombinations) {
        for (std::size_t set = 0; set < std::size_t{1} << pending.size(); ++set) {
            losses.emplace_back();
            for (std::size_t i = 0; i < pending.size(); ++i) {
                if ((set >> i & 1) != 0)
                    losses.back().push_back(pending[i]);
            }
        }
        return losses;
    }
    // The last ones, the first ones, one, all but one.
    const auto end = pending.end();
    for (auto place = pending.begin(); place != end; ++place) {
        losses.emplace_back(place, end);
        losses.emplace_back(pending.begin(), place);
        losses.push_back({*place});
        losses.emplace_back(pending);
        std::erase(losses.back(), *place);
    }
    return losses;
}

} // namespace

DiskRecording::DiskRecording(std::vector<fs::path> folders, fs::path file)
    : folders_(std::move(folders)), file_(std::move(file))
{
    last_ = Look();
    for (const auto& [path, seen] : last_) {
        files_[seen.place] = fileCount_;
        firstNames_[path] = fileCount_;
        firstContents_[fileCount_] = seen.content;
        ++fileCount_;
    }
}

std::vector<fs::path> DiskRecording::Files() const
{
    std::vector<fs::path> files;
    std::error_code ignored;
    for (const fs::path& folder : folders_) {
        for (const auto& entry : fs::recursive_directory_iterator(folder, ignored)) {
            if (!entry.is_directory(ignored))
                files.push_back(entry.path());
        }
    }
    for (const auto& entry : fs::directory_iterator(file_.parent_path(), ignored)) {
        if (entry.path().filename().wstring().starts_with(file_.filename().wstring()))
            files.push_back(entry.path());
    }
    return files;
}

DiskRecording::Snapshot DiskRecording::Look() const
{
    Snapshot snapshot;
    for (const fs::path& path : Files()) {
        const UniqueFile file = OpenBesideOthers(path);
        const auto place = file ? PlaceOf(file.Get()) : std::nullopt;
        if (place)
            snapshot[path] = {*place, ContentOf(file.Get())};
    }
    return snapshot;
}

void DiskRecording::NoteChanges()
{
    Snapshot now = Look();
    std::set<Place> places;
    for (const auto& [path, seen] : now)
        places.insert(seen.place);
    // The place of a file that is gone is soon another's.
    std::erase_if(files_, [&](const auto& file) { return !places.contains(file.first); });

    Change names{.step = Step::Names, .names = {}, .file = kNone, .content = {}};
    std::vector<Change> contents;
    for (const auto& [path, seen] : now) {
        const auto [known, isNew] = files_.try_emplace(seen.place, fileCount_);
        fileCount_ += isNew;
        const auto before = last_.find(path);
        const bool sameFile = !isNew && before != last_.end() && before->second.place == seen.place;
        if (!sameFile)
            names.names[path] = known->second;
        std::string old;
        for (const auto& [oldPath, oldSeen] : last_) {
            if (!isNew && oldSeen.place == seen.place)
                old = oldSeen.content;
        }
        if (old != seen.content)
            contents.push_back({.step = Step::Content, .names = {}, .file = known->second, .content = seen.content});
    }
    for (const auto& [path, seen] : last_) {
        if (!now.contains(path))
            names.names[path] = kNone;
    }
    if (!names.names.empty())
        changes_.push_back(std::move(names));
    changes_.insert(changes_.end(), contents.begin(), contents.end());
    last_ = std::move(now);
}

void DiskRecording::Take(const WatchedCall& call)
{
    const std::scoped_lock lock(lock_);
    NoteChanges();
    if (call.instant == Instant::Before || call.result == 0)
        return;
    const std::string_view function = call.function;
    if (function == "FlushFileBuffers") {
        const auto place = PlaceOf(reinterpret_cast<HANDLE>(call.arguments[0]));
        if (const auto file = place ? files_.find(*place) : files_.end(); file != files_.end())
            changes_.push_back({.step = Step::FileIsFlushed, .names = {}, .file = file->second, .content = {}});
    } else if (function == "MoveFileExW" && (call.arguments[2] & MOVEFILE_WRITE_THROUGH) != 0) {
        changes_.push_back({.step = Step::NamesAreFlushed, .names = {}, .file = kNone, .content = {}});
    }
}

std::vector<std::size_t> DiskRecording::PendingAt(std::size_t end) const
{
    std::vector<std::size_t> pending;
    for (std::size_t i = 0; i < end; ++i) {
        const Change& change = changes_[i];
        const auto makesSafe = [&change](const Change& later) {
            if (later.step == Step::NamesAreFlushed)
                return change.step == Step::Names;
            if (later.step != Step::FileIsFlushed)
                return false;
            return change.step == Step::Content
                       ? change.file == later.file
                       : std::ranges::any_of(change.names, [&](const auto& name) { return name.second == later.file; });
        };
        const bool changes = change.step == Step::Names || change.step == Step::Content;
        if (changes && std::none_of(changes_.begin() + static_cast<std::ptrdiff_t>(i),
                                    changes_.begin() + static_cast<std::ptrdiff_t>(end), makesSafe))
            pending.push_back(i);
    }
    return pending;
}

FolderState DiskRecording::StateAt(std::size_t end, const std::vector<std::size_t>& lost, int lostContent) const
{
    auto names = firstNames_;
    auto contents = firstContents_;
    for (std::size_t i = 0; i < end; ++i) {
        const Change& change = changes_[i];
        const bool isLost = std::ranges::find(lost, i) != lost.end();
        if (change.step == Step::Names && !isLost) {
            for (const auto& [path, file] : change.names) {
                if (file == kNone)
                    names.erase(path);
                else
                    names[path] = file;
            }
        } else if (change.step == Step::Content) {
            const std::string& content = change.content;
            if (!isLost)
                contents[change.file] = content;
            else if (lostContent == kZeros)
                contents[change.file].assign(content.size(), '\0');
            else if (lostContent == kHalf)
                contents[change.file] = content.substr(0, content.size() / 2);
        }
    }
    FolderState state;
    for (const auto& [path, file] : names)
        state[path] = contents[file];
    return state;
}

std::vector<FolderState> DiskRecording::StatesAfterPowerCut() const
{
    std::set<FolderState> states;
    for (std::size_t end = 0; end <= changes_.size(); ++end) {
        for (const auto& lost : LossesOf(PendingAt(end))) {
            for (int lostContent = 0; lostContent < kLostContents; ++lostContent)
                states.insert(StateAt(end, lost, lostContent));
        }
    }
    return {states.begin(), states.end()};
}

FolderState DiskRecording::Now() const
{
    FolderState state;
    for (const auto& [path, seen] : Look())
        state[path] = seen.content;
    return state;
}

void DiskRecording::Restore(const FolderState& state) const
{
    for (const fs::path& file : Files())
        Remove(file);
    for (const auto& [path, content] : state)
        WriteBytes(path, content);
}

} // namespace qx::test
