#include "phonebook/ui/phone_book_changed.h"

#include "support/redirected_import.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

UINT WINAPI RefuseRegistration(LPCWSTR)
{
    return 0;
}

TEST(PhoneBookChangedMessage, IsAskedForAgainAfterARefusal)
{
    {
        const test::RedirectedImport<decltype(RegisterWindowMessageW)> refused("RegisterWindowMessageW",
                                                                               RefuseRegistration);
        EXPECT_EQ(PhoneBookChangedMessage(), 0u);
    }
    EXPECT_EQ(PhoneBookChangedMessage(), RegisterWindowMessageW(L"PB_{d12b6b3a-3fee-4506-3f95-b1885bcf2149}"));
}

} // namespace
} // namespace qx
