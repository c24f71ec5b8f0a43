// Calls of a loaded module that fail, as the system documents it, while everything around them works.
//
//     FailingCalls<decltype(HeapAlloc), struct HeapAllocCalls> calls(module, "HeapAlloc", nullptr);
//     calls.FailFrom(3);                          // the third and every later one
//     ...
//     calls.Count();                              // how many there were
//
//     WhileEachFails<decltype(ReadFile)>("ReadFile", FALSE, [&](const std::string& what) { ... });
//
// A function returns failure instead, with the last error set. What a call must look like to be counted at all can be
// narrowed down by a condition on its arguments. Tag tells apart functions of one type; one object per function, type
// and tag at a time.
#pragma once

#include "support/redirected_import.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace qx::test {

template <class Function, class Tag> class FailingCalls;

template <class Result, class... Arguments, class Tag> class FailingCalls<Result(Arguments...), Tag> {
public:
    using Condition = std::function<bool(Arguments...)>;

    FailingCalls(HMODULE module, const char* function, Result failure, DWORD lastError = ERROR_NOT_ENOUGH_MEMORY,
                 Condition condition = {})
        : import_(function, Stub, module), failure_(failure), lastError_(lastError), condition_(std::move(condition))
    {
        current_ = this;
    }
    ~FailingCalls() { current_ = nullptr; }

    // Calls are counted from 1 on. Nothing fails before one of these is called; each starts the count again.
    void FailOnly(long call) { Fail(call, call); }
    void FailFrom(long call) { Fail(call, std::numeric_limits<long>::max()); }
    void FailNone() { Fail(1, 0); }
    long Count() const { return count_; }
    bool HasFailed() const { return hasFailed_; }

private:
    static Result Stub(Arguments... arguments)
    {
        FailingCalls* const calls = current_;
        if ((!calls->condition_ || calls->condition_(arguments...)) && calls->NextFails()) {
            SetLastError(calls->lastError_);
            return calls->failure_;
        }
        return calls->import_.Original()(arguments...);
    }

    void Fail(long first, long last)
    {
        count_ = 0;
        hasFailed_ = false;
        first_ = first;
        last_ = last;
    }

    bool NextFails()
    {
        const long call = ++count_;
        const bool fails = first_ <= call && call <= last_;
        if (fails)
            hasFailed_ = true;
        return fails;
    }

    static inline std::atomic<FailingCalls*> current_ = nullptr;

    RedirectedImport<Result(Arguments...)> import_;
    Result failure_;
    DWORD lastError_;
    Condition condition_;
    std::atomic<long> count_ = 0;
    std::atomic<long> first_ = 1;
    std::atomic<long> last_ = 0;
    std::atomic<bool> hasFailed_ = false;
};

// Runs body(what) with the first, the second, ... of this program's calls of the function failing alone, as long as it
// makes another.
template <class Function, class Failure, class Body>
void WhileEachFails(const char* function, Failure failure, Body body, DWORD lastError = ERROR_GEN_FAILURE)
{
    FailingCalls<Function, struct EachCallTag> calls(nullptr, function, failure, lastError);
    bool failed = true;
    for (long call = 1; failed && !testing::Test::HasFailure(); ++call) {
        calls.FailOnly(call);
        body(std::string(function) + ' ' + std::to_string(call));
        failed = calls.HasFailed();
        calls.FailNone();
        EXPECT_TRUE(failed || call > 1) << function << " is not called";
    }
}

} // namespace qx::test
