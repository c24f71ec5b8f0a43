// A fax job as a driver keeps it: prepared before the call, read and released after it.
#pragma once

#include "base/no_copy.h"
#include "base/unique.h"

#include <filesystem>
#include <optional>
#include <qxfax/send_fax.h>
#include <string>

namespace qx::host {

// A job record that is ready for the module, and releases what the module stored into it.
class FaxJob : NoCopy {
public:
    FaxJob() { QxFaxInitJob(&record_); }
    ~FaxJob() { QxFaxReleaseJob(&record_); }

    FaxJobData& Record() { return record_; }
    const FaxJobData& Record() const { return record_; }
    bool Sent() const { return record_.Cancelled == 0; }

    // The record as JSON (UTF-8), its fields under their own names, and the outcome in a word.
    std::string Json() const;

private:
    FaxJobData record_{};
};

// The module, loaded from its file. Throws std::runtime_error when there is none, or it is not the module.
class FaxModule {
public:
    explicit FaxModule(const std::filesystem::path& file);

    HMODULE Handle() const { return module_.Get(); }
    void DisplayFaxUi(HANDLE printer, FaxJobData& record) const { displayFaxUi_(printer, &record); }

private:
    UniqueModule module_;
    decltype(&DisplayFaxUI) displayFaxUi_;
};

// A printer, opened as a driver has it. Throws std::runtime_error when there is none of that name.
UniquePrinter OpenFaxPrinter(const std::wstring& name);

// The module beside the printer's driver file.
std::filesystem::path ModuleOf(HANDLE printer);

} // namespace qx::host
