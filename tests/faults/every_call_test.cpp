// Every call that the module makes of the system fails once: alone, and with all later ones of its function.
#include "played_faults.h"

#include <gtest/gtest.h>

namespace qx::test {
namespace {

constexpr std::size_t kSample = 16; // of a scenario's faults

class EveryCallFails : public testing::TestWithParam<const NamedScenario*> {};

TEST_P(EveryCallFails, AndNothingIsLostAndNobodyCrashes)
{
    const PlayedFaults played(GetParam()->name, "run");
    const Extent extent = ExtentAsked();
    // The sample is one of all calls: which of them share a place changes with the compiler.
    std::vector<Fault> faults = played.FaultsOf(extent != Extent::Places, [](const SeenCall&) { return true; });
    if (extent == Extent::Sample)
        faults = SampleOf(std::move(faults), kSample);
    played.Report(faults, played.Play(faults), " ", " from ");
}

INSTANTIATE_TEST_SUITE_P(Sessions, EveryCallFails, testing::ValuesIn(Scenarios()),
                         [](const auto& instance) { return std::string(instance.param->name); });

} // namespace
} // namespace qx::test
