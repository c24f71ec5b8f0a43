// Other programs' contacts beside what nobody can avoid: taking their fields apart and decoding them.
#include "admin/contacts/csv_contacts.h"
#include "admin/contacts/vcard.h"
#include "support/measure.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace qx::admin;
using namespace qx::bench;

constexpr std::size_t kPeople = 10000;
constexpr std::size_t kMany = 10 * kPeople;

std::string Cards(std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        text += "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Weiß;Jürgen " + number + ";;;\r\nFN:Jürgen Weiß " + number +
                "\r\nORG:Büro " + number + ";Einkauf\r\nTEL;TYPE=WORK,VOICE:+49 30 555 " + number +
                "\r\nTEL;TYPE=WORK,FAX:+49 (30) 556 " + number + "\r\nEMAIL:j" + number +
                "@example.org\r\nNOTE:A note that goes on\r\n  in a second line\r\nEND:VCARD\r\n";
    }
    return text;
}

std::string Table(std::size_t count)
{
    std::string text = "First Name,Last Name,Company,Business Fax,E-mail Address\r\n";
    for (std::size_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        text += "Jürgen " + number + ",\"Weiß, jr.\",Büro " + number + ",+49 (30) 556 " + number + ",j" + number +
                "@example.org\r\n";
    }
    return text;
}

std::optional<std::wstring> NoCodePage(std::string_view, unsigned)
{
    return std::nullopt;
}

void Need(std::size_t found, std::size_t expected)
{
    if (found != expected)
        throw std::runtime_error("the benchmark does not do what it measures");
}

void ReadCards(const std::string& bytes, std::size_t count)
{
    Need(ReadVCards(bytes, 0, NoCodePage).contacts.size(), count);
}

void ReadTable(const std::string& bytes, std::size_t count)
{
    Need(ReadCsvContacts(DecodeFile(bytes, 0, NoCodePage).text, {}).contacts.size(), count);
}

void DecodeFields(const std::string& bytes)
{
    std::vector<std::wstring> fields;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t end = bytes.find_first_of("\n:;,", at);
        fields.push_back(*DecodeUtf8(std::string_view(bytes).substr(at, end - at)));
        at = end + 1;
    }
    Need(fields.empty(), false);
}

void Measure(Benchmark& benchmark, const std::string& what, std::string (*make)(std::size_t),
             void (*read)(const std::string&, std::size_t), double allowed)
{
    const auto bytes = std::make_shared<std::string>(make(kPeople));
    const auto more = std::make_shared<std::string>(make(kMany));
    const Work work{"read " + std::to_string(kPeople) + ' ' + what, [=] { read(*bytes, kPeople); }};
    benchmark.Compare(work, {"their fields, decoded", [=] { DecodeFields(*bytes); }}, allowed);
    benchmark.Compare({"read " + std::to_string(kMany) + ' ' + what, [=] { read(*more, kMany); }},
                      {work.name + ": growth", work.run}, 15);
}

} // namespace

int main(int count, char** arguments)
{
    Benchmark benchmark(9);
    Measure(benchmark, "cards", Cards, ReadCards, 2);
    Measure(benchmark, "rows of a table", Table, ReadTable, 4);
    return benchmark.Report(count, arguments);
}
