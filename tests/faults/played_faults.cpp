#include "played_faults.h"

#include "host/utf8.h"
#include "support/child_process.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>

namespace qx::test {

namespace {

constexpr unsigned long kHung = 4, kMoreToPlay = 6;

// Spread over all functions and sessions from the first call to the last.
std::uint32_t MixOf(const Fault& fault)
{
    std::uint32_t hash = 2166136261u;
    for (const char unit : fault.function + ' ' + std::to_string(fault.number) + (fault.second ? " 1" : " 0")) {
        hash = (hash ^ static_cast<unsigned char>(unit)) * 16777619u;
    }
    return hash ^ hash >> 15;
}

} // namespace

Extent ExtentAsked()
{
    const char* const asked = std::getenv("QX_FAULTS");
    if (asked == nullptr)
        return Extent::Sample;
    return asked == std::string("calls") ? Extent::Calls : Extent::Places;
}

PlayedFaults::PlayedFaults(std::string scenario, std::string command)
    : scenario_(std::move(scenario)), command_(std::move(command))
{
}

std::filesystem::path PlayedFaults::File(const char* ending) const
{
    const char* const kept = std::getenv("QX_FAULTS_REPORT");
    return (kept != nullptr ? std::filesystem::absolute(kept) : temporary_.Path()) /
           (scenario_ + "." + command_ + "." + ending);
}

unsigned long PlayedFaults::Run(const std::string& command, const std::vector<std::wstring>& arguments) const
{
    std::vector<std::wstring> all{host::Wide(scenario_), host::Wide(command)};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return ChildProcess(ProgramBeside(L"fault_runner.exe"), all).ExitCode();
}

std::vector<Fault> PlayedFaults::FaultsOf(bool everyCall, const std::function<bool(const SeenCall&)>& wanted) const
{
    const std::filesystem::path calls = File("calls");
    if (Run("count", {calls.wstring()}) != 0)
        throw std::runtime_error("the scenario cannot be counted");
    std::ifstream stream(calls);
    SeenCall call;
    std::set<std::pair<std::string, unsigned>> places;
    std::vector<Fault> faults;
    while (stream >> call.function >> call.number >> call.place) {
        if (!wanted(call) || (!places.emplace(call.function, call.place).second && !everyCall))
            continue;
        faults.push_back({call.function, call.number, false});
        faults.push_back({call.function, call.number, true});
    }
    return faults;
}

std::vector<Result> PlayedFaults::ResultsIn(bool& playing) const
{
    std::vector<Result> results;
    std::ifstream stream(File("report"));
    for (std::string line; std::getline(stream, line);) {
        std::istringstream words(line);
        std::string word;
        std::size_t number = 0;
        words >> word >> number;
        playing = word == "begin";
        if (playing)
            continue;
        results.resize(std::max(results.size(), number + 1));
        words >> results[number].mark;
        std::getline(words >> std::ws, results[number].what);
    }
    return results;
}

bool PlayedFaults::WritePlan(const std::vector<Fault>& faults) const
{
    std::ostringstream plan;
    for (const Fault& fault : faults)
        plan << fault.function << ' ' << fault.number << ' ' << fault.second << '\n';
    std::ostringstream before;
    before << std::ifstream(File("plan")).rdbuf();
    std::ofstream(File("plan")) << plan.str();
    return before.str() == plan.str();
}

std::vector<Result> PlayedFaults::Play(const std::vector<Fault>& faults) const
{
    const std::filesystem::path plan = File("plan"), report = File("report");
    if (!WritePlan(faults))
        std::filesystem::remove(report);
    bool playing = false;
    for (std::vector<Result> results = ResultsIn(playing);; results = ResultsIn(playing)) {
        if (results.size() == faults.size())
            return results;
        const std::wstring first = std::to_wstring(results.size());
        const unsigned long code = Run(command_, {plan.wstring(), first, report.wstring()});
        if (const std::size_t before = results.size(); code == 0 || code == kMoreToPlay) {
            if (ResultsIn(playing).size() == before)
                throw std::runtime_error("fault_runner plays nothing");
            continue;
        }
        results = ResultsIn(playing);
        if (!playing)
            throw std::runtime_error("fault_runner does not begin: " + std::to_string(code));
        std::ofstream ended(report, std::ios::app);
        ended << "end " << results.size() << " ! ";
        if (code == kHung)
            ended << "hung\n";
        else
            ended << "ended the program (" << std::hex << code << ")\n";
    }
}

std::vector<Result> PlayedFaults::Play() const
{
    const std::filesystem::path report = File("report");
    std::filesystem::remove(report);
    if (const unsigned long code = Run(command_, {L"-", L"0", report.wstring()}); code != 0)
        throw std::runtime_error("fault_runner ended with " + std::to_string(code));
    bool playing = false;
    return ResultsIn(playing);
}

void PlayedFaults::Report(const std::vector<Fault>& faults, const std::vector<Result>& results, const char* first,
                          const char* second) const
{
    for (std::size_t i = 0; i < faults.size(); ++i) {
        const Fault& fault = faults[i];
        EXPECT_NE(results[i].mark, '!') << fault.function << (fault.second ? second : first) << fault.number << ": "
                                        << results[i].what;
    }
    Tabulate(results);
}

void PlayedFaults::Tabulate(const std::vector<Result>& results) const
{
    std::map<std::string, int> table;
    for (const Result& result : results)
        ++table[std::string(1, result.mark) + " " + result.what];
    std::printf("%s, %s: %zu\n", scenario_.c_str(), command_.c_str(), results.size());
    for (const auto& [what, count] : table)
        std::printf("    %5d %s\n", count, what.c_str());
}

std::vector<Fault> SampleOf(std::vector<Fault> faults, std::size_t size)
{
    std::ranges::sort(faults, {}, MixOf);
    faults.resize(std::min(faults.size(), size));
    return faults;
}

std::vector<const NamedScenario*> Scenarios()
{
    std::vector<const NamedScenario*> scenarios;
    for (const NamedScenario& named : AllScenarios())
        scenarios.push_back(&named);
    return scenarios;
}

} // namespace qx::test
