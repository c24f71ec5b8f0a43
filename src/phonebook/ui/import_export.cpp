#include "phonebook/ui/import_export.h"

#include "base/no_copy.h"
#include "base/text_template.h"
#include "dialog/file_dialog.h"
#include "phonebook/csv/csv_table.h"
#include "phonebook/ui/map_custom_fields_dialog.h"
#include "phonebook/ui/phone_book_dialog.h"

#include <new>
#include <optional>

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

// None when the user does not want to go on.
std::optional<ImportColumns> AskForColumns(const PhoneBookDialog& opener, bool rightToLeft, const CsvFields& fields,
                                           const std::wstring& path)
{
    MapCustomFieldsContext context(opener.hStringDll, opener.HelpFilePath);
    context.fileName = path;
    context.headers = HeaderTexts(fields);
    if (ShowModal<kMapCustomFieldsDialog>(opener.dialog, context, rightToLeft) != IDOK)
        return std::nullopt;
    return ColumnsOf(context.mapping);
}

ImportOutcome ImportFile(const PhoneBookDialog& opener, bool rightToLeft, const std::wstring& path)
{
    const ShownCursor wait(LoadCursorW(nullptr, IDC_WAIT));
    CsvTable table;
    if (!table.Open(path))
        return {ImportExportStatus::CannotOpen};
    const CsvStatus status = table.Read();
    if (status == CsvStatus::Unreadable)
        return {ImportExportStatus::CannotOpen};
    if (status != CsvStatus::Good || table.Fields().Columns() == 0)
        return {ImportExportStatus::InvalidFormat};
    std::optional<ImportColumns> columns;
    {
        const ShownCursor usual(wait.Previous());
        columns = AskForColumns(opener, rightToLeft, table.Fields(), path);
    }
    return columns ? ImportRows(table.Fields(), *columns, opener.book) : ImportOutcome();
}

// ---- export ----------------------------------------------------------------------------------------------------

ImportExportStatus ExportFile(const PhoneBook& book, const std::wstring& path)
{
    if (!path.ends_with(L".csv")) // Kept: in lower case only
        return ImportExportStatus::ExportFailed;
    const ShownCursor wait(LoadCursorW(nullptr, IDC_WAIT));
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

std::wstring CountsText(const TextOwner& texts, const CountMessage& message)
{
    std::wstring shown;
    for (const CountLine& line : message.lines) {
        const std::wstring text = CountText(texts, line.text, line.number);
        if (!text.empty())
            shown += (shown.empty() ? L"" : L"\n") + text;
    }
    return shown;
}

// Empty when it is the caller's to tell, or nothing is told.
std::wstring StatusText(const TextOwner& texts, const ImportExportResult& result)
{
    const auto withPath = [&](const Text& text) {
        return FillTemplate(LocalizedText(texts, text), text.fallback, {result.path});
    };
    switch (result.status) {
    case ImportExportStatus::InvalidFormat:
        return withPath(kInvalidFormat);
    case ImportExportStatus::CannotOpen:
        return withPath(kCannotOpen);
    case ImportExportStatus::ExportFailed:
        return LocalizedText(texts, kExportFailed);
    default:
        return {};
    }
}

} // namespace

ImportExportResult ImportCsv(const PhoneBookDialog& opener, bool rightToLeft)
{
    ImportExportResult result;
    if (!AskForFile(GetOpenFileNameW, kOpenFlags, opener.dialog, result))
        return result;
    try {
        static_cast<ImportOutcome&>(result) = ImportFile(opener, rightToLeft, result.path);
    } catch (const std::bad_alloc&) {
        result.status = ImportExportStatus::InvalidFormat; // what a file too large for the memory is told as
    }
    return result;
}

ImportExportResult ExportCsv(const PhoneBookDialog& opener)
{
    ImportExportResult result;
    if (AskForFile(GetSaveFileNameW, kSaveFlags, opener.dialog, result))
        result.status = ExportFile(opener.book, result.path);
    return result;
}

void ReportImportExportResult(const TextOwner& texts, const ImportExportResult& result, HWND owner)
{
    const CountMessage counts = CountMessageFor(result.duplicates, result.invalidFaxNumbers);
    if (const std::wstring text = CountsText(texts, counts); !text.empty())
        ShowFaxMessage(texts, {{kPreparedText, text.c_str()}, MB_ICONWARNING, MessageTitle::Warning}, owner);
    if (counts.replacesStatusMessage)
        return;
    if (const std::wstring text = StatusText(texts, result); !text.empty())
        ShowFaxMessage(texts, {{kPreparedText, text.c_str()}, MB_ICONERROR}, owner);
}

} // namespace qx
