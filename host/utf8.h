// Windows speaks UTF-16; consoles, scripts and JSON speak UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace qx::host {

std::string Utf8(std::wstring_view text);
std::wstring Wide(std::string_view text);

// The text as it stands in an attribute of an XML document.
std::wstring XmlEscaped(std::wstring_view text);

// "what: " and the system's text for a Windows error number.
std::string SystemError(std::string_view what, unsigned long error);

} // namespace qx::host
