#include "settings/fax_defaults.h"

#include "record/fax_job_data.h"
#include "settings/key_set.h"
#include "support/failing_calls.h"
#include "support/test_printer.h"
#include "support/user_defaults.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using namespace test;

class FaxDefaults : public ::testing::Test {
protected:
    FaxDefaults() { record().PrinterHandle = printer.Handle(); }

    FaxJobData& record() { return owned.Get(); }
    UniqueKey Stored() const { return printer.Key(L"QX-FAX\\Default"); }

    TestPrinter printer;
    OwnedFaxJobData owned;
    KeySet keys{owned.Get()};
};

TEST_F(FaxDefaults, NothingStoredLeavesEveryFieldAsItWas)
{
    SetSenderName(record(), L"the driver's");
    record().Resolution = 77;
    record().NotifyMethod = 0;
    EXPECT_FALSE(LoadFaxDefaults(record()));
    EXPECT_STREQ(record().SenderName, L"the driver's");
    EXPECT_EQ(record().Resolution, 77u);
    EXPECT_EQ(record().NotifyMethod, 0u);
}

TEST_F(FaxDefaults, TheStoredApplyDefaultsTellsThatThereAreDefaultsWhateverItsValue)
{
    PutText(Stored().Get(), L"SenderName", L"Ann");
    EXPECT_FALSE(LoadFaxDefaults(record())); // the sheet then opens on the Setup page
    EXPECT_STREQ(record().SenderName, L"Ann");
    PutNumber(Stored().Get(), L"ApplyDefaults", 0);
    EXPECT_TRUE(LoadFaxDefaults(record()));
}

TEST_F(FaxDefaults, AreStoredAsFourteenValuesWithTheirTypes)
{
    SetDefaultsOf(record(), SampleDefaults());
    SaveFaxDefaults(record());
    EXPECT_EQ(DefaultsIn(Stored().Get()), SampleDefaults());

    OwnedFaxJobData again;
    const KeySet againKeys{again.Get()};
    again.Get().PrinterHandle = printer.Handle();
    EXPECT_TRUE(LoadFaxDefaults(again.Get()));
    EXPECT_EQ(DefaultsOf(again.Get()), SampleDefaults());
}

TEST_F(FaxDefaults, TextsThatWereNeverSetAreStoredEmpty)
{
    SaveFaxDefaults(record());
    EXPECT_EQ(GetStored(Stored().Get(), L"SenderName"), AsStored(L""));
    EXPECT_EQ(GetStored(Stored().Get(), L"OverlayPath"), AsStored(L""));
}

TEST_F(FaxDefaults, NumbersOutsideTheirRangeLoadAsTheirDefault)
{
    struct Case {
        const wchar_t* name;
        DWORD FaxJobData::* field;
        DWORD stored;
        DWORD expected;
    };
    const Case cases[] = {
        {L"Resolution", &FaxJobData::Resolution, 7, 0},     {L"Resolution", &FaxJobData::Resolution, 3, 0},
        {L"Resolution", &FaxJobData::Resolution, 2, 2},     {L"Resolution", &FaxJobData::Resolution, 0xFFFFFFFF, 0},
        {L"NotifyOn", &FaxJobData::NotifyOn, 2, 2},         {L"NotifyOn", &FaxJobData::NotifyOn, 3, 0},
        {L"NotifyMethod", &FaxJobData::NotifyMethod, 0, 1}, {L"NotifyMethod", &FaxJobData::NotifyMethod, 2, 2},
        {L"NotifyMethod", &FaxJobData::NotifyMethod, 3, 1}, {L"AddCoverPage", &FaxJobData::AddCoverPage, 9, 9},
        {L"ShowPreview", &FaxJobData::ShowPreview, 9, 9},   {L"ApplyDefaults", &FaxJobData::ApplyDefaults, 9, 9},
    };
    for (const Case& c : cases) {
        PutNumber(Stored().Get(), c.name, c.stored);
        record().*c.field = 77;
        LoadFaxDefaults(record());
        EXPECT_EQ(record().*c.field, c.expected) << std::wstring(c.name).size() << " " << c.stored;
    }
}

