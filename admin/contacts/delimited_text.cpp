#include "admin/contacts/delimited_text.h"

#include <algorithm>
#include <iterator>

namespace qx::admin {

namespace {

constexpr wchar_t kQuote = L'"';

constexpr bool IsLineEnd(wchar_t c) noexcept
{
    return c == L'\r' || c == L'\n';
}

class Reader {
public:
    explicit Reader(std::wstring_view text) : text_(text) {}

    DelimitedText Run()
    {
        TakeDeclaredDelimiter();
        if (!declared_)
            table_.delimiter = MostFrequentDelimiter();
        while (at_ < text_.size() && table_.problem.empty())
            TakeRecord();
        return std::move(table_);
    }

private:
    // Spreadsheets write it for each other.
    void TakeDeclaredDelimiter()
    {
        constexpr std::wstring_view kDeclaration = L"sep=";
        if (!text_.starts_with(kDeclaration) || text_.size() <= kDeclaration.size())
            return;
        const std::size_t behind = kDeclaration.size() + 1;
        if (behind < text_.size() && !IsLineEnd(text_[behind]))
            return;
        table_.delimiter = text_[kDeclaration.size()];
        declared_ = true;
        at_ = behind;
        SkipLineEnd();
    }

    wchar_t MostFrequentDelimiter() const
    {
        constexpr wchar_t kDelimiters[] = {L',', L';', L'\t'};
        std::size_t counts[std::size(kDelimiters)] = {};
        bool quoted = false;
        for (const wchar_t c : text_.substr(at_)) {
            if (c == kQuote)
                quoted = !quoted;
            if (!quoted && IsLineEnd(c))
                break;
            const auto* const found = std::ranges::find(kDelimiters, c);
            if (!quoted && found != std::end(kDelimiters))
                ++counts[found - kDelimiters];
        }
        return kDelimiters[std::ranges::max_element(counts) - counts];
    }

    void TakeRecord()
    {
        Record record{.line = line_, .fields = {}};
        for (bool more = true; more && table_.problem.empty();) {
            record.fields.push_back(TakeField());
            more = at_ < text_.size() && text_[at_] == table_.delimiter;
            if (more)
                ++at_;
        }
        SkipLineEnd();
        if (record.fields.size() > 1 || !record.fields.front().empty())
            table_.records.push_back(std::move(record));
    }

    std::wstring TakeField()
    {
        std::wstring field;
        if (at_ < text_.size() && text_[at_] == kQuote)
            TakeQuoted(field);
        while (at_ < text_.size() && text_[at_] != table_.delimiter && !IsLineEnd(text_[at_]))
            field += text_[at_++];
        return field;
    }

    void TakeQuoted(std::wstring& field)
    {
        const std::size_t opened = line_;
        for (++at_; at_ < text_.size(); ++at_) {
            if (text_[at_] == kQuote) {
                if (at_ + 1 >= text_.size() || text_[at_ + 1] != kQuote) {
                    ++at_;
                    return;
                }
                ++at_;
            } else if (IsLineEnd(text_[at_]) && !IsAtCrLf()) {
                ++line_;
            }
            field += text_[at_];
        }
        table_.problem = "has a quote that is not closed";
        table_.line = opened;
    }

    bool IsAtCrLf() const noexcept { return text_[at_] == L'\r' && at_ + 1 < text_.size() && text_[at_ + 1] == L'\n'; }

    void SkipLineEnd()
    {
        if (at_ >= text_.size())
            return;
        if (IsAtCrLf())
            ++at_;
        ++at_;
        ++line_;
    }

    std::wstring_view text_;
    std::size_t at_ = 0;
    std::size_t line_ = 1;
    bool declared_ = false;
    DelimitedText table_;
};

} // namespace

DelimitedText ReadDelimited(std::wstring_view text)
{
    return Reader(text).Run();
}

} // namespace qx::admin
