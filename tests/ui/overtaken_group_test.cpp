// The group dialog over a book that was reloaded although nobody has told the dialog: the message was lost on the way.
#include "phonebook/ui/group_dialog.h"

#include "res/group_ids.h"
#include "support/dialog_thread.h"
#include "support/phone_book.h"
#include "support/phone_book_session.h"

#include <gtest/gtest.h>

namespace qx::test {
namespace {

using Names = std::vector<std::wstring>;

TEST(OvertakenGroup, OkShowsWhoIsNoMemberAnyMoreInsteadOfEndingTheDialog)
{
    TestBook book;
    book.AddEntry(L"Bob", L"222", L"", 1);
    PhoneBookEntry* const second = book.AddEntry(L"Zoe", L"5", L"", 2);
    GroupDialogContext group{{TextOwner(), *book}};
    INT_PTR answer = 0;
    DialogThread conversation([&] { answer = ShowModal<kAddGroupDialog>(nullptr, group); });
    host::UiDriver& ui = conversation.Ui();
    ui.Type(IDC_GROUP_NAME, L"Team");
    AddMembers(ui, {0, 1});
    ui.Do([&] { second->SetTexts({L"Amy", L"3", L""}); });
    ui.Press(IDOK);
    EXPECT_EQ(NamesIn(ui, IDC_GROUP_ENTRIES), (Names{L"Bob", L"Amy"}));
    EXPECT_EQ(NamesIn(ui, IDC_GROUP_MEMBERS), Names{L"Bob"});
    ui.Press(IDOK);
    conversation.End();
    EXPECT_EQ(answer, IDOK);
    EXPECT_EQ(group.working->MemberIds().size(), 1u);
    EXPECT_EQ(group.working->MemberIds().front(), 1u);
}

} // namespace
} // namespace qx::test
