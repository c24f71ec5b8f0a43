// The user's standing send settings of a printer, as the registry and a job record hold them and as dialogs show them.
#pragma once

#include <map>
#include <qxfax/send_fax.h>
#include <string>
#include <variant>
#include <windows.h>

namespace qx::test {

// By the names of the stored values. A number is a REG_DWORD, a text a REG_SZ with one terminator.
using DefaultValue = std::variant<DWORD, std::wstring>;
using UserDefaults = std::map<std::wstring, DefaultValue>;

// All that the key holds. What is stored in another way shows as the text "<odd>".
UserDefaults DefaultsIn(HKEY key);

// All fourteen, none as a new record has it.
UserDefaults SampleDefaults();

UserDefaults DefaultsOf(const FaxJobData& record);
void SetDefaultsOf(FaxJobData& record, const UserDefaults& defaults); // those of the names that are there

// What a dialog shows: the sender, quality, notification and preview; and the cover page.
UserDefaults SenderSettingsIn(HWND dialog);
UserDefaults CoverPageIn(HWND dialog);

// Those of the names that some has.
UserDefaults ThoseAmong(const UserDefaults& all, const UserDefaults& some);

} // namespace qx::test
