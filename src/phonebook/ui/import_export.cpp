#include "phonebook/ui/import_export.h"

#include "base/no_copy.h"
#include "base/text_template.h"
#include "dialog/file_dialog.h"
#include "phonebook/csv/csv_table.h"
#include "phonebook/ui/map_custom_fields_dialog.h"

#include <iterator>
#include <new>

namespace qx {

namespace {

// ---- asking for a file -----------------------------------------------------------------------------------------

constexpr wchar_t kFileFilter[] = L"CSV Files(*.csv)\0*.CSV\0";
constexpr DWORD kOpenFlags = OFN_HIDEREADONLY | OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST | OFN_EXTENSIONDIFFERENT;
constexpr DWORD kSaveFlags =
    OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST | OFN_EXTENSIONDIFFERENT | OFN_NOREADONLYRETURN;

// Asks by GetOpenFileNameW or GetSaveFileNameW. False when the user cancels.
bool AskForFile(BOOL(WINAPI* ask)(OPENFILENAMEW*), DWORD flags, HWND owner, ImportExportResult& result)
{
    wchar_t path[kPathLimit] = L"";
    wchar_t title[kPathLimit] = L"";
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = owner;
    dialog.lpstrFilter = kFileFilter;
    dialog.nFilterIndex = 1;
    dialog.lpstrFile = path;
    dialog.nMaxFile = kPathLimit;
    dialog.lpstrFileTitle = title;
    dialog.nMaxFileTitle = kPathLimit;
    dialog.lpstrDefExt = L"csv";
    dialog.Flags = flags;
    if (!AskForFileName(ask, dialog))
        return false;
    result.path = path;
    result.title = title;
    return true;
}

// ---- while working ---------------------------------------------------------------------------------------------

class ShownCursor : NoCopy {
public:
    explicit ShownCursor(HCURSOR cursor) noexcept : previous_(SetCursor(cursor)) {}
    ~ShownCursor() { SetCursor(previous_); }

    HCURSOR Previous() const noexcept { return previous_; }

private:
    HCURSOR previous_;
};

struct WaitCursor : ShownCursor {
    WaitCursor() noexcept : ShownCursor(LoadCursorW(nullptr, IDC_WAIT)) {}
};

// Clears the attributes that would keep a file from being replaced, and puts them back at the end.
class ReplaceableFile : NoCopy {
public:
    explicit ReplaceableFile(const std::wstring& path) noexcept
        : path_(path), attributes_(GetFileAttributesW(path.c_str()))
    {
        if (MustBeCleared())
            SetFileAttributesW(path_.c_str(), 0);
    }
    ~ReplaceableFile()
    {
        if (MustBeCleared())
            SetFileAttributesW(path_.c_str(), attributes_);
    }

private:
    // The attributes of a file that does not exist yet, all bits, have this one as well.
    bool MustBeCleared() const noexcept { return (attributes_ & FILE_ATTRIBUTE_NORMAL) == 0; }

