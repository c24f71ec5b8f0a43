// What a translated text has to keep to, judged on the text alone.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qx::test {

// The kinds of the placeholders, in order: "ds" for a text with %d and then %s. %% is a percent sign. A '?' stands for
// anything else behind a %.
std::string Placeholders(std::wstring_view text);

// The letter that Alt selects a control with, in upper case; 0 when the text has none. && is an ampersand.
wchar_t Mnemonic(std::wstring_view caption);

// A text in the window of the module: what it is called in a report, and its caption.
struct Caption {
    std::string name;
    std::wstring text;
};

// A line for each letter that two captions share.
std::vector<std::string> MnemonicClashes(const std::vector<Caption>& captions);

// What the differences between built-in texts for the same id may amount to: the dash that marks an untranslated
// text, blanks, a colon or dots at the end. Two built-in texts say the same when this is equal.
std::wstring Wording(std::wstring_view text);

} // namespace qx::test
