// The names of help: language codes, compiled help files, pages. Decisions only; nothing here asks Windows.
//
// Every name comes from printer data or from the driver's installation, so it is data from outside: what does not
// give a usable name gives an empty one, and an empty one means no help.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qx {

inline constexpr int kNoTopic = -1;

// Two letters for a Windows language identifier; null for a language that has none.
const wchar_t* FindHelpLanguageCode(std::uint16_t language) noexcept;

// The compiled help file of one language, from the name in the printer's data: "QXFXH_XX_F1.CHM" gives
// "QXFXHDEF1.CHM". Empty when name has fewer than three tokens, or when the result is no plain file name.
std::wstring LocalizedHelpName(std::wstring_view name, std::wstring_view code);

// The same from the driver's dependent file, where the letter L marks the place of the code: "QXZHLF1.CHM" gives
// "QXZHENF1.CHM::/qxhelp.txt". Empty when baseName has fewer than two tokens, or names no plain file.
std::wstring HelpFileInnerPath(std::wstring_view baseName, std::wstring_view code);

// Whether a file in the driver's list names the help; upperCasePath is written in capitals.
bool IsHelpFile(std::wstring_view upperCasePath) noexcept;
std::wstring_view BaseName(std::wstring_view path) noexcept;

// Whether name can only ever be a file directly inside a folder: no path, no stream, no wildcard, no device.
bool IsPlainFileName(std::wstring_view name) noexcept;

// "15596.html"; empty for kNoTopic.
std::wstring HelpTopicName(int topic);

// The compiled help file of a help file path: what stands before the last colon but one. Empty when there is none.
std::wstring_view HelpChmPath(std::wstring_view helpFilePath) noexcept;

// What the viewer is asked to show. Empty when either part is, or when the whole exceeds capacity, terminator
// included (UTF-16 units).
std::wstring HelpPagePath(std::wstring_view chmPath, std::wstring_view topicName, std::size_t capacity);

} // namespace qx
