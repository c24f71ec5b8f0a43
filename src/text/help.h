// Context help: a compiled help file, one variant per language, that ships in a cabinet beside the driver and is
// unpacked into the temporary folder. Its pages are named by number.
//
// Whatever fails only takes help away: nothing is reported to the user. An empty text means no help.
#pragma once

#include "text/help_names.h"
#include "text/localized_text.h"

#include <string>
#include <string_view>
#include <windows.h>

namespace qx {

// Writes the code of language, or "EN" for one without a code, into out (4 units). Nothing when out is null.
void VGetLocaleSubstring(LANGID language, wchar_t* out) noexcept;

// The name of the variant for language, from the printer data "GPDHelpFileName".
std::wstring BuildLocalizedHelpName(std::wstring_view name, LANGID language);

// name in the driver's folder. Without a printer the local print server is asked.
std::wstring BuildDriverFilePath(HANDLE printer, std::wstring_view name);

// Makes sure that the variant for the current text language, or else the English one, is in the temporary folder, and
// gives its path (less than 260 units). What is there already is used as it is.
std::wstring ExtractHelpFromCabinet(const PrinterDriver& driver, std::wstring_view cabinetName,
                                    std::wstring_view helpName);

// The path that dialogs keep (TextOwner::HelpFilePath, at most 255 units): the variant for the user's UI language in
// the temporary folder, with "::/qxhelp.txt" behind it. Whether the file is there is asked when a page is shown.
std::wstring BuildHelpFilePath(const PrinterDriver& driver);

// Opens a page of the compiled help file in the HTML Help viewer, owned by owner. A help file that is not there opens
// nothing: the viewer would complain to the user.
void ShowHelpTopic(std::wstring_view chmPath, HWND owner, std::wstring_view topicName);

// Shows the page of topic from the owner's help file.
void ShowHelp(const TextOwner& owner, HWND window, int topic) noexcept;

} // namespace qx
