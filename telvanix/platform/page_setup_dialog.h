// The page-setup dialog, reduced to what a library without a user interface
// can do: its return-default mode, which describes the system's default paper
// (from libpaper when it is installed, else PAPERSIZE, PAPERCONF or
// /etc/papersize, else US Letter) without showing anything.
#pragma once

#include "telvanix/platform/win_records.h"

namespace telvanix {

// With PSD_RETURNDEFAULT set and both handles null: fills the paper size
// (in the record's unit; when it names none, the paper's own unit flag is
// added), one-inch margins, zero minimum margins, and new DEVMODEA and
// DEVNAMES blocks that the caller frees with GlobalFree; returns TRUE.
// Anything else (null record, wrong lStructSize, handles already set, or a
// request to show the dialog) returns FALSE and changes nothing.
TELVANIX_API BOOL PageSetupDlgA(PAGESETUPDLGA* record);

// The system's default paper as PageSetupDlgA reports it.
struct SystemPaper {
  char name[CCHFORMNAME];  // form name, e.g. "Letter", "A4"
  SHORT paperCode;         // DMPAPER_* value, DMPAPER_USER when unlisted
  LONG width;              // in `metric` ? hundredths of mm : thousandths of inch
  LONG height;
  bool metric;
};
TELVANIX_API void GetSystemDefaultPaper(SystemPaper& paper);

}  // namespace telvanix
