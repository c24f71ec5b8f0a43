// Whether the names of a printer's help lead to one file.
#pragma once

#include <string>
#include <windows.h>

namespace qx::admin {

struct HelpNames {
    std::wstring
        unpacked;       // in the cabinet and in the temporary folder; empty when the printer data gives no usable name
    std::wstring shown; // what the dialogs ask for; empty when the driver has no dependent file for it
};

// For the user's language. helpFile is the printer data GPDHelpFileName, present or to be.
HelpNames HelpNamesOf(HANDLE printer, const std::wstring& helpFile);

bool SameFileName(const std::wstring& a, const std::wstring& b) noexcept;

// Why they lead nowhere: a sentence without its end, UTF-8; empty when they agree.
std::string WhyHelpNamesFail(const HelpNames& names, const std::wstring& helpFile);

} // namespace qx::admin
