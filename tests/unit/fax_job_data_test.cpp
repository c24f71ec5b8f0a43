#include "record/fax_job_data.h"

#include "base/process_heap.h"

#include "support/failing_calls.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace qx {
namespace {

FaxRecipient* NewRecipient(const wchar_t* name)
{
    auto* const recipient = static_cast<FaxRecipient*>(HeapAllocate(sizeof(FaxRecipient)));
    recipient->Name = HeapText(name);
    recipient->FaxNumber = HeapText(L"555");
    recipient->Company = HeapText(L"");
    return recipient;
}

TEST(FaxJobData, ASetterStoresACopyAndANullTextAsEmpty)
{
    OwnedFaxJobData owned;
    FaxJobData& record = owned.Get();
    wchar_t name[] = L"Ann";
    SetSenderName(record, name);
    name[0] = L'X';
    EXPECT_STREQ(record.SenderName, L"Ann");
    SetSenderName(record, nullptr);
    ASSERT_NE(record.SenderName, nullptr);
    EXPECT_STREQ(record.SenderName, L"");
}

TEST(FaxJobData, EverySetterWritesItsOwnField)
{
    OwnedFaxJobData owned;
    FaxJobData& record = owned.Get();
    struct Case {
        void (*set)(FaxJobData&, const wchar_t*) noexcept;
        WCHAR* FaxJobData::* field;
    };
    const Case cases[] = {
        {SetSenderName, &FaxJobData::SenderName},
        {SetSenderCompany, &FaxJobData::SenderCompany},
        {SetSenderFaxNo, &FaxJobData::SenderFaxNo},
        {SetSenderVoiceNo, &FaxJobData::SenderVoiceNo},
        {SetNotifyEmail, &FaxJobData::NotifyEmail},
        {SetCoverPageNotes, &FaxJobData::CoverPageNotes},
        {SetCoverPageSubject, &FaxJobData::CoverPageSubject},
        {SetOverlayPath, &FaxJobData::OverlayPath},
        {SetBillingCode, &FaxJobData::BillingCode},
        {SetDefaultOverlayPath, &FaxJobData::DefaultOverlayPath},
        {SetTitle, &FaxJobData::Title},
    };
    int number = 0;
    for (const Case& c : cases)
        c.set(record, std::to_wstring(++number).c_str());
    number = 0;
    for (const Case& c : cases)
        EXPECT_EQ(record.*c.field, std::to_wstring(++number));
}

TEST(FaxJobData, TheOverlayPathKeepsItsFirst258Characters)
{
    OwnedFaxJobData owned;
    SetOverlayPath(owned.Get(), std::wstring(300, L'p').c_str());
    EXPECT_EQ(owned.Get().OverlayPath, std::wstring(258, L'p'));
    const wchar_t* const buffer = owned.Get().OverlayPath;
    SetOverlayPath(owned.Get(), L"short");
    EXPECT_EQ(owned.Get().OverlayPath, buffer); // made once, then reused
    EXPECT_STREQ(buffer, L"short");
    EXPECT_EQ(buffer[257], L'\0');       // the whole buffer is cleared, not only terminated
    SetOverlayPath(owned.Get(), buffer); // itself
    EXPECT_STREQ(buffer, L"short");
    SetOverlayPath(owned.Get(), nullptr);
    EXPECT_STREQ(buffer, L"");
}

// What is published is what the user sees and sends to, whatever the driver had counted.
TEST(FaxJobData, TheRecipientsThatADriverHasFilledInAreAllPublished)
{
    OwnedFaxJobData owned;
    FaxJobData& record = owned.Get();
    MakeRoomForRecipients(record);
    AddRecipient(record, NewRecipient(L"Ann"));
    AddRecipient(record, NewRecipient(L"Bob"));
    for (const INT32 counted : {0, 1, 5, -1}) {
        record.RecipientCount = counted;
        MakeRoomForRecipients(record);
        EXPECT_EQ(record.RecipientCount, 2) << counted;
        EXPECT_EQ(RecipientsOf(record).size(), 2u);
    }
}

TEST(FaxJobData, RecipientsGrowByDoublingAndKeepTheirOrder)
{
    OwnedFaxJobData owned;
    FaxJobData& record = owned.Get();
    record.Recipients.Capacity = 1; // the least that a driver may state
    MakeRoomForRecipients(record);
    EXPECT_EQ(AddRecipient(record, nullptr), FALSE);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(AddRecipient(record, NewRecipient(std::to_wstring(i).c_str())), TRUE);
        EXPECT_LE(record.Recipients.Count, record.Recipients.Capacity);
    }
    EXPECT_EQ(record.RecipientCount, 5);
    EXPECT_EQ(record.Recipients.Count, 5);
    EXPECT_EQ(record.Recipients.Capacity, 8);
    DeleteRecipient(record, 1);
    DeleteRecipient(record, 9); // not there
    DeleteRecipient(record, -1);
    ASSERT_EQ(record.RecipientCount, 4);
    const wchar_t* const expected[] = {L"0", L"2", L"3", L"4"};
    for (int i = 0; i < 4; ++i)
        EXPECT_STREQ(record.Recipients.Items[i]->Name, expected[i]);
}

