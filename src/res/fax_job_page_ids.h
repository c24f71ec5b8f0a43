// The Fax Job page. Right-to-left systems open the twin.
#pragma once

#include "cover_page_ids.h"

#define IDD_FAX_JOB_PAGE 201
#define IDD_FAX_JOB_PAGE_RTL 204

#define IDC_FAX_TO_GROUP 274
#define IDC_NAME_LABEL 270
#define IDC_NAME_BOX 301
#define IDC_PHONE_BOOK 271
#define IDC_FAX_NUMBER_LABEL 268
#define IDC_REQUIRED 277
#define IDC_FAX_NUMBER 262
#define IDC_GROUP_TEXT 264
#define IDC_COMPANY_LABEL 267
#define IDC_COMPANY 263
#define IDC_ADD_TO_PHONE_BOOK 273
#define IDC_CLEAR_FIELDS 272
#define IDC_TO 209
#define IDC_RECIPIENTS_LABEL 212
#define IDC_RECIPIENT_COUNT 278
#define IDC_RECIPIENTS 253
#define IDC_DELETE 256
#define IDC_BILLING_GROUP 218
#define IDC_BILLING_LABEL 219
#define IDC_BILLING_CODE 276
