// Controls of the cover page, the same on the Fax Job page and in the Edit Defaults dialog.
#pragma once

#define IDC_COVER_PAGE_GROUP 275
#define IDC_COVER_PAGE 215
#define IDC_NOTES_LABEL 216
#define IDC_NOTES 217
#define IDC_SUBJECT_LABEL 226
#define IDC_SUBJECT 225
#define IDC_IMAGE_LABEL 260
#define IDC_IMAGE 266
#define IDC_BROWSE 224
