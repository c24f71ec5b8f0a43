// Sort keys that order texts as CompareUserText does, at a fraction of its cost.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace qx {

// Makes keys for the user's current locale; make one for each job, not for each text. Use on one thread at a time.
class UserTextKeys {
public:
    UserTextKeys();

    // Whether keys decide for text: it holds only characters whose keys are known to agree with CompareUserText, in
    // order and in equality. Other texts (combining marks, presentation forms, ...) must be compared themselves.
    static bool Decide(std::wstring_view text) noexcept;
    // Whether keys decide at least if text equals another of this kind: that holds for many more scripts.
    static bool DecideEquality(std::wstring_view text) noexcept;

    // Appends text's key, for byte-wise comparison. A key ends with a zero byte and holds no other: keys can be
    // chained. False, and nothing appended, when the system makes none.
    bool Append(std::string& keys, std::wstring_view text) const;
    // The same, but false also when keys do not decide for text.
    bool AppendDeciding(std::string& keys, std::wstring_view text) const;

private:
    static constexpr wchar_t kFirst = 0x20;
    static constexpr wchar_t kLast = 0x7E;

    bool AppendPlain(std::string& keys, std::wstring_view text) const;
    void ForgetPlainWhenLettersCombine();

    struct Weight {
        char script = 0;
        char character = 0; // never 0 in a known weight
    };
    std::array<Weight, kLast - kFirst + 1> plain_{};
};

} // namespace qx
