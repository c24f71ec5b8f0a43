// Texts of other programs' files, in whatever encoding they were written.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace qx::admin {

// Decodes bytes of a Windows code page; none when they are not of it, or when the system lacks it.
using CodePageDecoder = std::function<std::optional<std::wstring>(std::string_view bytes, unsigned codePage)>;

inline constexpr unsigned kUtf8CodePage = 65001;

// The Windows code page of an encoding's name ("windows-1252", "Shift_JIS", "ISO-8859-15", "1250"), whatever its case;
// 0 when nobody knows the name.
unsigned CodePageOf(std::string_view name);

// UTF-16 units, also where wchar_t is wider. None when the bytes are not well-formed.
std::optional<std::wstring> DecodeUtf8(std::string_view bytes);

struct DecodedFile {
    std::wstring text;    // without a mark
    std::string encoding; // "UTF-8", "UTF-16, little-endian", "code page 1252"
    std::string problem;  // why it could not be decoded; empty when it was
    std::size_t line = 0; // of the first byte that made the problem; 0 when none did
};

// By the file's mark, then by zero bytes that give UTF-16 away. Otherwise codePage is taken when it is not 0, and UTF-8
// when it is.
DecodedFile DecodeFile(std::string_view bytes, unsigned codePage, const CodePageDecoder& decode);

// What a file of UTF-16 says, as UTF-8; nothing for any other file.
std::optional<std::string> Utf8OfUtf16File(std::string_view bytes);

std::string EncodeUtf8(std::wstring_view utf16);

} // namespace qx::admin
