// The fields for one recipient on the Fax Job page: name box, fax number and company, and the text that takes the place
// of the number while a group stands in them.
#pragma once

#include "base/number_text.h"
#include "dialog/dialog.h"
#include "dialog/number_filter.h"
#include "dialog/type_ahead_combo.h"
#include "pages/recipient_rules.h"
#include "record/recipient.h"
#include "text/localized_text.h"

#include <optional>
#include <windows.h>

namespace qx {

class PhoneBookGroup;
class RecentRecipientList;

struct RecipientFields {
    const TextOwner* texts = nullptr;
    HWND dialog = nullptr;
    TypeAheadState nameBox;
    NumberFilter faxNumber{.allowed = AllowedInFaxNumber, .accepted = {}};
    // The group that stands in the fields, or null. It belongs to the recent list.
    const PhoneBookGroup* group = nullptr;
    // The fields as the name box last refilled them, until the user changes number or company.
    std::optional<Recipient> refill;
    // Settling has taken the number that stood in the fields away, and the user has not acted on it yet.
    bool numberTaken = false;
    // A field could not be emptied of what belongs to another name. Settling tries again, and throws until it can be.
    bool keepAnothers = false;
};

// Posted to the page, which calls FindFocus: a field may have been disabled under the focus.
inline constexpr UINT kFindFocus = WM_USER + 103;

// Hooks the name box; no group stands in the fields. Throws when that cannot be done whole: half of it would complete
// names without filling in their numbers.
void AttachRecipientFields(RecipientFields& fields, const TextOwner& texts, HWND dialog);

// The recent recipients as they stand become the names that the name box offers. A group in the fields that is no
// longer one of them, or has other members, is refreshed.
void OfferNames(RecipientFields& fields, const RecentRecipientList& recent);

// Throws when a field cannot be read.
Recipient ReadRecipient(const RecipientFields& fields);
bool HasFaxNumber(const RecipientFields& fields); // throws, too
RecipientFacts FactsOf(const RecipientFields& fields) noexcept;
// The fax number, or the text in its place.
int NumberFieldOf(const RecipientFields& fields) noexcept;

// What the user does in the fields. FALSE: not in them, or nothing for the page to act on.
INT_PTR AnswerCommand(RecipientFields& fields, int control, UINT code);
// Number and company become those of the item that the name box has chosen.
void FillFieldsFromNameBox(RecipientFields& fields);

// While the user types, the fields are refilled as long as they are empty: typing on from one name to another leaves
// the number of the first. Before anything is done with the fields, and when the user leaves the name, the one that
// stands there gets its own number. What the user has put into the fields stays, and so it does for an unknown name.
// Throws when it cannot be told whose number stands there.
void SettleFields(RecipientFields& fields);

// Somebody listens: the fax number is one that is required, and the group's text is read for itself, since the label
// before it is another's.
void AnnounceFields(const RecipientFields& fields, Announcements& announcements);

// Empties the fields, for the next recipient.
void ClearFields(RecipientFields& fields);

// A group takes the place of the very field, an entry without number disables the very button that the user was on the
// way to.
void FindFocus(RecipientFields& fields) noexcept;

} // namespace qx
