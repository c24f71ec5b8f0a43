/* The contract as a driver written in C sees it. */
#include <qxfax/send_fax.h>

size_t OffsetOfStringsInC(void)
{
    return offsetof(FaxJobData, Strings);
}

size_t SizeOfJobInC(void)
{
    return sizeof(FaxJobData);
}

int RecipientCapacityAfterInitInC(void)
{
    FaxJobData job;
    QxFaxInitJob(&job);
    QxFaxReleaseJob(&job);
    return job.Recipients.Capacity;
}
