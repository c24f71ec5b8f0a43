#include "host/job.h"

#include "host/utf8.h"

#include <nlohmann/json.hpp>

namespace qx::host {

namespace {

using Json = nlohmann::ordered_json;

Json TextJson(const wchar_t* text)
{
    return text != nullptr ? Json(Utf8(text)) : Json(nullptr);
}

Json RecipientsJson(const FaxJobData& record)
{
    Json recipients = Json::array();
    for (INT32 i = 0; i < record.RecipientCount; ++i) {
        const FaxRecipient& recipient = *record.Recipients.Items[i];
        recipients.push_back({{"Name", TextJson(recipient.Name)},
                              {"FaxNumber", TextJson(recipient.FaxNumber)},
                              {"Company", TextJson(recipient.Company)},
                              {"Id", recipient.Id}});
    }
    return recipients;
}

Json StringsJson(const FaxJobData& record)
{
    Json strings = Json::array();
    for (INT32 i = 0; i < record.Strings.Count; ++i) {
        const FaxString& string = record.Strings.Items[i];
        strings.push_back({{"Id", string.Id}, {"Text", TextJson(string.Text)}});
    }
    return strings;
}

} // namespace

std::string FaxJob::Json() const
{
    const FaxJobData& record = record_;
    const host::Json json = {
        {"outcome", Sent() ? "sent" : "cancelled"},
        {"Cancelled", record.Cancelled},
        {"Recipients", RecipientsJson(record)},
        {"AddCoverPage", record.AddCoverPage},
        {"CoverPageNotes", TextJson(record.CoverPageNotes)},
        {"CoverPageSubject", TextJson(record.CoverPageSubject)},
        {"OverlayPath", TextJson(record.OverlayPath)},
        {"CoverPageLock", record.CoverPageLock},
        {"DefaultOverlayPath", TextJson(record.DefaultOverlayPath)},
        {"CoverPageFromDefaults", record.CoverPageFromDefaults},
        {"BillingCode", TextJson(record.BillingCode)},
        {"BillingCodeEnabled", record.BillingCodeEnabled},
        {"BillingCodeMinLength", record.BillingCodeMinLength},
        {"SenderName", TextJson(record.SenderName)},
        {"SenderCompany", TextJson(record.SenderCompany)},
        {"SenderFaxNo", TextJson(record.SenderFaxNo)},
        {"SenderVoiceNo", TextJson(record.SenderVoiceNo)},
        {"Resolution", record.Resolution},
        {"NotifyOn", record.NotifyOn},
        {"NotifyMethod", record.NotifyMethod},
        {"NotifyEmail", TextJson(record.NotifyEmail)},
        {"NotificationAvailable", record.NotificationAvailable},
        {"EmailServiceOperational", record.EmailServiceOperational},
        {"ShowPreview", record.ShowPreview},
        {"PcFaxSendOperational", record.PcFaxSendOperational},
        {"DefaultsSaved", record.DefaultsSaved},
        {"ApplyDefaults", record.ApplyDefaults},
        {"Title", TextJson(record.Title)},
        {"Strings", StringsJson(record)},
    };
    // A text cut in the middle of a character must not keep the rest from being printed.
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

} // namespace qx::host
