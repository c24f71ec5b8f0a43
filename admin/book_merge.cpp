#include "admin/book_merge.h"

#include "base/limits.h"
#include "base/text.h"
#include "phonebook/book/duplicate_index.h"

#include <algorithm>
#include <unordered_map>

namespace qx::admin {

namespace {

class Merge {
public:
    Merge(PhoneBook& book, Report& report) : book_(book), report_(report), held_(book.Items())
    {
        for (PhoneBookItem* const item : book.Items())
            Note(AsEntry(item));
    }

    void TakeFile(const std::wstring& path)
    {
        const LoadedPhoneBook loaded = LoadPhoneBookFile(path, book_.Store());
        const std::string problem = ProblemOf(loaded.outcome, path);
        if (!problem.empty())
            throw Refusal(problem);
        if (loaded.dropped)
            report_.Problem(Utf8(path) + ": not all of it could be taken; \"phonebook check\" tells what");
        newIds_.clear();
        // First all entries: groups may stand before their members.
        for (PhoneBookItem* const item : loaded.items)
            TakeEntry(AsEntry(item));
        for (PhoneBookItem* const item : loaded.items)
            TakeGroup(AsGroup(item));
    }

    void Summarize()
    {
        Json& data = report_.Data();
        data["entriesAdded"] = entries_;
        data["duplicates"] = duplicates_;
        data["groupsAdded"] = groups_;
        data["groupsExtended"] = extended_;
        data["full"] = full_;
        report_.Say(std::to_string(entries_) + " entries and " + std::to_string(groups_) + " groups are new, " +
                    std::to_string(duplicates_) + " entries are there already, " + std::to_string(extended_) +
                    " groups get more members.");
        if (full_ != 0)
            report_.Problem(std::to_string(full_) + " items did not fit: a phone book holds " +
                            std::to_string(kMaxPhoneBookItems) + ", a group " + std::to_string(kMaxRecipients));
    }

    bool Changed() const noexcept { return entries_ + groups_ + extended_ != 0; }

private:
    void TakeEntry(PhoneBookEntry* entry)
    {
        if (entry == nullptr)
            return;
        const DWORD oldId = entry->GetId();
        entry->SetId(book_.NextId());
        const DuplicateIndex::Keys keys = held_.KeysOf(*entry);
        if (held_.HoldsSame(*entry, keys)) {
            ++duplicates_;
            newIds_.emplace(oldId, IdOfSame(*entry));
        } else if (book_.GetCount() >= kMaxPhoneBookItems) {
            ++full_;
        } else {
            ++entries_;
            held_.Add(*entry, keys);
            book_.Add(entry);
            Note(entry);
            newIds_.emplace(oldId, entry->GetId());
        }
    }

    void TakeGroup(PhoneBookGroup* group)
    {
        if (group == nullptr)
            return;
        std::vector<DWORD> members;
        for (const DWORD id : group->MemberIds()) {
            const auto known = newIds_.find(id);
            if (known != newIds_.end() && std::ranges::find(members, known->second) == members.end())
                members.push_back(known->second);
        }
        if (members.empty())
            return; // the dialogs would drop it with the next deletion
        for (PhoneBookItem* const item : book_.Items()) {
            PhoneBookGroup* const same = AsGroup(item);
            if (same != nullptr && IsSameGroup(*same, *group)) {
                Extend(*same, members);
                return;
            }
        }
        if (book_.GetCount() >= kMaxPhoneBookItems) {
            ++full_;
            return;
        }
        full_ += members.size() - std::min<std::size_t>(members.size(), kMaxRecipients);
        members.resize(std::min<std::size_t>(members.size(), kMaxRecipients));
        group->SetId(book_.NextId());
        group->SetMemberIds(std::move(members));
        book_.Add(group);
        ++groups_;
    }

    void Extend(PhoneBookGroup& group, const std::vector<DWORD>& members)
    {
        bool extended = false;
        for (const DWORD id : members) {
            if (std::ranges::find(group.MemberIds(), id) != group.MemberIds().end())
                continue;
            if (group.MemberIds().size() >= kMaxRecipients) {
                ++full_;
                continue;
            }
            group.AddMemberId(id);
            extended = true;
        }
        extended_ += extended ? 1 : 0;
    }

    void Note(PhoneBookEntry* entry)
    {
        if (entry != nullptr)
            byNumber_[OrEmpty(entry->FaxNumber())].push_back(entry);
    }

    // Nearly always one with the very same number; the rule itself knows more kinds of sameness.
    DWORD IdOfSame(const PhoneBookEntry& entry) const
    {
        const auto found = byNumber_.find(OrEmpty(entry.FaxNumber()));
        if (found != byNumber_.end()) {
            for (const PhoneBookEntry* const held : found->second) {
                if (IsSameEntry(*held, entry))
                    return held->GetId();
            }
        }
        for (const PhoneBookItem* const item : book_.Items()) {
            const PhoneBookEntry* const held = AsEntry(item);
            if (held != nullptr && IsSameEntry(*held, entry))
                return held->GetId();
        }
        return kNoId;
    }

    PhoneBook& book_;
    Report& report_;
    DuplicateIndex held_;
    std::unordered_map<std::wstring, std::vector<const PhoneBookEntry*>> byNumber_;
    std::unordered_map<DWORD, DWORD> newIds_; // of the file that is taken
    std::size_t entries_ = 0;
    std::size_t duplicates_ = 0;
    std::size_t groups_ = 0;
    std::size_t extended_ = 0;
    std::size_t full_ = 0;
};

} // namespace

void MergeBooks(const BookChoice& choice, const std::vector<std::wstring>& files, Report& report)
{
    BookFile file(PathOf(choice));
    file.RefuseUnlessReadable();
    Merge merge(file.Book(), report);
    for (const std::wstring& path : files)
        merge.TakeFile(FullPath(path));
    merge.Summarize();
    if (!merge.Changed())
        return;
    if (!report.DryRun())
        file.Save();
    report.Change("save the phone book " + Quoted(file.Path()));
}

} // namespace qx::admin
