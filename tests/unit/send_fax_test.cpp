#include <qxfax/send_fax.h>

#include <gtest/gtest.h>

extern "C" {
size_t OffsetOfStringsInC(void);
size_t SizeOfJobInC(void);
int RecipientCapacityAfterInitInC(void);
}

namespace {

TEST(SendFaxHeader, IsTheSameRecordInCAndInCpp)
{
    EXPECT_EQ(OffsetOfStringsInC(), offsetof(FaxJobData, Strings));
    EXPECT_EQ(SizeOfJobInC(), sizeof(FaxJobData));
}

TEST(SendFaxHeader, AnInitialisedRecordHasRoomForRecipients)
{
    EXPECT_GE(RecipientCapacityAfterInitInC(), 1);
}

} // namespace
