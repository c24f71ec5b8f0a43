// What the commands share: how one is chosen on the command line, printers, and texts.
#pragma once

#include "admin/report.h"
#include "base/printer.h"
#include "base/unique.h"
#include "host/options.h"
#include "host/utf8.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qx::admin {

using host::AddText;
using host::AddTexts;
using host::Utf8;
using host::Wide;

// The command that was asked for.
struct Invocation {
    bool json = false;
    bool dryRun = false;
    std::function<void(Report&)> run;
};

// Each adds its commands with their options; the one that is asked for puts itself into the invocation, which lives as
// long as the app.
void AddConfigureCommand(CLI::App& app, Invocation& invocation);
void AddDefaultsCommands(CLI::App& app, Invocation& invocation);
void AddDoctorCommand(CLI::App& app, Invocation& invocation);
void AddPhoneBookCommands(CLI::App& app, Invocation& invocation);
void AddTracesCommands(CLI::App& app, Invocation& invocation);

// In double quotes, as UTF-8.
std::string Quoted(std::wstring_view text);

// ---- printers ------------------------------------------------------------------------------------------------------

// To be read, as every user may. Throws Refusal when there is no such printer.
UniquePrinter OpenPrinterToRead(const std::wstring& name);
// To be set up. Throws Refusal, also when the user may not.
UniquePrinter OpenPrinterToConfigure(const std::wstring& name);

// Values of the printer's data. None when there is no such value, or one of another
// type.
std::optional<std::wstring> PrinterText(HANDLE printer, const wchar_t* key, const wchar_t* name);
std::optional<DWORD> PrinterNumber(HANDLE printer, const wchar_t* key, const wchar_t* name);

// ---- files ---------------------------------------------------------------------------------------------------------

// A path as the module's functions want it: absolute, with backslashes.
std::wstring FullPath(const std::wstring& path);
// Throws Refusal when it cannot be read.
std::string ReadFileOrRefuse(const std::wstring& path);
// Writes a new file, or over an old one when overwrite. Throws Refusal.
void WriteFileOrRefuse(const std::wstring& path, std::string_view bytes, bool overwrite);
void RefuseExistingFile(const std::wstring& path, bool overwrite);

// "what: " and the system's text for an error.
using host::SystemError;

} // namespace qx::admin
