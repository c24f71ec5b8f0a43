#include "base/guarded.h"
#include "base/trace.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>
#include <windows.h>

namespace {

std::vector<std::wstring>* g_told;

// A debugger learns of a line by an exception; so does this, before it goes on.
LONG CALLBACK Listen(EXCEPTION_POINTERS* exception)
{
    constexpr DWORD kText = 0x40010006;     // DBG_PRINTEXCEPTION_C, of older systems
    constexpr DWORD kWideText = 0x4001000A; // DBG_PRINTEXCEPTION_WIDE_C
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    const ULONG_PTR text = record.ExceptionInformation[1];
    if (record.ExceptionCode == kWideText) {
        g_told->emplace_back(reinterpret_cast<const wchar_t*>(text));
    } else if (record.ExceptionCode == kText) {
        const std::string_view ascii = reinterpret_cast<const char*>(text);
        g_told->emplace_back(ascii.begin(), ascii.end());
    } else {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    return EXCEPTION_CONTINUE_EXECUTION;
}

class Trace : public testing::Test {
protected:
    Trace()
    {
        g_told = &told_;
        handler_ = AddVectoredExceptionHandler(1, Listen);
    }
    ~Trace() override { RemoveVectoredExceptionHandler(handler_); }

    std::vector<std::wstring> told_;

private:
    void* handler_;
};

using Lines = std::vector<std::wstring>;

TEST_F(Trace, IsOneLineThatBeginsWithTheModule)
{
    qx::Trace({L"no ", L"window", L""});
    EXPECT_EQ(told_, Lines{L"qxfaxui: no window\n"});
}

TEST_F(Trace, IsCutButStaysALine)
{
    const std::wstring text(300, L'x');
    qx::Trace({text.c_str(), text.c_str()});
    ASSERT_EQ(told_.size(), 1u);
    EXPECT_EQ(told_[0], L"qxfaxui: " + std::wstring(255 - 10, L'x') + L"\n");
}

TEST_F(Trace, KeepsTheLastError)
{
    SetLastError(1234);
    qx::Trace({L"text"});
    EXPECT_EQ(GetLastError(), 1234u);
}

TEST_F(Trace, TellsOfAnExceptionThatWasStopped)
{
    qx::Guarded([] { throw std::runtime_error("the reason"); });
    qx::Guarded([] { throw std::runtime_error(std::string(1000, 'y')); });
    qx::Guarded([] { throw 7; });
    ASSERT_EQ(told_.size(), 3u);
    EXPECT_EQ(told_[0], L"qxfaxui: an exception was stopped: the reason\n");
    EXPECT_EQ(told_[1], L"qxfaxui: an exception was stopped: " + std::wstring(199, L'y') + L"\n");
    EXPECT_EQ(told_[2], L"qxfaxui: an unknown exception was stopped\n");
}

} // namespace
