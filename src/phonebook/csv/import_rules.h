// What an import makes of the rows of a CSV file, and what is said about it. Rules over plain texts and numbers.
#pragma once

#include "phonebook/csv/csv_text.h"
#include "record/recipient.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qx {

// How an import or an export ended. The values are the documented result codes; the positive ones have something to
// tell the user.
enum class ImportExportStatus {
    Cancelled = 0,     // also an import in which no row counted: nothing to tell
    InvalidFormat = 1, // not a CSV file that is understood
    CannotOpen = 2,
    ExportFailed = 3,
    Exported = 4,
    // The outcome of the last row that counted:
    Imported = 5,   // it was added
    BookFull = 6,   // the book could not take it
    RowRefused = 7, // it was a duplicate or had an invalid fax number
};

// A text up to the first line break that has an ordinary character before it: breaks at the very beginning stay.
std::wstring_view UpToLineBreak(std::wstring_view text) noexcept;

// ---- which column feeds which field --------------------------------------------------------------------------------

// The fields of an entry, as the rows of the mapping dialog number them.
enum MappedField { kMappedName = 0, kMappedFaxNumber = 1, kMappedCompany = 2 };
inline constexpr int kMappedFieldCount = 3;

struct FieldMapping {
    int source = 0;      // column of the file
    int destination = 0; // MappedField
    bool operator==(const FieldMapping&) const = default;
};

inline constexpr int kNotMapped = -1;

// Walks the pairs in order and leaves in source the column of the first one with that destination. A miss on the way
// writes kNotMapped, so that is the answer without a match, while an empty list leaves source alone.
void FindMappedSource(std::span<const FieldMapping> mapping, int destination, int& source) noexcept;

struct ImportColumns {
    int name = kNotMapped;
    int faxNumber = kNotMapped;
    int company = kNotMapped;
};
ImportColumns ColumnsOf(std::span<const FieldMapping> mapping) noexcept;

// The texts of the first line, in column order; none for an empty field. Empty when there are no lines.
std::vector<std::optional<std::wstring>> HeaderTexts(const CsvFields& fields);

// ---- rows ----------------------------------------------------------------------------------------------------------

// One line of the file, cut to what an entry takes. Made to be filled again and again.
struct ImportRow : Recipient {
    bool hasFaxNumberField = false; // false: the fax number is not mapped, or its field has no characters at all
};
void ReadImportRow(const CsvFields& fields, std::size_t row, const ImportColumns& columns, ImportRow& read);

// ---- the report ----------------------------------------------------------------------------------------------------

// A line of the count message: a text of the string library with one number in it.
struct CountLine {
    unsigned text;
    int number;
    bool operator==(const CountLine&) const = default;
};

struct CountMessage {
    std::vector<CountLine> lines;       // none: no message
    bool replacesStatusMessage = false; // the outcome as a whole is not told as well
};
CountMessage CountMessageFor(int duplicates, int invalidFaxNumbers);

} // namespace qx
