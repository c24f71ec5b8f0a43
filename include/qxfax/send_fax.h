/** @file
 *  The driver's side of the send-fax user interface: the job record, the three exports of qxfaxui.dll, and how to
 *  release what a record holds.
 *
 *  Usable from C and C++. Texts are NUL-terminated UTF-16; their lengths are given in UTF-16 units without the
 *  terminator. Everything the module stores into a record lives on the process heap (GetProcessHeap()), so that the
 *  driver can release it with the inline functions below, whether the module is still loaded or not. One thread, the
 *  driver's user-interface thread, uses a record at a time; nothing here is synchronised.
 *
 *  Before the first DisplayFaxUI with a record the driver must
 *   - zero the whole record,
 *   - set Recipients.Capacity to at least 1 (QxFaxInitJob does both), and
 *   - set Cancelled to the value that it wants to find when no sheet could be shown: the module writes it only when
 *     the user sends (0) or cancels (1), or when a sheet has to be closed because a page could not be filled (1).
 */
#ifndef QXFAX_SEND_FAX_H
#define QXFAX_SEND_FAX_H

#include <stddef.h>
#include <windows.h>

#ifdef __cplusplus
extern "C" {
#endif

/** One recipient of a job, as a driver reads it. The texts are never NULL once the module has stored the recipient;
 *  an unknown fax number or company is an empty text. */
typedef struct FaxRecipient {
    const void* Reserved; /**< the module's own; neither read nor changed by a driver */
    WCHAR* Name;          /**< usually at most 50 units; longer when the phone book file holds a longer name */
    WCHAR* FaxNumber;     /**< decimal digits and , - * # ( ) [ ] */
    WCHAR* Company;
    DWORD Id;             /**< phone book id, 0 for a typed recipient */
} FaxRecipient;

/** Growable array of recipients. Count of the Capacity pointers at Items are valid. The record owns each of them. */
typedef struct FaxRecipientArray {
    INT32 Capacity; /**< must be at least 1 before the first DisplayFaxUI */
    INT32 Count;
    FaxRecipient** Items;
} FaxRecipientArray;

/** One localized text for the driver's own use, such as a label of the cover page. */
typedef struct FaxString {
    WCHAR* Text;
    INT32 Id;
} FaxString;

/** Localized texts. Positions are not stable, since texts that a language lacks are left out, and some ids stand
 *  in it twice: find a text by its id (QxFaxFindString). */
typedef struct FaxStringTable {
    INT32 Capacity;
    INT32 Count;
    FaxString* Items; /**< preceded in its heap block by the element count, a size_t */
} FaxStringTable;

/** The job record. Flags are 0 for false and anything else for true. The driver owns the record's memory. */
typedef struct FaxJobData {
    HKEY hDefaultKey;     /**< open only during DisplayFaxUI, NULL afterwards; the same holds for the next four */
    HKEY hAddressBookKey;
    HKEY hJobDataKey;
    HKEY hBidiInfoKey;
    HKEY hMruListKey;
    HANDLE PrinterHandle; /**< the handle given to DisplayFaxUI; still the driver's to close */

    WCHAR* SenderName;    /**< at most 255 units */
    WCHAR* SenderCompany; /**< at most 255 units */
    WCHAR* SenderFaxNo;   /**< at most 255 units */
    WCHAR* SenderVoiceNo; /**< at most 255 units */
    DWORD Resolution;     /**< 0 standard, 1 fine, 2 superfine */
    DWORD NotifyOn;       /**< 0 never, 1 for this job, 2 on error */
    DWORD NotifyMethod;   /**< 0 none, 1 printed, 2 by e-mail */
    WCHAR* NotifyEmail;   /**< at most 256 units */

    DWORD AddCoverPage;      /**< flag: a cover page is sent */
    WCHAR* CoverPageNotes;   /**< usually at most 500 units */
    WCHAR* CoverPageSubject; /**< at most 255 units */
    WCHAR* OverlayPath;      /**< cover page bitmap; a buffer of 260 units, at most 258 used */

    WCHAR* BillingCode;           /**< decimal digits */
    DWORD BillingCodeMinLength;   /**< digits */
    DWORD ShowPreview;            /**< flag */
    DWORD PcFaxSendOperational;   /**< flag: the device accepts faxes from a PC */
    DWORD BillingCodeEnabled;     /**< flag: the device asks for a billing code */
    DWORD NotificationAvailable;  /**< flag */
    DWORD EmailServiceOperational; /**< nonzero when the device can send e-mail */
    DWORD Reserved1;
    DWORD DefaultsSaved;          /**< flag: the user's first defaults were saved during the session */
    DWORD Reserved2;
    DWORD ApplyDefaults;          /**< flag: the defaults are applied to this job */
    DWORD Reserved3[4];
    DWORD CoverPageLock;          /**< 0 free, 1 locked to DefaultOverlayPath, 2 unknown */
    WCHAR* DefaultOverlayPath;    /**< the administrator's cover page bitmap */

    FaxRecipientArray Recipients; /**< at most 100 */
    INT32 RecipientCount;         /**< Recipients.Count, published */
    HANDLE PrinterHandleCopy;
    WCHAR* Title;                 /**< the sheet's caption */
    DWORD Cancelled;              /**< flag: 1 the user cancelled, 0 the job was sent */
    DWORD CoverPageFromDefaults;  /**< flag: the cover page fields were replaced by the user's defaults */
    FaxStringTable Strings;
} FaxJobData;

/** Shows the modal "Send Fax" sheet and returns when the user has sent or cancelled.
 *
 *  @param printer  a handle from OpenPrinterW; NULL leaves the record untouched and shows nothing
 *  @param record   prepared as described above; may be used again for the next call
 *  The outcome is in the record: Cancelled, the recipients and the settings. Call it on a thread with a message queue
 *  that may show windows; the sheet is owned by that thread's active window. */
void WINAPI DisplayFaxUI(HANDLE printer, FaxJobData* record);

/** Keeps a copy of size bytes for this process, replacing an earlier block. A NULL data or a size of 0 only drops the
 *  earlier block. @return FALSE when nothing was stored. */
BOOL WINAPI BStoreExtEscapeData(const void* data, DWORD size);

/** Fetches the block kept by BStoreExtEscapeData.
 *
 *  With buffer NULL: writes the block's size in bytes to *size; FALSE when there is none. With buffer not NULL: copies
 *  the block to *buffer, which must have room for it; *size is neither read nor written, but size must not be NULL.
 *  After a store that failed the size of the block before is still reported, while a copy answers FALSE. */
BOOL WINAPI BGetStoredExtEscapeData(void** buffer, DWORD* size);

/** Makes a record ready for its first DisplayFaxUI: zeroed, room for recipients, not sent, notification printed. */
static inline void QxFaxInitJob(FaxJobData* record)
{
    SecureZeroMemory(record, sizeof *record);
    record->Recipients.Capacity = 10;
    record->Cancelled = TRUE;
    record->NotifyMethod = 1; /* a number that the user's defaults lack stays as the driver set it */
}

/** The text of id, or NULL. It belongs to the record. */
static inline const WCHAR* QxFaxFindString(const FaxJobData* record, INT32 id)
{
    INT32 i;
    for (i = 0; i < record->Strings.Count; ++i) {
        if (record->Strings.Items[i].Id == id)
            return record->Strings.Items[i].Text;
    }
    return NULL;
}

/** Frees a block of the process heap; NULL is fine. */
static inline void QxFaxFree(void* block)
{
    if (block != NULL)
        HeapFree(GetProcessHeap(), 0, block);
}

/** Frees one recipient with its texts; NULL is fine. */
static inline void QxFaxFreeRecipient(FaxRecipient* recipient)
{
    if (recipient == NULL)
        return;
    QxFaxFree(recipient->Name);
    QxFaxFree(recipient->FaxNumber);
    QxFaxFree(recipient->Company);
    QxFaxFree(recipient);
}

/** Releases the recipients and leaves an empty array that is ready for the next DisplayFaxUI. */
static inline void QxFaxReleaseRecipients(FaxJobData* record)
{
    INT32 i;
    for (i = 0; i < record->Recipients.Count && record->Recipients.Items != NULL; ++i)
        QxFaxFreeRecipient(record->Recipients.Items[i]);
    QxFaxFree(record->Recipients.Items);
    record->Recipients.Items = NULL;
    record->Recipients.Count = 0;
    record->RecipientCount = 0;
}

/** Releases the localized texts. */
static inline void QxFaxReleaseStrings(FaxJobData* record)
{
    INT32 i;
    if (record->Strings.Items != NULL) {
        for (i = 0; i < record->Strings.Count; ++i)
            QxFaxFree(record->Strings.Items[i].Text);
        QxFaxFree((BYTE*)record->Strings.Items - sizeof(size_t));
    }
    record->Strings.Items = NULL;
    record->Strings.Count = 0;
    record->Strings.Capacity = 0;
}

/** Releases everything that the module stored into the record and makes the record ready for another call.
 *  The printer handle stays the driver's to close. */
static inline void QxFaxReleaseJob(FaxJobData* record)
{
    QxFaxFree(record->SenderName);
    QxFaxFree(record->SenderCompany);
    QxFaxFree(record->SenderFaxNo);
    QxFaxFree(record->SenderVoiceNo);
    QxFaxFree(record->NotifyEmail);
    QxFaxFree(record->CoverPageNotes);
    QxFaxFree(record->CoverPageSubject);
    QxFaxFree(record->OverlayPath);
    QxFaxFree(record->BillingCode);
    QxFaxFree(record->DefaultOverlayPath);
    QxFaxFree(record->Title);
    QxFaxReleaseRecipients(record);
    QxFaxReleaseStrings(record);
    QxFaxInitJob(record);
}

#ifdef __cplusplus
} /* extern "C" */

