// The rules of CSV texts once more, done step by step the slow way: what the fast reader is compared with.
#pragma once

#include "phonebook/csv/csv_text.h"

#include <string>
#include <vector>

namespace qx::test {

struct LiteralTable {
    CsvStatus status = CsvStatus::Good;
    std::size_t columns = 0;
    std::vector<std::vector<std::wstring>> rows; // raw fields, each row padded to the columns
};

LiteralTable ParseLiterally(std::wstring text);

// What a field says, quotes removed.
std::wstring ReadLiterally(std::wstring field);

} // namespace qx::test
