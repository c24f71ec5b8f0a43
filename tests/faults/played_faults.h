// Faults of a scenario, chosen among all that there are, and what came of them when fault_runner played them.
//
// Usually a fixed sample is played. QX_FAULTS=places plays one call of each place in the module's code, QX_FAULTS=calls
// each call; QX_FAULTS_REPORT names a folder to keep the plans and reports in. tools/faults.sh sets both.
#pragma once

#include "scenarios.h"
#include "support/every_call.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace qx::test {

// A call, and the second way in which something may befall it: failing with all later ones of its function, not alone;
// or being the last thing that a process has done, not what it is about to do.
struct Fault {
    std::string function;
    long number = 0;
    bool second = false;
};

struct Result {
    char mark = '!';
    std::string what;
};

enum class Extent { Sample, Places, Calls };
Extent ExtentAsked();

class PlayedFaults {
public:
    // Command: what fault_runner is to do with a plan.
    PlayedFaults(std::string scenario, std::string command);

    // Counts the calls of a session in which nothing fails. Both ways of each that is wanted, or of the first one of
    // its place.
    std::vector<Fault> FaultsOf(bool everyCall, const std::function<bool(const SeenCall&)>& wanted) const;
    // In as many processes as it takes. Goes on behind what the kept report of the same plan says has ended.
    std::vector<Result> Play(const std::vector<Fault>& faults) const;
    // A command that takes no plan; its lines.
    std::vector<Result> Play() const;

    // Fails the test for each wrong one, naming the ways; prints how many there were of each outcome.
    void Report(const std::vector<Fault>& faults, const std::vector<Result>& results, const char* first,
                const char* second) const;
    void Tabulate(const std::vector<Result>& results) const;

private:
    std::filesystem::path File(const char* ending) const;
    unsigned long Run(const std::string& command, const std::vector<std::wstring>& arguments) const;
    // False when the last one was another.
    bool WritePlan(const std::vector<Fault>& faults) const;
    // Of what has ended. Playing: whether something has begun and not ended.
    std::vector<Result> ResultsIn(bool& playing) const;

    const TemporaryFolder temporary_;
    const std::string scenario_;
    const std::string command_;
};

// A sample of the size that stays the same, fault for fault, when calls of other functions come and go.
std::vector<Fault> SampleOf(std::vector<Fault> faults, std::size_t size);

std::vector<const NamedScenario*> Scenarios();

} // namespace qx::test
