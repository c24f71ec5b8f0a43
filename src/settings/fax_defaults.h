// The user's standing send settings of a printer, kept in the registry between sends.
#pragma once

#include <qxfax/send_fax.h>

namespace qx {

// Reads the stored settings of record.PrinterHandle into the record. What is missing, or not acceptable, leaves its
// field as it was. The record's keys are opened for it and stay open. True when the user has stored defaults before.
bool LoadFaxDefaults(FaxJobData& record);

// Writes the record's settings. One that cannot be written does not stop the others; without a subtree of the
// printer nothing is written.
void SaveFaxDefaults(FaxJobData& record);

// Gives to what from has, all but whether defaults are to be applied. Nothing is read or written.
void CopyFaxDefaults(const FaxJobData& from, FaxJobData& to) noexcept;

} // namespace qx
