// The user's standing send settings of a printer, kept in the registry between sends.
#pragma once

#include <optional>
#include <qxfax/send_fax.h>
#include <string>
#include <string_view>
#include <vector>

namespace qx {

// What becomes of a stored setting that is there and cannot be read. Refused: the load throws std::runtime_error; for
// what is going to be stored again.
enum class UnreadDefaults { LeftOut, Refused };

// Reads the stored settings of record.PrinterHandle into the record. What is missing, or not acceptable, leaves its
// field as it was. The record's keys are opened for it and stay open. True when the user has stored defaults before.
// Throws std::bad_alloc when there is no memory for one.
bool LoadFaxDefaults(FaxJobData& record, UnreadDefaults unread = UnreadDefaults::LeftOut);

// Writes the record's settings. One that cannot be written does not stop the others; without a subtree of the
// printer nothing is written.
void SaveFaxDefaults(FaxJobData& record);

// Gives to what from has, all but whether defaults are to be applied. Nothing is read or written.
void CopyFaxDefaults(const FaxJobData& from, FaxJobData& to) noexcept;

// For tools that store single settings or explain them. The stored values' names, in the order in which they are read.
struct FaxDefaultName {
    const wchar_t* name;
    DWORD type; // REG_SZ or REG_DWORD
};
std::vector<FaxDefaultName> FaxDefaultNames();
// What loading makes of a stored text; none when it is not taken over at all.
std::optional<std::wstring> FaxDefaultTakenOver(std::wstring_view name, const std::wstring& stored);
// The same for a stored number.
DWORD FaxDefaultTakenOver(std::wstring_view name, DWORD stored);

} // namespace qx
