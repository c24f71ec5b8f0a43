#include "support/measure.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string_view>
#include <windows.h>

namespace qx::bench {

namespace {

double Time(const Work& work)
{
    using Clock = std::chrono::steady_clock;
    work.prepare();
    if (work.time)
        return work.time();
    const Clock::time_point start = Clock::now();
    work.run();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

std::string AsText(double number, const char* format)
{
    char text[64];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

} // namespace

std::size_t HeapBytes()
{
    HANDLE heaps[64];
    const DWORD count = std::min<DWORD>(GetProcessHeaps(static_cast<DWORD>(std::size(heaps)), heaps), 64);
    std::size_t bytes = 0;
    for (DWORD i = 0; i < count; ++i) {
        PROCESS_HEAP_ENTRY entry{};
        HeapLock(heaps[i]);
        while (HeapWalk(heaps[i], &entry)) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0)
                bytes += entry.cbData + entry.cbOverhead;
        }
        HeapUnlock(heaps[i]);
    }
    return bytes;
}

void Benchmark::Compare(const Work& work, const Work& unavoidable, double allowed)
{
    double fastest = Time(work);
    double fastestUnavoidable = Time(unavoidable);
    for (int round = 1; round < rounds_; ++round) {
        fastest = std::min(fastest, Time(work));
        fastestUnavoidable = std::min(fastestUnavoidable, Time(unavoidable));
    }
    Comparison comparison{work.name, unavoidable.name, fastest, fastestUnavoidable, allowed};
    if (work.bytesPerEntry)
        comparison.bytesPerEntry = work.bytesPerEntry();
    comparisons_.push_back(std::move(comparison));
}

void Benchmark::CompareBytes(const std::string& after, double bytesAfter, const std::string& before, double bytesBefore,
                             double allowed)
{
    constexpr double kKilobyte = 1024;
    comparisons_.push_back({after, before, bytesAfter / kKilobyte, bytesBefore / kKilobyte, allowed, "KB"});
}

int Benchmark::Report(int count, char** arguments) const
{
    std::printf("%-46s %13s  %-46s %13s %7s %8s %11s\n", "work", "", "compared with", "", "ratio", "allowed",
                "bytes/entry");
    bool good = true;
    for (const Comparison& row : comparisons_) {
        const bool withinLimit = row.Ratio() <= row.allowed;
        good = good && withinLimit;
        std::printf("%-46s %10.3f %s  %-46s %10.3f %s %7.2f %8.2f %11s%s\n", row.work.c_str(), row.measured,
                    row.unit.c_str(), row.unavoidable.c_str(), row.unavoidableMeasured, row.unit.c_str(), row.Ratio(),
                    row.allowed, row.bytesPerEntry ? AsText(*row.bytesPerEntry, "%.0f").c_str() : "",
                    withinLimit ? "" : "  OVER");
    }
    for (int i = 1; i + 1 < count; ++i) {
        if (std::string_view(arguments[i]) == "--json")
            WriteJson(arguments[i + 1], comparisons_);
    }
    return good ? 0 : 1;
}

void Benchmark::WriteJson(const char* file, const std::vector<Comparison>& comparisons)
{
    auto rows = nlohmann::ordered_json::array();
    for (const Comparison& row : comparisons) {
        rows.push_back({{"work", row.work},
                        {"measured", row.measured},
                        {"unavoidable", row.unavoidable},
                        {"unavoidableMeasured", row.unavoidableMeasured},
                        {"unit", row.unit},
                        {"ratio", row.Ratio()},
                        {"allowed", row.allowed}, // null without a limit: JSON has no infinity
                        {"bytesPerEntry", nullptr}});
        if (row.bytesPerEntry)
            rows.back()["bytesPerEntry"] = *row.bytesPerEntry;
    }
    std::ofstream(file) << rows.dump(1) << '\n';
}

} // namespace qx::bench
