/** @file
 *  The driver's side of the send-fax user interface: the job record, the three exports of qxfaxui.dll, and how to
 *  release what a record holds.
 *
 *  Usable from C (C89 and later) and C++ (C++11 and later). Texts are NUL-terminated UTF-16; their lengths are given in
 *  UTF-16 units without the terminator. Everything the module stores into a record lives on the process heap
 *  (GetProcessHeap()), so that the driver can release it with the inline functions below, whether the module is still
 *  loaded or not.
 *
 *  Before the first DisplayFaxUI with a record the driver must
 *   - zero the whole record,
 *   - set Recipients.Capacity to at least 1 (QxFaxInitJob does both), and
 *   - set Cancelled to the value that it wants to find when no sheet could be shown: the module writes it only when
 *     the user sends (0) or cancels (1), or when a sheet has to be closed because a page could not be filled (1).
 *  Before each later one it releases the record (QxFaxReleaseJob, which presets Cancelled, too): recipients that are
 *  still in a record are shown, and sent to, and a Cancelled that is still 0 says "sent" when no sheet could be shown.
 *
 *  Threads. A record and the printer handle given with it belong to one thread during DisplayFaxUI. Several threads may
 *  each call DisplayFaxUI at the same time with a record and a printer handle of their own. The block of
 *  BStoreExtEscapeData is one for the whole process and is not locked: its two functions are for one thread at a time.
 *  The inline functions are not locked either, and use nothing but their arguments and the process heap.
 *
 *  The layout is fixed: no later version moves, resizes or re-uses a field.
 */
#ifndef QXFAX_SEND_FAX_H
#define QXFAX_SEND_FAX_H

#if !defined(_M_X64) && !defined(_M_AMD64) && !defined(__x86_64__)
#error "qxfax/send_fax.h is for 64-bit drivers on x64 alone: the module is a 64-bit DLL, and a 32-bit record differs."
#endif

#include <stddef.h>
#include <windows.h>

#include <sal.h>

#include "version.h"

/* Functions of the module. A driver that looks them up with GetProcAddress needs nothing here. */
#ifndef QXFAX_API
#define QXFAX_API __declspec(dllimport)
#endif
#define QXFAX_INLINE static __inline

