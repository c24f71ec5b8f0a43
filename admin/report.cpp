#include "admin/report.h"

#include <algorithm>
#include <cstdio>

namespace qx::admin {

namespace {

void WriteLine(std::FILE* to, std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), to);
    std::fputc('\n', to);
}

// With a capital at its beginning, unless it begins with something else than a word, such as a file's name.
std::string Sentence(std::string text)
{
    const auto isSmall = [](char c) { return c >= 'a' && c <= 'z'; };
    const std::size_t word = text.find(' ');
    if (word != std::string::npos &&
        std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(word), isSmall))
        text.front() = static_cast<char>(text.front() - 'a' + 'A');
    return text + '.';
}

} // namespace

void Report::Say(std::string_view sentence) const
{
    if (!json_)
        WriteLine(stdout, sentence);
}

void Report::Change(const std::string& what)
{
    changes_.push_back(what);
    if (!json_)
        WriteLine(stdout, dryRun_ ? "Would " + what + '.' : "Done: " + what + '.');
}

void Report::Problem(const std::string& sentence)
{
    problems_.push_back(sentence);
    if (!json_)
        WriteLine(stderr, Sentence(sentence));
}

int Report::Finish()
{
    const int code = problems_.empty() ? kDone : kRefused;
    if (json_) {
        Json whole = Json::object();
        whole["done"] = problems_.empty();
        whole["dryRun"] = dryRun_;
        whole["changes"] = changes_;
        whole["problems"] = problems_;
        whole.update(data_);
        WriteLine(stdout, whole.dump(2, ' ', false, Json::error_handler_t::replace));
    }
    std::fflush(stdout);
    return code;
}

std::string Counted(std::size_t count, std::string_view one, std::string_view many)
{
    return std::to_string(count) + ' ' + std::string(count == 1 ? one : many);
}

} // namespace qx::admin
