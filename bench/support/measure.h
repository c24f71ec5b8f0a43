// Measuring one piece of work against the part of it that nobody can avoid, in one run. Ratios are what counts: the
// times themselves belong to the machine.
#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace qx::bench {

struct Work {
    std::string name;
    std::function<void()> run = {};
    std::function<void()> prepare = [] {}; // before each run, outside the time
    std::function<double()> time = {};     // instead of run: does the work and answers its milliseconds
    // What the work holds at its end, in bytes per entry of the phone book.
    std::function<double()> bytesPerEntry = {};
};

// The bytes of all blocks in all heaps of this process, with what the heaps need to tell them apart.
std::size_t HeapBytes();

// No limit: there is nothing to be fast enough for, the comparison only tells.
inline constexpr double kAnything = std::numeric_limits<double>::infinity();

class Benchmark {
public:
    // Each comparison runs both works in turn, rounds times, and takes the fastest run of each: whatever else the
    // machine does can only add to it.
    explicit Benchmark(int rounds) : rounds_(rounds) {}

    // allowed: the largest ratio that is good enough.
    void Compare(const Work& work, const Work& unavoidable, double allowed);

    // Bytes in the heap after something was done again and again, beside those before.
    void CompareBytes(const std::string& after, double bytesAfter, const std::string& before, double bytesBefore,
                      double allowed);

    // A table on the standard output, and the same as JSON when the command line names a file after --json. Answers
    // the exit code: 1 when a ratio is larger than allowed.
    int Report(int count, char** arguments) const;

private:
    struct Comparison {
        std::string work;
        std::string unavoidable;
        double measured = 0;
        double unavoidableMeasured = 0;
        double allowed = 0;
        std::string unit = "ms";
        std::optional<double> bytesPerEntry = {};

        double Ratio() const { return measured / unavoidableMeasured; }
    };
    static void WriteJson(const char* file, const std::vector<Comparison>& comparisons);

    int rounds_;
    std::vector<Comparison> comparisons_;
};

} // namespace qx::bench
