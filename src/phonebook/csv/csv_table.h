// CSV files: read through a mapping of the whole file, and written through one.
#pragma once

#include "base/unique.h"
#include "phonebook/csv/csv_text.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qx {

inline void FreePages(void* block) noexcept
{
    VirtualFree(block, 0, MEM_RELEASE);
}
using UniquePages = Unique<void*, FreePages>;

// A CSV file that is read: open, read, look at its fields. One run each.
class CsvTable {
public:
    // False when the file cannot be opened, or is empty.
    bool Open(const std::wstring& path) noexcept;

    // Finds out the encoding, decodes and parses. A good table may still be one without rows. Unreadable when the file
    // could not be read to its end.
    CsvStatus Read() noexcept;

    // They live as long as the table.
    const CsvFields& Fields() const noexcept { return fields_; }

private:
    std::wstring_view Decode(CsvEncoding encoding, std::span<const unsigned char> bytes);

    UniqueFile file_;
    std::size_t bytes_ = 0;
    UniquePages content_; // the file, and what UTF-16 fields point into
    UniquePages text_;    // the decoded text of the other encodings
    CsvFields fields_;
};

// A CSV file that is written: open, set the size, set the cells in any order, write. UTF-16 with its mark.
class CsvTableWriter {
public:
    // Creates the file, or replaces what it held. False when that is not possible.
    bool Open(const std::wstring& path) noexcept;

    // Makes room for a table of empty cells whose texts are shorter than cellUnits; it has two columns or more. False
    // when memory is short.
    bool SetSize(std::size_t rows, std::size_t columns, std::size_t cellUnits) noexcept;

    // False, and the cell stays empty, when it lies outside the table or the text is too long. Once per cell.
    bool SetCell(std::size_t row, std::size_t column, std::wstring_view text) noexcept;

    // Writes the whole file. An empty cell writes nothing, not even its comma. False when it could not be written to
    // its end; it is empty then.
    bool Write() noexcept;

private:
    bool WriteMapped(std::size_t& bytes) noexcept;
    std::size_t MappedBytes() const noexcept;
    wchar_t* WriteRows(wchar_t* to) const noexcept;

    UniqueFile file_;
    UniquePages storage_; // the quoted texts, one behind the other, each with room for a terminator
    std::size_t storageUnits_ = 0;
    std::size_t usedUnits_ = 0;
    std::vector<std::wstring_view> cells_; // row by row, into the storage
    std::size_t columns_ = 0;
    std::size_t cellUnits_ = 0;
};

} // namespace qx