TEST_F(FaxDefaults, ANumberWithAnyOtherCharacterIsNotTakenOverAtAll)
{
    struct Case {
        const wchar_t* stored;
        const wchar_t* expected;
    };
    const Case cases[] = {
        {L"(555)123-4567", L"(555)123-4567"},
        {L"(555) 123-4567", L"before"},
        {L"555-1234x12", L"before"},
        {L"55A", L"before"},
        {L"+1555", L"before"},
        {L"*70,#555", L"*70,#555"},
        {L"[555]", L"before"}, // can be typed as a fax number, and still is not taken over
        {L"", L""},
    };
    for (const Case& c : cases) {
        for (const wchar_t* const name : {L"SenderFaxNo", L"SenderVoiceNo"})
            PutText(Stored().Get(), name, c.stored);
        SetSenderFaxNo(record(), L"before");
        SetSenderVoiceNo(record(), L"before");
        LoadFaxDefaults(record());
        EXPECT_STREQ(record().SenderFaxNo, c.expected);
        EXPECT_STREQ(record().SenderVoiceNo, c.expected);
    }
}

TEST_F(FaxDefaults, TextsAreCutAtTheirLimits)
{
    struct Case {
        const wchar_t* name;
        WCHAR* FaxJobData::* field;
        std::size_t stored;
        std::size_t expected;
    };
    const Case cases[] = {
        {L"SenderName", &FaxJobData::SenderName, 60, 50},
        {L"SenderCompany", &FaxJobData::SenderCompany, 51, 50},
        {L"SenderFaxNo", &FaxJobData::SenderFaxNo, 60, 50},
        {L"SenderVoiceNo", &FaxJobData::SenderVoiceNo, 50, 50},
        {L"CoverPageNotes", &FaxJobData::CoverPageNotes, 501, 500},
        {L"CoverPageSubject", &FaxJobData::CoverPageSubject, 1000, 50},
        {L"OverlayPath", &FaxJobData::OverlayPath, 300, 258},
        {L"OverlayPath", &FaxJobData::OverlayPath, 259, 258},
        {L"NotifyEmail", &FaxJobData::NotifyEmail, 100000, 256},
    };
    for (const Case& c : cases) {
        PutText(Stored().Get(), c.name, std::wstring(c.stored, L'5'));
        LoadFaxDefaults(record());
        EXPECT_EQ(std::wstring(record().*c.field), std::wstring(c.expected, L'5'));
    }
}

TEST_F(FaxDefaults, BadlyStoredValuesNeverReadMemoryOrStopTheOthers)
{
    const UniqueKey key = Stored();
    PutBytes(key.Get(), L"SenderName", REG_SZ, "A\0n", 3);
    PutBytes(key.Get(), L"SenderCompany", REG_BINARY, nullptr, 0);
    PutNumber(key.Get(), L"SenderFaxNo", 0x00350035); // the two characters 55, no terminator
    PutText(key.Get(), L"Resolution", L"22");         // too long for a number
    PutBytes(key.Get(), L"NotifyOn", REG_BINARY, "\x01", 1);
    PutText(key.Get(), L"NotifyEmail", L"ann@example.com");
    PutNumber(key.Get(), L"ApplyDefaults", 1);
    record().Resolution = 1;
    EXPECT_TRUE(LoadFaxDefaults(record()));
    EXPECT_STREQ(record().SenderName, L"A");
    EXPECT_STREQ(record().SenderCompany, L"");
    EXPECT_STREQ(record().SenderFaxNo, L"55");
    EXPECT_EQ(record().Resolution, 1u);
    EXPECT_EQ(record().NotifyOn, 1u);
    EXPECT_STREQ(record().NotifyEmail, L"ann@example.com");
}