TEST(FaxJobData, StringsStandInACountedArrayAndAreFoundById)
{
    OwnedFaxJobData owned;
    FaxJobData& record = owned.Get();
    RestartStrings(record);
    EXPECT_EQ(record.Strings.Capacity, 10);
    EXPECT_EQ(AppendString(record, 0, L"no identifier"), FALSE);
    for (int id = 1; id <= 12; ++id) {
        EXPECT_EQ(AppendString(record, id, std::to_wstring(id).c_str()), TRUE);
        EXPECT_LE(record.Strings.Count, record.Strings.Capacity);
    }
    EXPECT_EQ(record.Strings.Count, 12);
    EXPECT_EQ(record.Strings.Capacity, 20);
    EXPECT_EQ(*(reinterpret_cast<const std::size_t*>(record.Strings.Items) - 1), 20u);
    EXPECT_STREQ(QxFaxFindString(&record, 7), L"7");
    EXPECT_EQ(QxFaxFindString(&record, 13), nullptr);
    RestartStrings(record);
    EXPECT_EQ(record.Strings.Count, 0);
}

TEST(FaxJobData, ATableThatNobodyHasStartedGrowsAllTheSame)
{
    OwnedFaxJobData owned;
    EXPECT_EQ(AppendString(owned.Get(), 7, L"text"), TRUE);
    EXPECT_EQ(owned.Get().Strings.Capacity, 10);
    EXPECT_STREQ(QxFaxFindString(&owned.Get(), 7), L"text");
}

TEST(FaxJobData, APartIsCompleteWhenAllItsTextsAreThere)
{
    OwnedFaxJobData owned;
    FaxJobData& record = owned.Get();
    WCHAR* FaxJobData::* const settings[] = {&FaxJobData::SenderName, &FaxJobData::SenderCompany,
                                             &FaxJobData::SenderFaxNo, &FaxJobData::SenderVoiceNo,
                                             &FaxJobData::NotifyEmail};
    WCHAR* FaxJobData::* const coverPage[] = {&FaxJobData::CoverPageNotes, &FaxJobData::CoverPageSubject,
                                              &FaxJobData::OverlayPath};
    for (const auto field : settings)
        record.*field = HeapText(L"");
    for (const auto field : coverPage)
        record.*field = HeapText(L"");
    const auto missing = [&](auto field, auto isComplete) {
        WCHAR* const text = std::exchange(record.*field, nullptr);
        const bool complete = isComplete(record);
        record.*field = text;
        return !complete && isComplete(record);
    };
    for (const auto field : settings)
        EXPECT_TRUE(missing(field, HasSendSettings));
    for (const auto field : coverPage)
        EXPECT_TRUE(missing(field, HasCoverPage));
}

using FailingBlocks = test::FailingCalls<decltype(HeapAlloc), struct BlocksOfRecords>;

TEST(FaxJobData, WhatThereIsNoMemoryForIsRefused)
{
    OwnedFaxJobData owned;
    FaxJobData& record = owned.Get();
    FailingBlocks blocks(nullptr, "HeapAlloc", nullptr);
    blocks.FailFrom(1);
    record.Recipients.Capacity = 5;
    record.RecipientCount = 3;
    MakeRoomForRecipients(record);
    EXPECT_EQ(record.Recipients.Capacity, 0);
    FaxRecipient recipient{};
    EXPECT_EQ(AddRecipient(record, &recipient), FALSE);
    EXPECT_EQ(record.RecipientCount, 0);
    EXPECT_TRUE(RecipientsOf(record).empty());
    SetSenderName(record, L"Ann");
    EXPECT_EQ(record.SenderName, nullptr);
    SetOverlayPath(record, L"path");
    EXPECT_EQ(record.OverlayPath, nullptr);
    RestartStrings(record);
    EXPECT_EQ(AppendString(record, 1, L"text"), FALSE);
    EXPECT_EQ(record.Strings.Count, 0);
}

TEST(FaxJobData, ATableThatCannotGrowKeepsItsTexts)
{
    OwnedFaxJobData owned;
    FaxJobData& record = owned.Get();
    RestartStrings(record);
    FailingBlocks blocks(nullptr, "HeapAlloc", nullptr);
    blocks.FailOnly(1);
    EXPECT_EQ(AppendString(record, 1, L"1"), FALSE);
    EXPECT_EQ(record.Strings.Count, 0);
    for (int id = 1; id <= 10; ++id)
        EXPECT_EQ(AppendString(record, id, std::to_wstring(id).c_str()), TRUE);
    for (long call = 1; call <= 12; ++call) { // the new table, the copy of each text, the new text
        blocks.FailOnly(call);
        EXPECT_EQ(AppendString(record, 11, L"11"), FALSE) << call;
        EXPECT_EQ(record.Strings.Count, 10) << call;
        for (int id = 1; id <= 10; ++id)
            EXPECT_EQ(QxFaxFindString(&record, id), std::to_wstring(id)) << call;
    }
    blocks.FailNone();
    EXPECT_EQ(AppendString(record, 11, L"11"), TRUE);
}

TEST(FaxJobData, AReleasedRecordIsReadyForTheNextCall)
{
    FaxJobData record;
    QxFaxInitJob(&record);
    MakeRoomForRecipients(record);
    SetSenderName(record, L"Ann");
    AddRecipient(record, NewRecipient(L"Bob"));
    RestartStrings(record);
    AppendString(record, 5, L"text");
    QxFaxReleaseJob(&record);
    EXPECT_EQ(record.SenderName, nullptr);
    EXPECT_EQ(record.RecipientCount, 0);
    EXPECT_GE(record.Recipients.Capacity, 1);
    EXPECT_EQ(record.Strings.Items, nullptr);
    EXPECT_NE(record.Cancelled, 0u);
}

} // namespace
} // namespace qx
