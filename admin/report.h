// What a command tells: plain sentences for people, or one JSON object for machines.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qx::admin {

using Json = nlohmann::ordered_json;

enum ExitCode { kDone = 0, kRefused = 1, kWrongUsage = 2 };

// Ends a command: nothing (more) is done. The text is a whole sentence, UTF-8.
class Refusal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};
// The same, for what was asked in a wrong way.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// All texts are UTF-8. Sentences for people go out as they come; JSON goes out at the end.
class Report {
public:
    Report(bool json, bool dryRun) : json_(json), dryRun_(dryRun) {}

    bool DryRun() const noexcept { return dryRun_; }

    // Something that is told, of use to people only: machines find it in Data.
    void Say(std::string_view sentence) const;
    // Something that was changed; in a dry run, that would be. As "set the printer data HelpCabName to X".
    void Change(const std::string& what);
    // Something that was not done, and why. The command goes on, and ends as refused.
    void Problem(const std::string& sentence);

    // What else the JSON object holds.
    Json& Data() noexcept { return data_; }

    // Ends the report. The exit code.
    int Finish();

private:
    bool json_;
    bool dryRun_;
    Json data_ = Json::object();
    Json changes_ = Json::array();
    Json problems_ = Json::array();
};

// "1 entry", "2 entries".
std::string Counted(std::size_t count, std::string_view one, std::string_view many);

} // namespace qx::admin
