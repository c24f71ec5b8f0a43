// What moving phone book items into the list of recipients amounts to. No window here.
#pragma once

#include "phonebook/book/items.h"

#include <qxfax/send_fax.h>
#include <span>
#include <vector>

namespace qx {

class PhoneBook;

struct RecipientPicks {
    std::vector<const PhoneBookEntry*> entries; // new recipients; one that was chosen before is there again
    std::vector<const PhoneBookItem*> used;     // recently used from now on: a group itself, not its members
    bool tooMany = false; // an item would have passed the limit; it and all behind it are left out
};

// Groups are replaced by those of their members that the book still has. A group whose member ids would pass the limit
// is refused whole, whether its members are found or not.
RecipientPicks PickRecipients(std::span<PhoneBookItem* const> items, std::size_t alreadyChosen, const PhoneBook& book);

// Makes chosen the record's recipients, in that order. The record owns each of its recipients exactly once: its own are
// kept where chosen, all others are copied, and those no longer chosen are freed. Throws std::bad_alloc, with the
// record as it was.
void ReplaceRecipients(FaxJobData& job, std::span<const PhoneBookEntry* const> chosen);

} // namespace qx
