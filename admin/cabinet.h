// The help cabinet, looked into without unpacking anything for the user.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qx::admin {

// Names of the files in a cabinet; none when it cannot be read to its end.
std::optional<std::vector<std::wstring>> FilesInCabinet(const std::wstring& cabinet);

// The bytes of one of its files, whatever the name's case; none when it is not there or cannot be unpacked. A temporary
// file is made for it and removed.
std::optional<std::string> FileFromCabinet(const std::wstring& cabinet, const std::wstring& name);

} // namespace qx::admin
