#include "phonebook/ui/recipient_picks.h"

#include "base/limits.h"
#include "phonebook/book/phone_book.h"
#include "record/fax_job_data.h"

#include <new>
#include <unordered_map>
#include <utility>

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

// Empties the record's list, with room for count; the caller has the recipients. Throws std::bad_alloc, with nothing
// changed.
void Restart(FaxJobData& job, INT32 count)
{
    OwnedFaxJobData fresh;
    FaxRecipientArray& list = fresh.Get().Recipients;
    list.Capacity = kFirstCapacity;
    if (!MakeRoomForMore(job.Recipients.Count > 0 ? fresh.Get() : job, count))
        throw std::bad_alloc();
    if (job.Recipients.Count > 0)
        std::swap(job.Recipients, list);
    list.Count = 0;
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
    std::vector<FaxRecipient*> recipients;
    std::vector<UniqueItem<PhoneBookEntry>> copies;
    recipients.reserve(chosen.size());
    copies.reserve(chosen.size());
    for (const PhoneBookEntry* const entry : chosen) {
        if (const auto kept = own.extract(entry))
            recipients.push_back(kept.mapped());
        else
            recipients.push_back(AsRecipient(copies.emplace_back(MakeCopy(*entry)).get()));
    }
    Restart(job, static_cast<INT32>(recipients.size()));
    // From here on nothing fails.
    for (FaxRecipient* const recipient : recipients)
        AddRecipient(job, recipient);
    for (UniqueItem<PhoneBookEntry>& copy : copies)
        static_cast<void>(copy.release());
    job.RecipientCount = job.Recipients.Count;
    for (const auto& [entry, recipient] : own)
        QxFaxFreeRecipient(recipient);
}

} // namespace qx
