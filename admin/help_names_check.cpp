#include "admin/help_names_check.h"

#include "admin/command.h"
#include "base/printer.h"
#include "settings/names.h"
#include "text/help.h"

namespace qx::admin {

HelpNames HelpNamesOf(HANDLE printer, const std::wstring& helpFile)
{
    const std::wstring path = BuildHelpFilePath(PrinterDriver(printer));
    return {.unpacked = BuildLocalizedHelpName(helpFile, GetUserDefaultUILanguage()),
            .shown = std::wstring(BaseName(HelpChmPath(path)))};
}

bool SameFileName(const std::wstring& a, const std::wstring& b) noexcept
{
    return CompareStringOrdinal(a.c_str(), -1, b.c_str(), -1, TRUE) == CSTR_EQUAL;
}

std::string WhyHelpNamesFail(const HelpNames& names, const std::wstring& helpFile)
{
    if (names.unpacked.empty())
        return Utf8(kHelpFileValue) + ' ' + Quoted(helpFile) +
               " gives no file name: it needs three parts with underscores between them, such as QXZH_XX_F1.CHM";
    if (names.shown.empty())
        return "the driver has no dependent file with QXZHL in its name, such as QXZHLF1.CHM: install the driver with "
               "one";
    if (!SameFileName(names.unpacked, names.shown))
        return Utf8(kHelpFileValue) + ' ' + Quoted(helpFile) + " leads to " + Utf8(names.unpacked) +
               ", but the driver's dependent file to " + Utf8(names.shown) + ": change one of the two";
    return {};
}

} // namespace qx::admin
