// Fax numbers as people write them, made into what the fax number field accepts.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qx::admin {

// What is dialled from here. All of them may be empty.
struct DialingRules {
    std::wstring outsideLine;        // before every number but the house's own: "0" or "9,"
    std::wstring international;      // instead of "+": "00" or "011"
    std::wstring country;            // the own country's code: numbers of it are dialled as national ones
    std::wstring trunk;              // before those, instead of the country's code: "0" in most of Europe
    std::size_t extensionDigits = 0; // numbers of at most so many digits are the house's own
};

// Why nothing could be dialled by these rules; empty when all is well.
std::string WhyRulesAreWrong(const DialingRules& rules);

// What was done to a number, in the order in which the rules are stated in the administrator's guide.
enum class NumberChange {
    PlainCharacters, // full-width and other scripts' digits, dashes and invisible marks
    Unwrapped,       // what a spreadsheet or an address puts around a number: ="..." or tel:
    SeparatorsLeft,  // blanks, dots and slashes between digits were left out
    TrunkZeroLeft,   // "(0)" behind a country's code is not dialled from abroad
    International,   // "+" became what is dialled for it
    National,        // the own country's code became the trunk prefix
    OutsideLine,     // the outside line's number stands before it
};

struct FaxNumber {
    std::wstring number;               // what the field accepts, at most 50 units; empty when it was refused
    std::string why;                   // why it was refused: a sentence's end in English, UTF-8
    std::vector<NumberChange> changes; // none: it is what it was
};

// No digit is ever left out or put in but by the changes above. Whatever is not clearly one number is refused: letters,
// two numbers in one field, a "+" without a rule for it, parentheses without partner, numbers that spreadsheets have
// rounded, more digits than there can be.
FaxNumber NormalFaxNumber(std::wstring_view written, const DialingRules& rules);

} // namespace qx::admin
