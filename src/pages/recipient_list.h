// The job's recipients and the list that shows them: row i is recipient i, since both change only here.
#pragma once

#include "base/no_copy.h"
#include "dialog/list_view.h"
#include "phonebook/book/items.h"
#include "record/fax_job_data.h"
#include "text/localized_text.h"

#include <span>
#include <windows.h>

namespace qx {

class RecipientList : NoCopy {
public:
    // Sets up an empty list view and fills it. It outlives this object's use, and so does the job.
    void Attach(const TextOwner& texts, HWND list, FaxJobData& job);

    int Count() const noexcept { return static_cast<int>(RecipientsOf(*job_).size()); }
    bool HasSelection() const noexcept { return SelectedCount(list_) > 0; }
    void SelectAll() noexcept { SelectAllRows(list_); }

    // Whether there is a row for each recipient. When there is not, the list is filled again, for the user to look at.
    bool ShowsJob() noexcept;
    // After somebody else has changed the job's recipients: all of them or no row, since some would pass for all. When
    // there are more than before, the last one is in sight.
    void Refill() noexcept;

    // List and record take all entries, or neither takes any. No duplicate test: a recipient may stand in the job as
    // often as the user likes. The last one is in sight then.
    [[nodiscard]] bool Add(std::span<UniqueItem<PhoneBookEntry>> entries) noexcept;
    // The row that followed the last one removed has the list's focus then, so that the keys go on from there.
    void RemoveSelected() noexcept;

    // A Send begins: typed, or nobody if it is null, is going to be sent to as well. False when the job has no room.
    [[nodiscard]] bool Prepare(UniqueItem<PhoneBookEntry> typed) noexcept;
    // The Send is accepted: the job takes what was prepared. There is no row for it, since the sheet is closing.
    // Answers it, the record's from now on, or null.
    const PhoneBookEntry* Send() noexcept;

private:
    bool Append(const FaxRecipient& recipient) noexcept;
    void Fill() noexcept;
    void ShowLastRow() noexcept;

    HWND list_ = nullptr;
    FaxJobData* job_ = nullptr;
    bool rowsAreOld_ = false; // the list has kept them although it was to be filled again
    UniqueItem<PhoneBookEntry> typed_;
};

} // namespace qx
