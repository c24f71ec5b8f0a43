#include "support/measure.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string_view>

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

} // namespace

void Benchmark::Compare(const Work& work, const Work& unavoidable, double allowed)
{
    double fastest = Time(work);
    double fastestUnavoidable = Time(unavoidable);
    for (int round = 1; round < rounds_; ++round) {
        fastest = std::min(fastest, Time(work));
        fastestUnavoidable = std::min(fastestUnavoidable, Time(unavoidable));
    }
    comparisons_.push_back({work.name, unavoidable.name, fastest, fastestUnavoidable, allowed});
}

int Benchmark::Report(int count, char** arguments) const
{
    std::printf("%-46s %10s  %-46s %10s %7s %8s\n", "work", "ms", "compared with", "ms", "ratio", "allowed");
    bool good = true;
    for (const Comparison& row : comparisons_) {
        const bool withinLimit = row.Ratio() <= row.allowed;
        good = good && withinLimit;
        std::printf("%-46s %10.3f  %-46s %10.3f %7.2f %8.2f%s\n", row.work.c_str(), row.milliseconds,
                    row.unavoidable.c_str(), row.unavoidableMilliseconds, row.Ratio(), row.allowed,
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
    std::ofstream out(file);
    out << "[\n";
    for (const Comparison& row : comparisons) {
        out << "  {\"work\": \"" << row.work << "\", \"milliseconds\": " << row.milliseconds << ", \"unavoidable\": \""
            << row.unavoidable << "\", \"unavoidableMilliseconds\": " << row.unavoidableMilliseconds
            << ", \"ratio\": " << row.Ratio() << ", \"allowed\": " << row.allowed << "}"
            << (&row == &comparisons.back() ? "\n" : ",\n");
    }
    out << "]\n";
}

} // namespace qx::bench