    const std::wstring& path_;
    DWORD attributes_;
};

// ---- import ----------------------------------------------------------------------------------------------------

// False when the user does not want to go on.
bool AskForColumns(const ImportExportBlock& block, HWND owner, const CsvTable& table, const std::wstring& path,
                   ImportColumns& columns)
{
    MapCustomFieldsContext context(block.texts->hStringDll, block.texts->HelpFilePath);
    context.fileName = path;
    context.headers = HeaderTexts(table.Fields());
    if (ShowModal<kMapCustomFieldsDialog>(owner, context, block.rightToLeft) != IDOK)
        return false;
    columns = ColumnsOf(context.mapping);
    return true;
}

ImportOutcome ImportFile(const ImportExportBlock& block, HWND owner, const std::wstring& path)
{
    const WaitCursor wait;
    CsvTable table;
    if (!table.Open(path))
        return {ImportExportStatus::CannotOpen};
    const CsvStatus status = table.Read();
    if (status == CsvStatus::Unreadable)
        return {ImportExportStatus::CannotOpen};
    if (status != CsvStatus::Good || table.Fields().Columns() == 0)
        return {ImportExportStatus::InvalidFormat};
    ImportColumns columns;
    {
        const ShownCursor usual(wait.Previous());
        if (!AskForColumns(block, owner, table, path, columns))
            return {};
    }
    return ImportRows(table.Fields(), columns, *block.book);
}

// ---- export ----------------------------------------------------------------------------------------------------

bool HasCsvExtension(std::wstring_view path) noexcept
{
    const std::size_t dot = path.rfind(L'.');
    return dot != std::wstring_view::npos && path.substr(dot) == L".csv"; // Kept: in lower case only
}

ImportExportStatus ExportFile(const PhoneBook& book, const std::wstring& path)
{
    if (!HasCsvExtension(path))
        return ImportExportStatus::ExportFailed;
    const WaitCursor wait;
    const ReplaceableFile file(path);
    CsvTableWriter writer;
    if (!writer.Open(path))
        return ImportExportStatus::CannotOpen;
    if (!ExportRows(book, writer))
        return ImportExportStatus::ExportFailed;
    // Kept: a failure while writing is not told.
    writer.Write();
    return ImportExportStatus::Exported;
}

// ---- report ----------------------------------------------------------------------------------------------------

constexpr Text kInvalidFormat{6100, L"-Invalid file format. Cannot import data from %s."};
constexpr Text kCannotOpen{6101, L"Unable to open the file %s."};
constexpr Text kExportFailed{6102, L"-Failed to export phone book entries"};

// The line with its number; empty when the string library lacks it. Some languages leave the number out.
std::wstring CountText(const TextOwner& texts, const CountLine& line)
{
    const std::wstring text = LocalizedText(texts, {line.text, L""});
    return FillTemplate(text, {line.number}).value_or(FillTemplate(text, {}).value_or(L""));
}

void ShowCounts(const TextOwner& texts, const CountMessage& message, HWND owner)
{
    std::wstring shown;
    for (const CountLine& line : message.lines) {
        const std::wstring text = CountText(texts, line);
        if (!text.empty())
            shown += (shown.empty() ? L"" : L"\n") + text;
    }
    if (!shown.empty())
        ShowPreparedMessage(texts, shown, MB_ICONWARNING, MessageTitle::Warning, owner);
}

void ShowStatus(const TextOwner& texts, ImportExportStatus status, const std::wstring& path, HWND owner)
{
    const auto show = [&](const std::wstring& text) {
        ShowPreparedMessage(texts, text, MB_ICONERROR, MessageTitle::Error, owner);
    };
    const auto showPath = [&](const Text& text) {
        show(FillTemplate(LocalizedText(texts, text), text.fallback, {path}));
    };
    switch (status) {
    case ImportExportStatus::InvalidFormat:
        return showPath(kInvalidFormat);
    case ImportExportStatus::CannotOpen:
        return showPath(kCannotOpen);
    case ImportExportStatus::ExportFailed:
        return show(LocalizedText(texts, kExportFailed));
    default:
        return; // the caller's to tell, or nothing
    }
}

} // namespace

ImportExportResult ImportCsv(const ImportExportBlock& block, HWND owner)
{
    ImportExportResult result;
    if (!AskForFile(GetOpenFileNameW, kOpenFlags, owner, result))
        return result;
    try {
        static_cast<ImportOutcome&>(result) = ImportFile(block, owner, result.path);
    } catch (const std::bad_alloc&) {
        result.status = ImportExportStatus::InvalidFormat; // what a file too large for the memory is told as
    }
    return result;
}

ImportExportResult ExportCsv(const ImportExportBlock& block, HWND owner)
{
    ImportExportResult result;
    if (AskForFile(GetSaveFileNameW, kSaveFlags, owner, result))
        result.status = ExportFile(*block.book, result.path);
    return result;
}

void ReportImportExportResult(const TextOwner& texts, const ImportExportResult& result, HWND owner)
{
    const CountMessage counts = CountMessageFor(result.duplicates, result.invalidFaxNumbers);
    ShowCounts(texts, counts, owner);
    if (!counts.replacesStatusMessage)
        ShowStatus(texts, result.status, result.path, owner);
}

} // namespace qx
