#include "pages/cover_page.h"

#include "base/unique.h"
#include "dialog/dialog.h"
#include "dialog/file_dialog.h"
#include "record/fax_job_data.h"
#include "res/cover_page_ids.h"

#include <new>
#include <stdexcept>

namespace qx {

namespace {

constexpr std::size_t kSubjectUnits = 256;
constexpr std::size_t kPathUnits = 260;

constexpr Text kFileNotFound{5262, L"The file cannot be found."};
constexpr Text kNotABitmap{5263, L"The file format is not supported. Please specify a bitmap (.bmp) file."};

void EnableTexts(HWND dialog, bool enabled) noexcept
{
    EnableControl(dialog, IDC_NOTES, enabled);
    EnableControl(dialog, IDC_SUBJECT, enabled);
}

void EnableImage(HWND dialog, bool enabled) noexcept
{
    EnableControl(dialog, IDC_IMAGE, enabled);
    EnableControl(dialog, IDC_BROWSE, enabled);
}

void EnableFields(HWND dialog, bool enabled) noexcept
{
    EnableTexts(dialog, enabled);
    EnableImage(dialog, enabled);
}

bool IsOn(HWND dialog) noexcept
{
    return IsDlgButtonChecked(dialog, IDC_COVER_PAGE) == BST_CHECKED;
}

bool CanBeRead(const std::wstring& path) noexcept
{
    const UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    return static_cast<bool>(file);
}

} // namespace

bool LoadCoverPageFields(HWND dialog, const FaxJobData& record)
{
    SetFieldText(GetDlgItem(dialog, IDC_NOTES), record.CoverPageNotes);
    SetFieldText(GetDlgItem(dialog, IDC_SUBJECT), record.CoverPageSubject);
    SetFieldText(GetDlgItem(dialog, IDC_IMAGE), record.OverlayPath);
    CheckDlgButton(dialog, IDC_COVER_PAGE, record.AddCoverPage != 0 ? BST_CHECKED : BST_UNCHECKED);
    return OnCoverPageToggled(dialog);
}

bool OnCoverPageToggled(HWND dialog)
{
    const bool on = IsOn(dialog);
    EnableFields(dialog, on);
    return on;
}

void LockCoverPageToOverlay(HWND dialog)
{
    CheckDlgButton(dialog, IDC_COVER_PAGE, BST_CHECKED);
    EnableControl(dialog, IDC_COVER_PAGE, false);
    EnableTexts(dialog, true);
    EnableImage(dialog, false);
}

void ForbidCoverPage(HWND dialog)
{
    CheckDlgButton(dialog, IDC_COVER_PAGE, BST_UNCHECKED);
    EnableControl(dialog, IDC_COVER_PAGE, false);
    EnableFields(dialog, false);
}

void SaveCoverPageFields(HWND dialog, FaxJobData& record)
{
    const HWND notes = GetDlgItem(dialog, IDC_NOTES);
    const bool on = IsOn(dialog);
    // The fields can be used exactly when the box is checked: another answer is none.
    if (on != (IsWindowEnabled(notes) != FALSE))
        throw std::runtime_error("the cover page cannot be read");
    record.AddCoverPage = on ? 1 : 0;
    SetCoverPageNotes(record, FieldText(notes).c_str());
    SetCoverPageSubject(record, FieldText(GetDlgItem(dialog, IDC_SUBJECT), kSubjectUnits).c_str());
    SetOverlayPath(record, FieldText(GetDlgItem(dialog, IDC_IMAGE), kPathUnits).c_str());
    if (!HasCoverPage(record))
        throw std::bad_alloc();
}

void BrowseForOverlayImage(HWND dialog)
{
    wchar_t path[kPathUnits] = L"";
    OPENFILENAMEW open{};
    open.lStructSize = sizeof open;
    open.hwndOwner = dialog;
    open.lpstrFilter = L"Bitmap Files(*.bmp)\0*.bmp\0";
    open.nFilterIndex = 1;
    open.lpstrFile = path;
    open.nMaxFile = kPathUnits;
    open.Flags = OFN_HIDEREADONLY | OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST;
    if (AskForFileName(GetOpenFileNameW, open))
        SetDlgItemTextW(dialog, IDC_IMAGE, path);
}

ImageProblem CheckImage(const std::wstring& path)
{
    if (!CanBeRead(path))
        return ImageProblem::NotFound;
    return IsNamedAsBitmap(path) ? ImageProblem::None : ImageProblem::NotABitmap;
}

Message ImageMessage(ImageProblem problem) noexcept
{
    return {problem == ImageProblem::NotFound ? kFileNotFound : kNotABitmap, MB_OK | MB_ICONSTOP, MessageTitle::Error};
}

} // namespace qx