#ifdef __cplusplus
extern "C" {
#endif

/* The records are packed as Windows' own, whatever the compiler was told (/Zp). */
#pragma pack(push, 8)

/** One recipient of a job, as a driver reads it. The texts are never NULL once the module has stored the recipient;
 *  an unknown fax number or company is an empty text. */
typedef struct FaxRecipient {
    const void* Reserved; /**< the module's own; neither read nor changed by a driver */
    WCHAR* Name;          /**< usually at most 50 units; longer when the phone book file holds a longer name */
    WCHAR* FaxNumber;     /**< digits and , - * # ( ) [ ]; length as the name's. Digits may be those of any script:
                               QxFaxAsciiDigits */
    WCHAR* Company;       /**< length as the name's */
    DWORD Id;             /**< the id of the phone book entry that it was copied from. It says nothing about where the
                               recipient comes from: typed ones have 0, and so has the first entry of a phone book */
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
    HKEY hDefaultKey; /**< open only during DisplayFaxUI, NULL afterwards; the same holds for the next four */
    HKEY hAddressBookKey;
    HKEY hJobDataKey;
    HKEY hBidiInfoKey;
    HKEY hMruListKey;
    HANDLE PrinterHandle; /**< the handle given to DisplayFaxUI; still the driver's to close */

    /* Users type at most 50 units into the next four fields; other programs may fill them with up to 255. */
    WCHAR* SenderName;
    WCHAR* SenderCompany;
    WCHAR* SenderFaxNo;   /**< digits of any script (QxFaxAsciiDigits) and , - * # ( ) [ ] */
    WCHAR* SenderVoiceNo; /**< digits of any script and , - * # ( ) */
    DWORD Resolution;     /**< 0 standard, 1 fine, 2 superfine */
    DWORD NotifyOn;       /**< 0 never, 1 for this job, 2 on error */
    DWORD NotifyMethod;   /**< 0 none, 1 printed, 2 by e-mail */
    WCHAR* NotifyEmail;   /**< at most 256 units */

    DWORD AddCoverPage;      /**< flag: a cover page is sent */
    WCHAR* CoverPageNotes;   /**< usually at most 500 units, which other programs may exceed; lines end with \r\n */
    WCHAR* CoverPageSubject; /**< as SenderName: 50, at most 255 units */
    WCHAR* OverlayPath;      /**< cover page bitmap; a buffer of 260 units, at most 258 used */

    WCHAR* BillingCode;            /**< digits of any script (QxFaxAsciiDigits), usually at most 16 */
    DWORD BillingCodeMinLength;    /**< digits */
    DWORD ShowPreview;             /**< flag: the user wants to see the fax before it is sent */
    DWORD PcFaxSendOperational;    /**< flag: the device accepts faxes from a PC */
    DWORD BillingCodeEnabled;      /**< flag: the device asks for a billing code */
    DWORD NotificationAvailable;   /**< flag */
    DWORD EmailServiceOperational; /**< nonzero when the device can send e-mail */
    DWORD Reserved1;
    DWORD DefaultsSaved; /**< flag: the user's first defaults were saved during the session */
    DWORD Reserved2;
    DWORD ApplyDefaults; /**< flag: the defaults are applied to this job */
    DWORD Reserved3[4];
    DWORD CoverPageLock;       /**< 0 free, 1 locked to DefaultOverlayPath, 2 unknown */
    WCHAR* DefaultOverlayPath; /**< the administrator's cover page bitmap; any length */

    FaxRecipientArray Recipients; /**< at most 100 */
    INT32 RecipientCount;         /**< Recipients.Count, published */
    HANDLE PrinterHandleCopy;
    WCHAR* Title;                /**< the sheet's caption */
    DWORD Cancelled;             /**< flag: 1 the user cancelled, 0 the job was sent */
    DWORD CoverPageFromDefaults; /**< flag: the cover page fields were replaced by the user's defaults */
    FaxStringTable Strings;
} FaxJobData;

#pragma pack(pop)

/** Names of printer data that are the driver's: the module neither reads nor writes them. */
#define QXFAX_JOB_DATA_NAME L"FaxJobData"
#define QXFAX_JOB_DATA_LENGTH_NAME L"FaxJobDataLength"

/** Shows the modal "Send Fax" sheet and returns when the user has sent or cancelled.
 *
 *  @param printer  a handle from OpenPrinterW; NULL leaves the record untouched and shows nothing
 *  @param record   prepared as described above; may be used again for the next call once it is released
 *  The outcome is in the record: Cancelled, the recipients and the settings. Call it on a thread that may show windows;
 *  the sheet is owned by that thread's active window, is modal to it, and handles the thread's messages meanwhile. Not
 *  from DllMain.
 *   - Send: Cancelled is 0 and all fields are the user's.
 *   - Cancel, or the sheet closed: Cancelled is 1; sender, quality, notification, cover page and billing code are as
 *     they were when the sheet opened, except for what Edit Defaults has put there; the recipients are those that the
 *     user had left in the list.
 *   - The thread's message loop is ended (WM_QUIT) while the sheet is open: as Cancel, but Cancelled keeps what the
 *     driver had set, and the quit message comes again in the caller's loop. */
QXFAX_API void WINAPI DisplayFaxUI(_In_opt_ HANDLE printer, _Inout_opt_ FaxJobData* record);

/** Keeps a copy of size bytes for this process, replacing an earlier block. A NULL data or a size of 0 only drops the
 *  earlier block. @return FALSE when nothing was stored. */
QXFAX_API BOOL WINAPI BStoreExtEscapeData(_In_reads_bytes_opt_(size) const void* data, DWORD size);

/** Fetches the block kept by BStoreExtEscapeData.
 *
 *  With buffer NULL: writes the block's size in bytes to *size; FALSE when there is none. With buffer not NULL: copies
 *  the block to *buffer, which must have room for it; *size is neither read nor written, but size must not be NULL.
 *  After a store that failed the size of the block before is still reported, while a copy answers FALSE. */
QXFAX_API BOOL WINAPI BGetStoredExtEscapeData(_Inout_opt_ void** buffer, _Inout_opt_ DWORD* size);

/** Makes a record ready for its first DisplayFaxUI: zeroed, room for recipients, not sent, notification printed. */
QXFAX_INLINE void QxFaxInitJob(_Out_ FaxJobData* record)
{
    SecureZeroMemory(record, sizeof *record);
    record->Recipients.Capacity = 10;
    record->Cancelled = TRUE;
    record->NotifyMethod = 1; /* a number that the user's defaults lack stays as the driver set it */
}

/** The text of id, or NULL. It belongs to the record. */
QXFAX_INLINE const WCHAR* QxFaxFindString(_In_ const FaxJobData* record, INT32 id)
{
    INT32 i;
    for (i = 0; i < record->Strings.Count; ++i) {
        if (record->Strings.Items[i].Id == id)
            return record->Strings.Items[i].Text;
    }
    return NULL;
}

/** Turns the decimal digits of other scripts in a text (Arabic-Indic, full-width, ...) into 0 to 9, in place, for a
 *  dialler that knows no others. All other characters stay, and so does the length. NULL is fine. */
QXFAX_INLINE void QxFaxAsciiDigits(_Inout_opt_z_ WCHAR* text)
{
    for (; text != NULL && *text != 0; ++text) {
        WCHAR digit = 0;
        if (*text > 0x7F && FoldStringW(MAP_FOLDDIGITS, text, 1, &digit, 1) == 1 && digit >= '0' && digit <= '9')
            *text = digit;
    }
}

/** Frees a block of the process heap; NULL is fine. */
QXFAX_INLINE void QxFaxFree(_In_opt_ void* block)
{
    if (block != NULL)
        HeapFree(GetProcessHeap(), 0, block);
}

/** Frees one recipient with its texts; NULL is fine. */
QXFAX_INLINE void QxFaxFreeRecipient(_In_opt_ FaxRecipient* recipient)
{
    if (recipient == NULL)
        return;
    QxFaxFree(recipient->Name);
    QxFaxFree(recipient->FaxNumber);
    QxFaxFree(recipient->Company);
    QxFaxFree(recipient);
}

/** Releases the recipients and leaves an empty array that is ready for the next DisplayFaxUI. */
QXFAX_INLINE void QxFaxReleaseRecipients(_Inout_ FaxJobData* record)
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
QXFAX_INLINE void QxFaxReleaseStrings(_Inout_ FaxJobData* record)
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
QXFAX_INLINE void QxFaxReleaseJob(_Inout_ FaxJobData* record)
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
#endif

/* The record is shared between separately built binaries: no compiler may move a field. */
#if defined(__cplusplus)
#define QXFAX_ASSERT(name, condition) static_assert(condition, #name " has moved")
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define QXFAX_ASSERT(name, condition) _Static_assert(condition, #name " has moved")
#else
#define QXFAX_ASSERT(name, condition) typedef char QxFaxHasMoved_##name[(condition) ? 1 : -1]
#endif
#define QXFAX_AT(record, field, offset) QXFAX_ASSERT(record##_##field, offsetof(record, field) == (offset))
#define QXFAX_SIZE(record, size) QXFAX_ASSERT(record##_end, sizeof(record) == (size))
QXFAX_AT(FaxRecipient, Reserved, 0);
QXFAX_AT(FaxRecipient, Name, 8);
QXFAX_AT(FaxRecipient, FaxNumber, 16);
QXFAX_AT(FaxRecipient, Company, 24);
QXFAX_AT(FaxRecipient, Id, 32);
QXFAX_SIZE(FaxRecipient, 40);
QXFAX_AT(FaxRecipientArray, Capacity, 0);
QXFAX_AT(FaxRecipientArray, Count, 4);
QXFAX_AT(FaxRecipientArray, Items, 8);
QXFAX_SIZE(FaxRecipientArray, 16);
QXFAX_AT(FaxString, Text, 0);
QXFAX_AT(FaxString, Id, 8);
QXFAX_SIZE(FaxString, 16);
QXFAX_AT(FaxStringTable, Capacity, 0);
QXFAX_AT(FaxStringTable, Count, 4);
QXFAX_AT(FaxStringTable, Items, 8);
QXFAX_SIZE(FaxStringTable, 16);
QXFAX_AT(FaxJobData, hDefaultKey, 0);
QXFAX_AT(FaxJobData, hAddressBookKey, 8);
QXFAX_AT(FaxJobData, hJobDataKey, 16);
QXFAX_AT(FaxJobData, hBidiInfoKey, 24);
QXFAX_AT(FaxJobData, hMruListKey, 32);
QXFAX_AT(FaxJobData, PrinterHandle, 40);
QXFAX_AT(FaxJobData, SenderName, 48);
QXFAX_AT(FaxJobData, SenderCompany, 56);
QXFAX_AT(FaxJobData, SenderFaxNo, 64);
QXFAX_AT(FaxJobData, SenderVoiceNo, 72);
QXFAX_AT(FaxJobData, Resolution, 80);
QXFAX_AT(FaxJobData, NotifyOn, 84);
QXFAX_AT(FaxJobData, NotifyMethod, 88);
QXFAX_AT(FaxJobData, NotifyEmail, 96);
QXFAX_AT(FaxJobData, AddCoverPage, 104);
QXFAX_AT(FaxJobData, CoverPageNotes, 112);
QXFAX_AT(FaxJobData, CoverPageSubject, 120);
QXFAX_AT(FaxJobData, OverlayPath, 128);
QXFAX_AT(FaxJobData, BillingCode, 136);
QXFAX_AT(FaxJobData, BillingCodeMinLength, 144);
QXFAX_AT(FaxJobData, ShowPreview, 148);
QXFAX_AT(FaxJobData, PcFaxSendOperational, 152);
QXFAX_AT(FaxJobData, BillingCodeEnabled, 156);
QXFAX_AT(FaxJobData, NotificationAvailable, 160);
QXFAX_AT(FaxJobData, EmailServiceOperational, 164);
QXFAX_AT(FaxJobData, Reserved1, 168);
QXFAX_AT(FaxJobData, DefaultsSaved, 172);
QXFAX_AT(FaxJobData, Reserved2, 176);
QXFAX_AT(FaxJobData, ApplyDefaults, 180);
QXFAX_AT(FaxJobData, Reserved3, 184);
QXFAX_AT(FaxJobData, CoverPageLock, 200);
QXFAX_AT(FaxJobData, DefaultOverlayPath, 208);
QXFAX_AT(FaxJobData, Recipients, 216);
QXFAX_AT(FaxJobData, RecipientCount, 232);
QXFAX_AT(FaxJobData, PrinterHandleCopy, 240);
QXFAX_AT(FaxJobData, Title, 248);
QXFAX_AT(FaxJobData, Cancelled, 256);
QXFAX_AT(FaxJobData, CoverPageFromDefaults, 260);
QXFAX_AT(FaxJobData, Strings, 264);
QXFAX_SIZE(FaxJobData, 280);
#undef QXFAX_SIZE
#undef QXFAX_AT
#undef QXFAX_ASSERT

#endif
