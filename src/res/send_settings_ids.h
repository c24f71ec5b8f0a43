// Controls of the sender, the quality, the notification and the preview: the same on the Setup page and in the Edit
// Defaults dialog.
#pragma once

#define IDC_SENDER_GROUP 293
#define IDC_SENDER_NAME_LABEL 280
#define IDC_SENDER_NAME 261
#define IDC_SENDER_FAX_LABEL 268
#define IDC_SENDER_FAX 262
#define IDC_SENDER_COMPANY_LABEL 267
#define IDC_SENDER_COMPANY 263
#define IDC_SENDER_VOICE_LABEL 281
#define IDC_SENDER_VOICE 282

#define IDC_QUALITY_GROUP 232
#define IDC_RESOLUTION_LABEL 243
#define IDC_STANDARD 244
#define IDC_FINE 245
#define IDC_SUPERFINE 246

#define IDC_NOTIFICATION_GROUP 242
#define IDC_NOTIFY_LABEL 237
#define IDC_NOTIFY_NEVER 291
#define IDC_NOTIFY_THIS_JOB 292
#define IDC_NOTIFY_ON_ERROR 235
#define IDC_NOTIFY_TYPE_LABEL 265
#define IDC_NOTIFY_PRINT 238
#define IDC_NOTIFY_EMAIL 239
#define IDC_EMAIL_LABEL 240
#define IDC_EMAIL 241

#define IDC_PREVIEW_GROUP 247
#define IDC_PREVIEW 290
