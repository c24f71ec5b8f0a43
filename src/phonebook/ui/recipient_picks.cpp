#include "phonebook/ui/recipient_picks.h"

#include "base/limits.h"
#include "phonebook/book/phone_book.h"
#include "record/fax_job_data.h"

#include <new>
#include <unordered_map>

namespace qx {

namespace {

constexpr INT32 kFirstCapacity = 10;

void PickMembers(const PhoneBookGroup& group, const PhoneBook& book, RecipientPicks& picks)
{
    for (const DWORD id : group.MemberIds()) {
        if (const PhoneBookEntry* const member = book.FindEntry(id))
            picks.entries.push_back(member);
    }
}

// A copy of the record's own; left out when memory is short.
void AddCopy(FaxJobData& job, const PhoneBookEntry& entry) noexcept
try {
    UniqueItem<PhoneBookEntry> copy = MakeCopy(entry);
    if (AddRecipient(job, AsRecipient(copy.get())))
        static_cast<void>(copy.release());
} catch (const std::bad_alloc&) {
}

} // namespace

RecipientPicks PickRecipients(std::span<PhoneBookItem* const> items, std::size_t alreadyChosen, const PhoneBook& book)
{
    RecipientPicks picks;
    for (const PhoneBookItem* const item : items) {
        const PhoneBookGroup* const group = AsGroup(item);
        const std::size_t wanted = group != nullptr ? group->MemberIds().size() : 1;
        if (alreadyChosen + picks.entries.size() + wanted > kMaxRecipients) {
            picks.tooMany = true;
            break;
        }
        if (group != nullptr)
            PickMembers(*group, book, picks);
        else
            picks.entries.push_back(AsEntry(item));
        picks.used.push_back(item);
    }
    return picks;
}

void ReplaceRecipients(FaxJobData& job, std::span<const PhoneBookEntry* const> chosen)
{
    std::unordered_map<const PhoneBookEntry*, FaxRecipient*> own;
    for (FaxRecipient* const recipient : RecipientsOf(job))
        own.emplace(AsEntry(recipient), recipient);
    if (job.Recipients.Count > 0)
        RestartRecipients(job, kFirstCapacity);
    for (const PhoneBookEntry* const entry : chosen) {
        if (const auto kept = own.extract(entry))
            AddRecipient(job, kept.mapped());
        else
            AddCopy(job, *entry);
    }
    job.RecipientCount = job.Recipients.Count;
    // Last: a recipient that was chosen twice is copied from the one that is kept.
    for (const auto& [entry, recipient] : own)
        QxFaxFreeRecipient(recipient);
}

} // namespace qx
