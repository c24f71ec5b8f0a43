#include "pages/cover_page.h"

#include "base/unique.h"
#include "dialog/file_dialog.h"
#include "record/fax_job_data.h"

#include <new>
#include <stdexcept>
#include <string>

namespace qx {

namespace {

void EnableFields(CoverPage& page, bool texts, bool image) noexcept
{
    page.checkImage = image;
    EnableControl(page.dialog, IDC_NOTES, texts);
    EnableControl(page.dialog, IDC_SUBJECT, texts);
    EnableControl(page.dialog, IDC_IMAGE, image);
    EnableControl(page.dialog, IDC_BROWSE, image);
}

// The box is checked or cleared for good, and the image is not the user's.
void FixCoverPage(CoverPage& page, bool on)
{
    SetChecked(page.dialog, IDC_COVER_PAGE, on);
    EnableControl(page.dialog, IDC_COVER_PAGE, false);
    EnableFields(page, on, false);
}

bool CanBeRead(const std::wstring& path) noexcept
{
    const UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    return static_cast<bool>(file);
}

void OnCoverPageToggled(CoverPage& page)
{
    const bool on = IsChecked(page.dialog, IDC_COVER_PAGE);
    EnableFields(page, on, on);
}

void BrowseForOverlayImage(CoverPage& page)
{
    wchar_t path[kImagePathLimit] = L"";
    OPENFILENAMEW open{};
    open.lStructSize = sizeof open;
    open.hwndOwner = page.dialog;
    open.lpstrFilter = L"Bitmap Files(*.bmp)\0*.bmp\0";
    open.nFilterIndex = 1;
    open.lpstrFile = path;
    open.nMaxFile = kImagePathLimit;
    open.Flags = OFN_HIDEREADONLY | OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST;
    if (AskForFileName(GetOpenFileNameW, open))
        SetDlgItemTextW(page.dialog, IDC_IMAGE, path);
}

constexpr Route<CoverPage> kRoutes[] = {
    {IDC_COVER_PAGE, BN_CLICKED, OnCoverPageToggled},
    {IDC_BROWSE, BN_CLICKED, BrowseForOverlayImage},
};

} // namespace

void LoadCoverPageFields(CoverPage& page, const FaxJobData& record)
{
    const HWND dialog = page.dialog;
    SetFieldText(dialog, IDC_NOTES, record.CoverPageNotes);
    SetFieldText(dialog, IDC_SUBJECT, record.CoverPageSubject);
    SetFieldText(dialog, IDC_IMAGE, record.OverlayPath);
    const bool on = record.AddCoverPage != 0;
    SetChecked(dialog, IDC_COVER_PAGE, on);
    EnableFields(page, on, on);
}

void LockCoverPageToOverlay(CoverPage& page)
{
    FixCoverPage(page, true);
}

void ForbidCoverPage(CoverPage& page)
{
    FixCoverPage(page, false);
}

std::optional<SendProblem> CheckImage(const CoverPage& page)
{
    const std::wstring path = FieldText(page.dialog, IDC_IMAGE, kImagePathLimit);
    if (!page.checkImage || path.empty())
        return {};
    if (!CanBeRead(path))
        return SendProblem::ImageNotFound;
    if (!IsNamedAsBitmap(path))
        return SendProblem::ImageNotABitmap;
    return {};
}

void SaveCoverPageFields(const CoverPage& page, FaxJobData& record)
{
    const HWND dialog = page.dialog;
    const bool on = IsChecked(dialog, IDC_COVER_PAGE);
    // The fields can be used exactly when the box is checked: another answer is none.
    if (on != (IsWindowEnabled(GetDlgItem(dialog, IDC_NOTES)) != FALSE))
        throw std::runtime_error("the cover page cannot be read");
    record.AddCoverPage = on ? 1 : 0;
    SetCoverPageNotes(record, FieldText(dialog, IDC_NOTES).c_str());
    SetCoverPageSubject(record, FieldText(dialog, IDC_SUBJECT, kTextUnits).c_str());
    SetOverlayPath(record, FieldText(dialog, IDC_IMAGE, kImagePathLimit).c_str());
    if (!HasCoverPage(record))
        throw std::bad_alloc();
}

INT_PTR AnswerCommand(CoverPage& page, int control, UINT code)
{
    return RunRoute(kRoutes, page, control, code);
}

} // namespace qx
