#include "text/help.h"

#include "base/abandoned_files.h"
#include "base/file_in_use.h"
#include "base/guarded.h"
#include "base/printer.h"
#include "base/trace.h"
#include "base/unique.h"
#include "text/help_viewer.h"

#include <optional>
#include <setupapi.h>

namespace qx {

namespace {

constexpr ACCESS_MASK kPrintServerAccess = 0xF000C;
constexpr wchar_t kEnglishCode[] = L"EN";

std::wstring LanguageCode(LANGID language)
{
    wchar_t code[4];
    VGetLocaleSubstring(language, code);
    return code;
}

// Nothing when there is no such file. A folder of that name is no file.
std::optional<std::uint64_t> SizeOfFile(const std::wstring& path) noexcept
{
    WIN32_FIND_DATAW found;
    const UniqueFindFile search(FindFirstFileW(path.c_str(), &found));
    if (!search || (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return std::nullopt;
    return Whole(found.nFileSizeHigh, found.nFileSizeLow);
}

bool FileExists(const std::wstring& path) noexcept
{
    return SizeOfFile(path).has_value();
}

// One walk through the cabinet, looking for one file.
struct Extraction {
    const std::wstring& wanted;
    const std::wstring& target;   // shorter than MAX_PATH
    std::optional<DWORD> bytes;   // of the whole file, once it was found
    wchar_t next[MAX_PATH] = L""; // cabinet that was asked for last
};

UINT OnFileInCabinet(Extraction& extraction, FILE_IN_CABINET_INFO_W& file) noexcept
{
    // The target is made from the wanted name, never from the cabinet's: a cabinet cannot lead a file elsewhere.
    const bool wanted = CompareStringOrdinal(file.NameInCabinet, -1, extraction.wanted.c_str(), -1, TRUE) == CSTR_EQUAL;
    if (!wanted)
        return FILEOP_SKIP;
    CopyText(file.FullTargetName, extraction.target.c_str());
    extraction.bytes = file.FileSize;
    return FILEOP_DOIT;
}

// The next cabinet of a set is looked for beside this one. Asked for once more it is not there, and without an error
// the question would never end.
UINT OnNextCabinet(Extraction& extraction, const CABINET_INFO_W& next) noexcept
{
    const wchar_t* const name = OrEmpty(next.CabinetFile);
    if (CompareStringOrdinal(name, -1, extraction.next, -1, TRUE) == CSTR_EQUAL)
        return ERROR_FILE_NOT_FOUND;
    return FAILED(CopyText(extraction.next, name)) ? ERROR_FILE_NOT_FOUND : NO_ERROR;
}

UINT CALLBACK OnCabinet(PVOID context, UINT notification, UINT_PTR first, UINT_PTR) noexcept
{
    auto& extraction = *static_cast<Extraction*>(context);
    if (notification == SPFILENOTIFY_FILEINCABINET)
        return OnFileInCabinet(extraction, *reinterpret_cast<FILE_IN_CABINET_INFO_W*>(first));
    if (notification == SPFILENOTIFY_NEEDNEWCABINET)
        return OnNextCabinet(extraction, *reinterpret_cast<const CABINET_INFO_W*>(first));
    return NO_ERROR;
}

// Another session, or a viewer, must never find half of a file under the target's name: it would be taken for the help
// ever after. So the file takes that name when it is whole, and on the disk.
void ExtractFile(const std::wstring& cabinet, const std::wstring& wanted, const std::wstring& target)
{
    constexpr wchar_t kEnding[] = L".tmp";
    const std::wstring start = target.substr(0, target.rfind(L'\\') + 1) + L"qxh";
    RemoveAbandonedFiles(start, kEnding, Now());
    const std::wstring unpacked = UniqueName(start, kEnding);
    if (unpacked.size() >= MAX_PATH)
        return;
    Extraction extraction{.wanted = wanted, .target = unpacked, .bytes = std::nullopt};
    SetupIterateCabinetW(cabinet.c_str(), 0, OnCabinet, &extraction);
    const bool whole = extraction.bytes && SizeOfFile(unpacked) == *extraction.bytes;
    // What somebody else has put there meanwhile stays: it may be open already.
    const auto takeName = [&] {
        return MoveFileExW(unpacked.c_str(), target.c_str(), MOVEFILE_WRITE_THROUGH) != FALSE;
    };
    if (!whole || !FlushToDisk(unpacked) || !RetryWhileInUse(takeName))
        DeleteFileW(unpacked.c_str());
}

std::wstring ExtractVariant(const PrinterDriver& driver, std::wstring_view cabinetName, std::wstring_view helpName,
                            LANGID language)
{
    const std::wstring name = BuildLocalizedHelpName(helpName, language);
    const std::wstring folder = TemporaryFolder();
    std::wstring target = folder + name;
    if (name.empty() || folder.empty() || target.size() >= MAX_PATH)
        return {};
    if (FileExists(target))
        return target;
    const std::wstring cabinet = driver.FileBeside(cabinetName);
    if (cabinet.empty())
        return {};
    ExtractFile(cabinet, name, target);
    return FileExists(target) ? target : std::wstring();
}

// The last file of the driver's list that names the help counts.
std::wstring HelpBaseName(const PrinterDriver& driver)
{
    std::wstring baseName;
    for (const std::wstring& file : driver.DependentFiles()) {
        std::wstring path(Cut(file, MAX_PATH - 1));
        CharUpperBuffW(path.data(), static_cast<DWORD>(path.size()));
        if (IsHelpFile(path))
            baseName = BaseName(path);
    }
    return baseName;
}

// path itself when Windows has no long form of it, for instance because it does not exist.
std::wstring LongPath(const std::wstring& path)
{
    wchar_t longPath[MAX_PATH];
    const DWORD units = GetLongPathNameW(path.c_str(), longPath, MAX_PATH);
    return units > 0 && units < MAX_PATH ? std::wstring(longPath, units) : path;
}

} // namespace

void VGetLocaleSubstring(LANGID language, wchar_t* out) noexcept
{
    if (out == nullptr)
        return;
    const wchar_t* code = FindHelpLanguageCode(language);
    if (code == nullptr) {
        Trace({L"no help language for the user's language; taking English"});
        code = kEnglishCode;
    }
    lstrcpynW(out, code, 4);
}

std::wstring BuildLocalizedHelpName(std::wstring_view name, LANGID language)
{
    return LocalizedHelpName(name, LanguageCode(language));
}

std::wstring BuildDriverFilePath(HANDLE printer, std::wstring_view name)
{
    UniquePrinter server;
    if (printer == nullptr) {
        PRINTER_DEFAULTSW defaults{.pDatatype = nullptr, .pDevMode = nullptr, .DesiredAccess = kPrintServerAccess};
        if (!OpenPrinterW(nullptr, server.Receive(), &defaults))
            return {};
        printer = server.Get();
    }
    return PrinterDriver(printer).FileBeside(name);
}

std::wstring ExtractHelpFromCabinet(const PrinterDriver& driver, std::wstring_view cabinetName,
                                    std::wstring_view helpName)
{
    std::wstring path = ExtractVariant(driver, cabinetName, helpName, CurrentTextLanguage());
    return !path.empty() ? path : ExtractVariant(driver, cabinetName, helpName, kEnglishUnitedStates);
}

std::wstring BuildHelpFilePath(const PrinterDriver& driver)
{
    const std::wstring folder = TemporaryFolder();
    if (folder.empty())
        return {};
    const std::wstring name = HelpFileInnerPath(HelpBaseName(driver), LanguageCode(GetUserDefaultUILanguage()));
    if (name.empty())
        return {};
    std::wstring path = LongPath(folder + name);
    // A path that has to be cut names no page any more.
    return path.size() < kTextUnits ? path : std::wstring();
}

void ShowHelpTopic(std::wstring_view chmPath, HWND owner, std::wstring_view topicName)
{
    const std::wstring page = HelpPagePath(chmPath, topicName, kTextUnits);
    if (page.empty() || !FileExists(std::wstring(chmPath)))
        return;
    ShowHelpPage(owner, page);
}

void ShowHelp(const TextOwner& owner, HWND window, int topic) noexcept
{
    Guarded([&] { ShowHelpTopic(HelpChmPath(owner.HelpFilePath), window, HelpTopicName(topic)); });
}

} // namespace qx
