// The Setup page. Right-to-left systems open the twin.
#pragma once

#include "send_settings_ids.h"

#define IDD_SETUP_PAGE 202
#define IDD_SETUP_PAGE_RTL 205

#define IDC_EDIT_DEFAULTS 279
#define IDC_EDIT_PHONE_BOOK 283
