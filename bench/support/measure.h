// Measuring one piece of work against the part of it that nobody can avoid, in one run. Ratios are what counts: the
// times themselves belong to the machine.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace qx::bench {

struct Work {
    std::string name;
    std::function<void()> run = {};
    std::function<void()> prepare = [] {}; // before each run, outside the time
    std::function<double()> time = {};     // instead of run: does the work and answers its milliseconds
};

class Benchmark {
public:
    // Each comparison runs both works in turn, rounds times, and takes the fastest run of each: whatever else the
    // machine does can only add to it.
    explicit Benchmark(int rounds) : rounds_(rounds) {}

    // allowed: the largest ratio that is good enough.
    void Compare(const Work& work, const Work& unavoidable, double allowed);

    // A table on the standard output, and the same as JSON when the command line names a file after --json. Answers
    // the exit code: 1 when a ratio is larger than allowed.
    int Report(int count, char** arguments) const;

private:
    struct Comparison {
        std::string work;
        std::string unavoidable;
        double milliseconds = 0;
        double unavoidableMilliseconds = 0;
        double allowed = 0;

        double Ratio() const { return milliseconds / unavoidableMilliseconds; }
    };
    static void WriteJson(const char* file, const std::vector<Comparison>& comparisons);

    int rounds_;
    std::vector<Comparison> comparisons_;
};

} // namespace qx::bench