TEST_F(FaxDefaults, WhatCannotBeReadIsLeftOutOrRefused)
{
    SetDefaultsOf(record(), SampleDefaults());
    SaveFaxDefaults(record());
    const UserDefaults nothing = DefaultsOf(OwnedFaxJobData().Get());
    int refused = 0;
    const auto load = [&](UnreadDefaults unread) {
        return [&, unread](const std::string& what) {
            OwnedFaxJobData again;
            const KeySet againKeys{again.Get()};
            again.Get().PrinterHandle = printer.Handle();
            try {
                LoadFaxDefaults(again.Get(), unread);
            } catch (const std::exception&) {
                ++refused;
                return;
            }
            int missing = 0;
            for (const auto& [name, value] : DefaultsOf(again.Get())) {
                missing += value == SampleDefaults()[name] ? 0 : 1;
                EXPECT_TRUE(value == SampleDefaults()[name] || value == nothing.at(name)) << what;
            }
            EXPECT_LE(missing, unread == UnreadDefaults::Refused ? 0 : 14) << what;
        };
    };
    WhileEachFails<decltype(RegQueryValueExW)>("RegQueryValueExW", ERROR_ACCESS_DENIED, load(UnreadDefaults::LeftOut));
    WhileEachFails<decltype(RegCreateKeyExW)>("RegCreateKeyExW", ERROR_ACCESS_DENIED, load(UnreadDefaults::LeftOut));
    EXPECT_EQ(refused, 0);
    WhileEachFails<decltype(RegQueryValueExW)>("RegQueryValueExW", ERROR_ACCESS_DENIED, load(UnreadDefaults::Refused));
    EXPECT_GT(refused, 14);
}

TEST_F(FaxDefaults, WithoutMemoryForATextTheyAreNotLoaded)
{
    SetDefaultsOf(record(), SampleDefaults());
    SaveFaxDefaults(record());
    FailingCalls<decltype(HeapAlloc), struct DefaultTexts> memory(nullptr, "HeapAlloc", nullptr);
    memory.FailFrom(1);
    OwnedFaxJobData again;
    const KeySet againKeys{again.Get()};
    again.Get().PrinterHandle = printer.Handle();
    EXPECT_THROW(LoadFaxDefaults(again.Get()), std::bad_alloc);
}

TEST_F(FaxDefaults, TellWhatBecomesOfEachValueThatIsStored)
{
    const std::vector<FaxDefaultName> names = FaxDefaultNames();
    ASSERT_EQ(names.size(), SampleDefaults().size());
    for (const FaxDefaultName& stored : names) {
        ASSERT_TRUE(SampleDefaults().contains(stored.name));
        const DefaultValue value = SampleDefaults()[stored.name];
        EXPECT_EQ(std::holds_alternative<DWORD>(value), stored.type == REG_DWORD);
        if (stored.type == REG_DWORD)
            EXPECT_EQ(FaxDefaultTakenOver(stored.name, std::get<DWORD>(value)), std::get<DWORD>(value));
        else
            EXPECT_EQ(FaxDefaultTakenOver(stored.name, std::get<std::wstring>(value)), std::get<std::wstring>(value));
    }
    EXPECT_EQ(FaxDefaultTakenOver(L"NotifyMethod", 7), 1u);
    EXPECT_EQ(FaxDefaultTakenOver(L"ApplyDefaults", 7), 7u); // any value
    EXPECT_EQ(FaxDefaultTakenOver(L"SenderFaxNo", L"12x"), std::nullopt);
    EXPECT_EQ(FaxDefaultTakenOver(L"SenderFaxNo", L""), L"");
    EXPECT_EQ(FaxDefaultTakenOver(L"Resolution", L"1"), std::nullopt); // no text
}

TEST_F(FaxDefaults, WithoutASubtreeNameNothingIsLoadedOrSaved)
{
    const TestPrinter unnamed(TestPrinter::Subtree::Unnamed);
    record().PrinterHandle = unnamed.Handle();
    SetSenderName(record(), L"before");
    EXPECT_FALSE(LoadFaxDefaults(record()));
    EXPECT_STREQ(record().SenderName, L"before");
    SaveFaxDefaults(record());
    HKEY subtree = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, unnamed.SubtreePath().c_str(), 0, KEY_READ, &subtree),
              ERROR_FILE_NOT_FOUND);
}

TEST(CopiedFaxDefaults, AreAllButWhetherToApplyThem)
{
    OwnedFaxJobData defaults;
    OwnedFaxJobData job;
    FaxJobData& from = defaults.Get();
    SetDefaultsOf(from, SampleDefaults());
    from.BillingCodeMinLength = 4; // the device's, not the user's
    CopyFaxDefaults(from, job.Get());
    UserDefaults expected = SampleDefaults();
    expected[L"ApplyDefaults"] = 0u;
    EXPECT_EQ(DefaultsOf(job.Get()), expected);
    EXPECT_NE(job.Get().SenderName, from.SenderName); // copies: each record frees its own
    EXPECT_EQ(job.Get().BillingCodeMinLength, 0u);
}

} // namespace
} // namespace qx
