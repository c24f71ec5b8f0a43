// What a user does at each place.
#pragma once

#include "events.h"
#include "sheet_user.h"

#include <string_view>

namespace qx::test {

// What is typed and pasted.
inline constexpr std::wstring_view kKeys = L"aAnNtTeEdbx m\x5D0\xD83D\xDE00\x0301";
inline constexpr const wchar_t* kNewNames[] = {
    L"Anna", L"anna", L"Bea", L"Team", L"Tom \"T\" <t@x>", L"Ann", L"Zoe", L"zoe&", L"\x5D0\x5D1\x5D2", L"M\x301"};
inline constexpr const wchar_t* kNumbers[] = {L"5550100", L"", L"(030)1,#", L"+1", L"12a", L"111", L"222"};
inline constexpr const wchar_t* kCompanies[] = {L"Mill", L"", L"Orchard & Sons", L"a\"b,c"};

// In several places.
template <int button> void Press(SheetUser& user)
{
    user.Press(button);
}
void SomebodySaves(SheetUser& user);
void SomebodySavesUnnoticed(SheetUser& user);
void Look(SheetUser& user);
void Cancel(SheetUser& user);

// The sheet, and what it opens of its own.
extern const std::span<const Verb> kOutsideVerbs;
extern const std::span<const Verb> kFaxJobVerbs;
extern const std::span<const Verb> kSetupVerbs;
extern const std::span<const Verb> kDefaultsVerbs;
extern const std::span<const Verb> kBoxVerbs;

// The phone book.
extern const std::span<const Verb> kPickerVerbs;
extern const std::span<const Verb> kEditorVerbs;
extern const std::span<const Verb> kEntryVerbs;
extern const std::span<const Verb> kGroupVerbs;
extern const std::span<const Verb> kDetailsVerbs;
extern const std::span<const Verb> kMapVerbs;
extern const std::span<const Verb> kFileVerbs;

} // namespace qx::test
