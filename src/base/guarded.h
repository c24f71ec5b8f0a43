// The exception barrier around everything that Windows or the driver calls.
#pragma once

namespace qx {

// Writes the current exception's text to the debugger; for use inside a catch block.
void TraceException() noexcept;

// Runs body and answers onFailure when an exception escapes it: none may cross an export or a callback.
template <class Result, class Body> Result Guarded(Result onFailure, Body&& body) noexcept
{
    try {
        return body();
    } catch (...) {
        TraceException();
        return onFailure;
    }
}

template <class Body> void Guarded(Body&& body) noexcept
{
    try {
        body();
    } catch (...) {
        TraceException();
    }
}

} // namespace qx
