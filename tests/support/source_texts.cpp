#include "support/source_texts.h"
#include "support/built.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <stdexcept>

namespace qx::test {

namespace {

const std::regex kComment{R"re((^|[^:])//[^\n]*)re"}; // the colon: an address in a text is not a comment
const std::regex kNumber{R"re((?:^|[^\w.])(\d+)\b)re"};
// {5209, L"Fax Number:"} and .text = 5209, .fallback = L"Fax Number:"; long texts are several literals.
const std::regex kTextWithFallback{
    R"re((?:^|[^\w.])(\d{3,4}),\s*(?:\.fallback\s*=\s*)?((?:L"(?:[^"\\]|\\.)*"\s*)+))re"};
// .text = 5213 and Text kName{5256} have none.
const std::regex kTextAlone{R"re((?:\.text\s*=\s*|\bText\s*\w*\{)(\d+)(?=\s*[,}])(?!,\s*(?:\.fallback|L")))re"};
const std::regex kLiteral{R"re(L"((?:[^"\\]|\\.)*)")re"};

using Matches = std::sregex_iterator;

unsigned IdIn(const std::smatch& match)
{
    return static_cast<unsigned>(std::stoul(match[1].str()));
}

// The value of one or more wide literals. The built-in texts are ASCII, with escapes for what C++ demands only.
std::wstring Joined(const std::string& literals)
{
    std::wstring text;
    for (Matches literal{literals.begin(), literals.end(), kLiteral}; literal != Matches{}; ++literal) {
        const std::string body = (*literal)[1].str();
        for (std::size_t i = 0; i < body.size(); ++i) {
            const bool escaped = body[i] == '\\' && i + 1 < body.size();
            const char unit = escaped ? body[++i] : body[i];
            text += static_cast<wchar_t>(escaped && unit == 'n' ? '\n' : unit);
        }
    }
    return text;
}

bool IsSource(const std::filesystem::path& path)
{
    return path.extension() == ".cpp" || path.extension() == ".h";
}

} // namespace

void CollectTexts(std::string source, const std::string& file, SourceTexts& texts)
{
    source = std::regex_replace(source, kComment, "$1");
    for (Matches match{source.begin(), source.end(), kNumber}; match != Matches{}; ++match) {
        if (match->length(1) <= 4)
            texts.numbers.insert(IdIn(*match));
    }
    for (Matches match{source.begin(), source.end(), kTextWithFallback}; match != Matches{}; ++match)
        texts.named.push_back({IdIn(*match), Joined((*match)[2].str()), file});
    for (Matches match{source.begin(), source.end(), kTextAlone}; match != Matches{}; ++match)
        texts.named.push_back({IdIn(*match), L"", file});
}

SourceTexts TextsOfTheModule()
{
    SourceTexts texts;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(SourceFolder() / "src")) {
        if (!IsSource(entry.path()))
            continue;
        std::ifstream in(entry.path(), std::ios::binary);
        std::string source{std::istreambuf_iterator<char>(in), {}};
        CollectTexts(std::move(source), entry.path().filename().string(), texts);
    }
    if (texts.named.empty())
        throw std::runtime_error("no texts found in the sources");
    return texts;
}

} // namespace qx::test
