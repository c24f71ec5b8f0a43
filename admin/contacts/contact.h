// People as files of other programs hold them, before their numbers are looked at.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace qx::admin {

// One number of one person. A person with several fax numbers is several contacts.
struct Contact {
    std::size_t line = 0;   // of the file, from 1
    std::wstring name;      // one line, never empty
    std::wstring faxNumber; // as the file has it, never empty
    std::wstring company;
    bool operator==(const Contact&) const = default;
};

// Somebody, or something, in the file that could not be taken, and why: a sentence's end in English, UTF-8.
struct Unusable {
    std::size_t line = 0;
    std::wstring name; // as far as it is known
    std::string why;
};

struct ContactFile {
    std::vector<Contact> contacts;
    std::vector<Unusable> unusable;
    std::size_t people = 0;        // cards or rows
    std::size_t withoutNumber = 0; // of these: without any fax number
    std::string problem;           // why nothing of the file could be read; empty when it was read
};

} // namespace qx::admin
