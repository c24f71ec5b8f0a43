// Map Custom Fields: the template and its right-to-left twin, and their controls.
#pragma once

#define IDD_MAP_CUSTOM_FIELDS 217
#define IDD_MAP_CUSTOM_FIELDS_RTL 218

#define IDC_MAP_SOURCE_BOX (-1)
#define IDC_MAP_SOURCE_FIELDS 302
#define IDC_MAP_DESTINATIONS 303
#define IDC_MAP_DESTINATION_BOX 311
#define IDC_MAP 312
#define IDC_MAP_SOURCE_LABEL 313
#define IDC_MAP_DESTINATION_LABEL 314
#define IDC_MAP_INSTRUCTION 315
#define IDC_MAP_FILE_NAME 316
