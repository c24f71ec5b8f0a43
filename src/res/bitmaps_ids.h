// Bitmaps of the module.
#pragma once

#define IDB_PHONE_BOOK 214 // 27 by 27 pixels
#define IDB_GROUP 215      // 16 by 16 pixels, magenta is transparent
