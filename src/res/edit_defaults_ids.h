// The Edit Defaults dialog. Right-to-left systems open the twin.
#pragma once

#include "cover_page_ids.h"
#include "send_settings_ids.h"

#define IDD_EDIT_DEFAULTS 208
#define IDD_EDIT_DEFAULTS_RTL 209

#define IDC_APPLY_GROUP 248
#define IDC_APPLY_DEFAULTS 294
