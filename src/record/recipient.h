// Whom a fax goes to.
#pragma once

#include <string>

namespace qx {

// The three texts on their way between a page's fields, the job record, the phone book, the registry and files.
struct Recipient {
    std::wstring name;
    std::wstring faxNumber;
    std::wstring company;
    bool operator==(const Recipient&) const = default;
};

} // namespace qx