/* The record is shared between separately built binaries: no compiler may move a field. */
#define QXFAX_AT(field, offset) static_assert(offsetof(FaxJobData, field) == (offset), #field " has moved")
QXFAX_AT(hDefaultKey, 0);
QXFAX_AT(hAddressBookKey, 8);
QXFAX_AT(hJobDataKey, 16);
QXFAX_AT(hBidiInfoKey, 24);
QXFAX_AT(hMruListKey, 32);
QXFAX_AT(PrinterHandle, 40);
QXFAX_AT(SenderName, 48);
QXFAX_AT(SenderCompany, 56);
QXFAX_AT(SenderFaxNo, 64);
QXFAX_AT(SenderVoiceNo, 72);
QXFAX_AT(Resolution, 80);
QXFAX_AT(NotifyOn, 84);
QXFAX_AT(NotifyMethod, 88);
QXFAX_AT(NotifyEmail, 96);
QXFAX_AT(AddCoverPage, 104);
QXFAX_AT(CoverPageNotes, 112);
QXFAX_AT(CoverPageSubject, 120);
QXFAX_AT(OverlayPath, 128);
QXFAX_AT(BillingCode, 136);
QXFAX_AT(BillingCodeMinLength, 144);
QXFAX_AT(ShowPreview, 148);
QXFAX_AT(PcFaxSendOperational, 152);
QXFAX_AT(BillingCodeEnabled, 156);
QXFAX_AT(NotificationAvailable, 160);
QXFAX_AT(EmailServiceOperational, 164);
QXFAX_AT(Reserved1, 168);
QXFAX_AT(DefaultsSaved, 172);
QXFAX_AT(Reserved2, 176);
QXFAX_AT(ApplyDefaults, 180);
QXFAX_AT(Reserved3, 184);
QXFAX_AT(CoverPageLock, 200);
QXFAX_AT(DefaultOverlayPath, 208);
QXFAX_AT(Recipients, 216);
QXFAX_AT(RecipientCount, 232);
QXFAX_AT(PrinterHandleCopy, 240);
QXFAX_AT(Title, 248);
QXFAX_AT(Cancelled, 256);
QXFAX_AT(CoverPageFromDefaults, 260);
QXFAX_AT(Strings, 264);
#undef QXFAX_AT
static_assert(sizeof(FaxJobData) == 280, "FaxJobData has changed its size");
static_assert(sizeof(FaxRecipientArray) == 16 && sizeof(FaxStringTable) == 16 && sizeof(FaxString) == 16);
static_assert(offsetof(FaxRecipient, Name) == 8 && offsetof(FaxRecipient, FaxNumber) == 16 &&
              offsetof(FaxRecipient, Company) == 24 && offsetof(FaxRecipient, Id) == 32);
#endif

#endif
