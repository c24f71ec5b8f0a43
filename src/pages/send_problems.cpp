#include "pages/send_problems.h"

#include "phonebook/ui/phone_book_dialog.h"
#include "res/fax_job_page_ids.h"
#include "res/send_settings_ids.h"

#include <algorithm>

namespace qx {

namespace {

struct Complaint {
    SendProblem problem;
    int field;
    Text text;
    Text missing{}; // on a line of its own: what is missing
    UINT style = MB_OK | MB_ICONSTOP;
    MessageTitle title = MessageTitle::Error;
};

constexpr Text kRequired{5256};
constexpr Text kBillingCode{5317};
constexpr Text kEmailAddress{5318};

constexpr Complaint kComplaints[] = {
    {SendProblem::NoRecipient, IDC_FAX_NUMBER, {5255, L"At least one fax number is required."}},
    {SendProblem::TooManyRecipients, IDC_FAX_NUMBER, kTooManyRecipients.text},
    {SendProblem::BillingCodeMissing, IDC_BILLING_CODE, kRequired, kBillingCode},
    {SendProblem::BillingCodeTooShort, IDC_BILLING_CODE, {5324, L"The billing code must be at least %d digits"}},
    {SendProblem::ImageNotFound, IDC_IMAGE, {5262, L"The file cannot be found."}},
    {SendProblem::ImageNotABitmap,
     IDC_IMAGE,
     {5263, L"The file format is not supported. Please specify a bitmap (.bmp) file."}},
    {SendProblem::EmailMissing, IDC_EMAIL, kRequired, kEmailAddress},
    {.problem = SendProblem::EmailUnrecognized,
     .field = IDC_EMAIL,
     .text = {5264, L"The e-mail address is not in a recognized e-mail format.  Do you still want to use it?"},
     .style = MB_YESNO | MB_ICONEXCLAMATION,
     .title = MessageTitle::Warning},
};

std::wstring TextOf(const TextOwner& texts, const Complaint& complaint, DWORD leastDigits)
{
    std::wstring text = LocalizedText(texts, complaint.text);
    if (complaint.missing.id != 0)
        return text + L"\n" + LocalizedText(texts, complaint.missing);
    if (complaint.problem == SendProblem::BillingCodeTooShort)
        return FillTemplate(text, complaint.text.fallback, {static_cast<int>(leastDigits)});
    return text;
}

} // namespace

int ReportProblem(const TextOwner& texts, HWND dialog, std::optional<SendProblem> problem, DWORD leastDigits)
{
    if (!problem)
        return 0;
    const Complaint& complaint = *std::ranges::find(kComplaints, *problem, &Complaint::problem);
    const std::wstring text = TextOf(texts, complaint, leastDigits);
    const Message message{{kPreparedText, text.c_str()}, complaint.style, complaint.title};
    const int answer = ShowFaxMessage(texts, message, dialog);
    return answer == IDYES ? 0 : complaint.field;
}

} // namespace qx
