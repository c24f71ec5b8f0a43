// Writing the driver's job record. Everything stored lives on the process heap and belongs to the record.
#pragma once

#include "base/no_copy.h"
#include "base/unique.h"

#include <qxfax/send_fax.h>
#include <span>

namespace qx {

// Frees the text and stores a copy of the new one. A null text is stored as an empty one. When memory is short the
// field stays null.
void ReplaceOwnedText(wchar_t*& field, const wchar_t* text) noexcept;
template <wchar_t* FaxJobData::* kField> void SetTextOf(FaxJobData& record, const wchar_t* text) noexcept
{
    ReplaceOwnedText(record.*kField, text);
}

// One setter per text field.
inline constexpr auto SetSenderName = SetTextOf<&FaxJobData::SenderName>;
inline constexpr auto SetSenderCompany = SetTextOf<&FaxJobData::SenderCompany>;
inline constexpr auto SetSenderFaxNo = SetTextOf<&FaxJobData::SenderFaxNo>;
inline constexpr auto SetSenderVoiceNo = SetTextOf<&FaxJobData::SenderVoiceNo>;
inline constexpr auto SetNotifyEmail = SetTextOf<&FaxJobData::NotifyEmail>;
inline constexpr auto SetCoverPageNotes = SetTextOf<&FaxJobData::CoverPageNotes>;
inline constexpr auto SetCoverPageSubject = SetTextOf<&FaxJobData::CoverPageSubject>;
inline constexpr auto SetBillingCode = SetTextOf<&FaxJobData::BillingCode>;
inline constexpr auto SetDefaultOverlayPath = SetTextOf<&FaxJobData::DefaultOverlayPath>;
inline constexpr auto SetTitle = SetTextOf<&FaxJobData::Title>;

// The field is one buffer of 260 units, made on first use and kept; at most 258 units of the text are stored.
void SetOverlayPath(FaxJobData& record, const wchar_t* text) noexcept;

// Makes the storage that the driver left out, for the capacity that it stated, and publishes the recipients that it has
// filled in.
void MakeRoomForRecipients(FaxJobData& record) noexcept;
// Appends a recipient that the record owns from then on. FALSE for a null entry, or when memory is short (the entry
// then stays the caller's).
BOOL AddRecipient(FaxJobData& record, FaxRecipient* entry) noexcept;
// Makes room for count more, doubling the capacity as often as needed: as many AddRecipient then succeed. False, and
// nothing changed, when memory is short.
[[nodiscard]] bool MakeRoomForMore(FaxJobData& record, INT32 count) noexcept;
// Removes and frees the recipient at index; an index outside the list changes nothing.
void DeleteRecipient(FaxJobData& record, INT32 index) noexcept;

// Each exchanges one part of two records, texts with their owners, and cannot fail: a record is prepared beside the
// driver's, and what is complete changes places with it.
void ExchangeSendSettings(FaxJobData& a, FaxJobData& b) noexcept; // sender, quality, notification, preview
void ExchangeCoverPage(FaxJobData& a, FaxJobData& b) noexcept;    // flag, notes, subject, image path

// Whether the texts of that part are all there: a setter that lacks memory leaves its field null.
bool HasSendSettings(const FaxJobData& record) noexcept;
bool HasCoverPage(const FaxJobData& record) noexcept;

// The recipients as they stand.
std::span<FaxRecipient* const> RecipientsOf(const FaxJobData& record) noexcept;

// Empties the table of localized texts, with room for 10.
void RestartStrings(FaxJobData& record) noexcept;
// Appends a copy of text. FALSE, and nothing changed, for an id of 0 or when memory is short.
BOOL AppendString(FaxJobData& record, INT32 id, const wchar_t* text) noexcept;

// A record of the module's own, such as the user's defaults while they are edited. Frees all that it holds.
class OwnedFaxJobData : NoCopy {
public:
    OwnedFaxJobData() noexcept { QxFaxInitJob(&record_); }
    ~OwnedFaxJobData() { QxFaxReleaseJob(&record_); }

    FaxJobData& Get() noexcept { return record_; }
    const FaxJobData& Get() const noexcept { return record_; }

private:
    FaxJobData record_{};
};

} // namespace qx
