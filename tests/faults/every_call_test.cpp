// Every call that the module makes of the system fails once: alone, and with all later ones of its function.
//
// Usually a fixed sample is played. QX_FAULTS=places plays one call of each place in the module's code, QX_FAULTS=calls
// each call; QX_FAULTS_REPORT names a folder to keep the plans and reports in. tools/faults.sh sets both.
#include "scenarios.h"
#include "support/built.h"
#include "support/every_call.h"
#include "support/temporary_folder.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>

namespace qx::test {
namespace {

constexpr std::size_t kSample = 20; // of a scenario's faults

struct Fault {
    std::string function;
    long number = 0;
    bool onwards = false;
};

struct Result {
    char mark = '!';
    std::string what;
};

std::filesystem::path Runner()
{
    return BuiltFolder() / L"tests" / L"fault_runner.exe";
}

DWORD RunRunner(const std::wstring& arguments)
{
    std::wstring command = L"\"" + Runner().wstring() + L"\" " + arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
        throw std::runtime_error("cannot start fault_runner");
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 1;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code;
}

bool EveryCallIsAsked()
{
    const char* const asked = std::getenv("QX_FAULTS");
    return asked != nullptr && asked == std::string("calls");
}

std::vector<Fault> FaultsOf(const std::filesystem::path& calls, bool every)
{
    std::ifstream stream(calls);
    SeenCall call;
    std::set<std::pair<std::string, unsigned>> places;
    std::vector<Fault> faults;
    while (stream >> call.function >> call.number >> call.place) {
        if (!places.emplace(call.function, call.place).second && !every)
            continue;
        faults.push_back({call.function, call.number, false});
        faults.push_back({call.function, call.number, true});
    }
    return faults;
}

std::vector<Fault> SampleOf(const std::vector<Fault>& all)
{
    if (std::getenv("QX_FAULTS") != nullptr || all.size() <= kSample)
        return all;
    // Evenly spread: whole sessions from the first call to the last.
    std::vector<Fault> sample;
    for (std::size_t i = 0; i < kSample; ++i)
        sample.push_back(all[i * all.size() / kSample]);
    return sample;
}

std::vector<Result> ResultsIn(const std::filesystem::path& report, std::size_t faults, int& begun)
{
    std::vector<Result> results(faults);
    std::ifstream stream(report);
    for (std::string line; std::getline(stream, line);) {
        std::istringstream words(line);
        std::string word;
        int number = 0;
        words >> word >> number;
        begun = number;
        if (word == "begin")
            continue;
        Result& result = results[static_cast<std::size_t>(number)];
        words >> result.mark;
        std::getline(words >> std::ws, result.what);
    }
    return results;
}

// Plays all, in as many processes as it takes.
std::vector<Result> Play(const std::string& scenario, const std::vector<Fault>& faults,
                         const std::filesystem::path& folder)
{
    const std::filesystem::path plan = folder / (scenario + ".plan"), report = folder / (scenario + ".report");
    {
        std::ofstream stream(plan);
        for (const Fault& fault : faults)
            stream << fault.function << ' ' << fault.number << ' ' << fault.onwards << '\n';
    }
    std::map<int, std::string> ended;
    for (int first = 0; first < static_cast<int>(faults.size());) {
        const DWORD code = RunRunner(std::wstring(scenario.begin(), scenario.end()) + L" run \"" + plan.wstring() +
                                     L"\" " + std::to_wstring(first) + L" \"" + report.wstring() + L"\"");
        if (code == 0)
            break;
        int begun = first - 1;
        ResultsIn(report, faults.size(), begun);
        if (begun < first)
            throw std::runtime_error("fault_runner does not begin: " + std::to_string(code));
        char what[40];
        std::snprintf(what, sizeof what, code == 4 ? "hung" : "ended the program (%lx)", code);
        ended[begun] = what;
        first = begun + 1;
    }
    int begun = 0;
    std::vector<Result> results = ResultsIn(report, faults.size(), begun);
    for (const auto& [number, what] : ended)
        results[static_cast<std::size_t>(number)] = {'!', what};
    return results;
}

class EveryCallFails : public testing::TestWithParam<const NamedScenario*> {};

TEST_P(EveryCallFails, AndNothingIsLostAndNobodyCrashes)
{
    const std::string scenario = GetParam()->name;
    const TemporaryFolder temporary;
    const char* const kept = std::getenv("QX_FAULTS_REPORT");
    const std::filesystem::path folder = kept != nullptr ? std::filesystem::path(kept) : temporary.Path();
    const std::filesystem::path calls = folder / (scenario + ".calls");
    ASSERT_EQ(RunRunner(std::wstring(scenario.begin(), scenario.end()) + L" count \"" + calls.wstring() + L"\""), 0u);

    const std::vector<Fault> all = FaultsOf(calls, EveryCallIsAsked());
    const std::vector<Fault> faults = SampleOf(all);
    const std::vector<Result> results = Play(scenario, faults, folder);
    std::map<std::string, int> table;
    for (std::size_t i = 0; i < faults.size(); ++i) {
        const Fault& fault = faults[i];
        const Result& result = results[i];
        ++table[std::string(1, result.mark) + " " + result.what];
        EXPECT_NE(result.mark, '!') << fault.function << (fault.onwards ? " from " : " ") << fault.number << ": "
                                    << result.what;
    }
    std::printf("%s: %zu of %zu faults\n", scenario.c_str(), faults.size(), all.size());
    for (const auto& [what, count] : table)
        std::printf("    %5d %s\n", count, what.c_str());
}

std::vector<const NamedScenario*> Scenarios()
{
    std::vector<const NamedScenario*> scenarios;
    for (const NamedScenario& named : AllScenarios())
        scenarios.push_back(&named);
    return scenarios;
}

INSTANTIATE_TEST_SUITE_P(Sessions, EveryCallFails, testing::ValuesIn(Scenarios()),
                         [](const auto& instance) { return std::string(instance.param->name); });

} // namespace
} // namespace qx::test
