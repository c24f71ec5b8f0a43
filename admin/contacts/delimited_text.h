// Tables as text, in every dialect that mail programs, web address books and spreadsheets write. The phone book's own
// reader takes its own dialect only, on purpose; this one is for files on their way there.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qx::admin {

struct Record {
    std::size_t line = 0; // on which it begins, from 1
    std::vector<std::wstring> fields;
};

struct DelimitedText {
    std::vector<Record> records; // the header first; lines without anything are left out
    wchar_t delimiter = L',';
    std::string problem; // why it is no table; empty when it is
    std::size_t line = 0;
};

// Fields are parted by a comma, a semicolon or a tab, whichever the first line has most of, unless a line "sep=;"
// before it says so; lines by CR LF, LF or CR. Quotes hold delimiters and line ends together; doubled ones inside are
// one. A quote inside a field that does not begin with one is an ordinary character.
DelimitedText ReadDelimited(std::wstring_view text);

} // namespace qx::admin
