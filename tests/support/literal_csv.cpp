#include "support/literal_csv.h"

namespace qx::test {

namespace {

// The text has a zero at its end; a quote without a partner skips to it.
std::size_t SkipQuoted(const std::wstring& text, std::size_t at)
{
    do
        ++at;
    while (text[at] != L'\0' && text[at] != L'"');
    return at;
}

std::size_t FindLineEnd(const std::wstring& text, std::size_t at)
{
    while (text[at] != L'\0') {
        if (text[at] == L'\r' && text[at + 1] == L'\n')
            return at;
        if (text[at] == L'"')
            at = SkipQuoted(text, at);
        if (text[at] != L'\0')
            ++at;
    }
    return at;
}

std::vector<std::wstring> SplitLine(const std::wstring& line)
{
    std::vector<std::wstring> fields;
    std::size_t start = 0;
    while (line[start] != L'\0') {
        std::size_t at = start;
        while (line[at] != L'\0' && line[at] != L',') {
            if (line[at] == L'"')
                at = SkipQuoted(line, at);
            if (line[at] != L'\0')
                ++at;
        }
        fields.push_back(line.substr(start, at - start));
        start = line[at] == L',' ? at + 1 : at;
    }
    return fields;
}

} // namespace

LiteralTable ParseLiterally(std::wstring text)
{
    LiteralTable table;
    text = text.c_str();
    std::size_t position = 0;
    while (position < text.size()) {
        const std::size_t end = FindLineEnd(text, position);
        std::vector<std::wstring> fields = SplitLine(text.substr(position, end - position));
        if (table.rows.empty())
            table.columns = fields.size();
        if (fields.empty())
            return {CsvStatus::EmptyLine, 0, {}};
        if (fields.size() > table.columns)
            return {CsvStatus::TooManyFields, 0, {}};
        fields.resize(table.columns);
        table.rows.push_back(std::move(fields));
        position = end + 2;
    }
    return table;
}

std::wstring ReadLiterally(std::wstring field)
{
    if (field.empty() || field.front() != L'"')
        return field;
    field.erase(0, 1);
    if (!field.empty() && field.back() == L'"')
        field.pop_back();
    std::wstring text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        text += field[i];
        if (field[i] == L'"' && i + 1 < field.size() && field[i + 1] == L'"')
            ++i;
    }
    return text;
}

} // namespace qx::test
