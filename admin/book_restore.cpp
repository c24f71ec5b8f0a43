#include "admin/book_restore.h"

#include "admin/book_file.h"
#include "phonebook/file/file_replacement.h"
#include "phonebook/ui/phone_book_changed.h"

#include <filesystem>

namespace qx::admin {

namespace {

std::string TimeOf(const std::wstring& path)
{
    const auto stamp = StampOf(path);
    FILETIME utc{.dwLowDateTime = stamp ? static_cast<DWORD>(stamp->written) : 0,
                 .dwHighDateTime = stamp ? static_cast<DWORD>(stamp->written >> 32) : 0};
    SYSTEMTIME system{};
    SYSTEMTIME local{};
    FileTimeToSystemTime(&utc, &system);
    SystemTimeToTzSpecificLocalTime(nullptr, &system, &local);
    char text[32];
    std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u", local.wYear, local.wMonth, local.wDay, local.wHour,
                  local.wMinute);
    return text;
}

struct Copy {
    std::wstring path;
    LoadOutcome outcome;
    BookCounts counts;
};

Copy LookAt(const std::wstring& path)
{
    ItemStore store;
    const LoadedPhoneBook loaded = LoadPhoneBookFile(path, store);
    return {path, loaded.outcome, CountItems(loaded.items)};
}

std::vector<Copy> ListCopies(const std::wstring& path, Report& report)
{
    std::vector<Copy> copies;
    Json listed = Json::array();
    for (const std::wstring& kept : KeptCopies(FollowLink(path))) {
        copies.push_back(LookAt(kept));
        const Copy& copy = copies.back();
        const auto stamp = StampOf(kept);
        listed.push_back({{"number", copies.size()},
                          {"path", Utf8(kept)},
                          {"written", TimeOf(kept)},
                          {"bytes", stamp ? stamp->bytes : 0},
                          {"state", NameOf(copy.outcome)},
                          {"entries", copy.counts.entries},
                          {"groups", copy.counts.groups}});
        const std::string holds = copy.outcome == LoadOutcome::Read
                                      ? Counted(copy.counts.entries, "entry", "entries") + ", " +
                                            Counted(copy.counts.groups, "group", "groups")
                                      : "no phone book that can be read";
        report.Say(std::to_string(copies.size()) + ": " + Utf8(kept) + ", " + TimeOf(kept) + ": " + holds);
    }
    report.Data()["path"] = Utf8(path);
    report.Data()["copies"] = std::move(listed);
    if (copies.empty())
        report.Say("No copies were kept of " + Utf8(path) + ".");
    return copies;
}

void TakeBack(const std::wstring& path, const std::wstring& copy)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0)
        throw Refusal("the phone book " + Quoted(path) + " is read-only");
    const std::string bytes = ReadFileOrRefuse(copy);
    if (!KeepCopy(path))
        throw Refusal("no copy could be kept of the phone book " + Quoted(path) + ", which is as it was");
    if (attributes == INVALID_FILE_ATTRIBUTES)
        WriteFileOrRefuse(path, {}, false); // what is to be replaced has to be there
    Replacement replacement(path);
    if (!replacement)
        throw Refusal("there is no room for a new file beside the phone book " + Quoted(path));
    WriteFileOrRefuse(replacement.Path(), bytes, true);
    if (!replacement.TakePlace([&path] { return KeepCopy(path); })) // what another machine saves meanwhile is kept, too
        throw Refusal("the phone book " + Quoted(path) + " is in use, and is as it was");
}

} // namespace

void RestoreBook(const std::wstring& path, std::size_t copy, Report& report)
{
    const std::vector<Copy> copies = ListCopies(path, report);
    if (copy == 0)
        return;
    if (copy > copies.size())
        throw Refusal("there is no copy " + std::to_string(copy) + " of the phone book " + Quoted(path));
    const Copy& chosen = copies[copy - 1];
    if (chosen.outcome != LoadOutcome::Read)
        throw Refusal(Quoted(chosen.path) + " holds no phone book that can be read");
    if (!report.DryRun()) {
        const std::wstring real = FollowLink(path);
        {
            const FileGuard guard(real);
            const FolderLock lock(real);
            TakeBack(real, chosen.path);
        }
        BroadcastPhoneBookChanged();
    }
    report.Change("put " + Quoted(chosen.path) + " in the place of the phone book " + Quoted(path) +
                  ", of which a copy is kept");
}

} // namespace qx::admin
