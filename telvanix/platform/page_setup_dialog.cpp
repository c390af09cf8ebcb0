// Return-default page setup: the system's default paper as a page-setup
// record. libpaper is loaded at run time when present, so the library never
// depends on it at build time.
#include "telvanix/platform/page_setup_dialog.h"

#include <dlfcn.h>
#include <strings.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <string>

namespace telvanix {

namespace {

struct PaperRow {
  const char* key;   // name as the paper configuration writes it
  const char* form;  // form name as a printer reports it
  SHORT code;
  LONG width;        // thousandths of inch, or hundredths of mm when metric
  LONG height;
  bool metric;
};

const PaperRow kPapers[] = {
    {"letter", "Letter", DMPAPER_LETTER, 8500, 11000, false},
    {"legal", "Legal", DMPAPER_LEGAL, 8500, 14000, false},
    {"executive", "Executive", DMPAPER_EXECUTIVE, 7250, 10500, false},
    {"tabloid", "Tabloid", DMPAPER_TABLOID, 11000, 17000, false},
    {"ledger", "Ledger", DMPAPER_LEDGER, 17000, 11000, false},
    {"statement", "Statement", DMPAPER_STATEMENT, 5500, 8500, false},
    {"halfletter", "Statement", DMPAPER_STATEMENT, 5500, 8500, false},
    {"a3", "A3", DMPAPER_A3, 29700, 42000, true},
    {"a4", "A4", DMPAPER_A4, 21000, 29700, true},
    {"a5", "A5", DMPAPER_A5, 14800, 21000, true},
    {"b5", "B5 (ISO)", DMPAPER_ISO_B5, 17600, 25000, true},
};

const PaperRow* FindPaper(const char* name) {
  if (!name) {
    return nullptr;
  }
  for (const PaperRow& row : kPapers) {
    if (strcasecmp(row.key, name) == 0) {
      return &row;
    }
  }
  return nullptr;
}

std::string Trimmed(const char* text) {
  std::string s = text ? text : "";
  const char* blanks = " \t\r\n";
  std::size_t first = s.find_first_not_of(blanks);
  if (first == std::string::npos) {
    return std::string();
  }
  std::size_t last = s.find_last_not_of(blanks);
  return s.substr(first, last - first + 1);
}

// First line of a paper configuration file that is not blank or a comment.
std::string ReadPaperFile(const char* path) {
  std::FILE* file = std::fopen(path, "r");
  if (!file) {
    return std::string();
  }
  std::string found;
  char line[256];
  while (std::fgets(line, sizeof(line), file)) {
    std::string name = Trimmed(line);
    if (!name.empty() && name[0] != '#') {
      found = name;
      break;
    }
  }
  std::fclose(file);
  return found;
}

// libpaper's interface, the part shared by its releases 1 and 2.
struct PaperLibrary {
  void* handle = nullptr;
  bool ownsNames = false;  // release 1 hands out malloc'd names
  const char* (*systempapername)() = nullptr;
  const void* (*paperinfo)(const char*) = nullptr;
  double (*paperpswidth)(const void*) = nullptr;
  double (*paperpsheight)(const void*) = nullptr;
};

const PaperRow* ResolveWithoutLibrary(std::string& name) {
  name = Trimmed(std::getenv("PAPERSIZE"));
  if (name.empty()) {
    const char* conf = std::getenv("PAPERCONF");
    if (conf && *conf) {
      name = ReadPaperFile(conf);
    }
  }
  if (name.empty()) {
    name = ReadPaperFile("/etc/papersize");
  }
  return FindPaper(name.c_str());
}

PaperLibrary& LoadPaperLibrary() {
  static PaperLibrary library;
  static std::once_flag once;
  std::call_once(once, [] {
    const char* sonames[] = {"libpaper.so.2", "libpaper.so.1"};
    for (const char* soname : sonames) {
      void* handle = dlopen(soname, RTLD_NOW | RTLD_LOCAL);
      if (!handle) {
        continue;
      }
      auto name = reinterpret_cast<const char* (*)()>(dlsym(handle, "systempapername"));
      if (!name) {
        dlclose(handle);
        continue;
      }
      library.handle = handle;
      library.ownsNames = std::strcmp(soname, "libpaper.so.1") == 0;
      library.systempapername = name;
      library.paperinfo = reinterpret_cast<const void* (*)(const char*)>(dlsym(handle, "paperinfo"));
      library.paperpswidth = reinterpret_cast<double (*)(const void*)>(dlsym(handle, "paperpswidth"));
      library.paperpsheight = reinterpret_cast<double (*)(const void*)>(dlsym(handle, "paperpsheight"));
      if (auto init = reinterpret_cast<void (*)()>(dlsym(handle, "paperinit"))) {
        init();
      }
      break;
    }
  });
  return library;
}

void SetPaper(SystemPaper& paper, const PaperRow& row) {
  std::memset(paper.name, 0, sizeof(paper.name));
  std::strncpy(paper.name, row.form, sizeof(paper.name) - 1);
  paper.paperCode = row.code;
  paper.width = row.width;
  paper.height = row.height;
  paper.metric = row.metric;
}

}  // namespace

void GetSystemDefaultPaper(SystemPaper& paper) {
  SetPaper(paper, kPapers[0]);
  PaperLibrary& library = LoadPaperLibrary();
  if (!library.handle) {
    std::string name;
    if (const PaperRow* row = ResolveWithoutLibrary(name)) {
      SetPaper(paper, *row);
    }
    return;
  }

  // libpaper is not documented as thread-safe; one caller at a time.
  static std::mutex libraryLock;
  std::lock_guard<std::mutex> guard(libraryLock);
  const char* raw = library.systempapername();
  std::string name = Trimmed(raw);
  if (raw && library.ownsNames) {
    std::free(const_cast<char*>(raw));
  }
  if (const PaperRow* row = FindPaper(name.c_str())) {
    SetPaper(paper, *row);
    return;
  }
  if (name.empty() || !library.paperinfo || !library.paperpswidth || !library.paperpsheight) {
    return;
  }
  const void* info = library.paperinfo(name.c_str());
  if (!info) {
    return;
  }
  // Sizes come in PostScript points; an unlisted paper is described in inches.
  double width = library.paperpswidth(info);
  double height = library.paperpsheight(info);
  if (!(width > 0 && height > 0 && width < 14400 && height < 14400)) {
    return;
  }
  std::memset(paper.name, 0, sizeof(paper.name));
  std::strncpy(paper.name, name.c_str(), sizeof(paper.name) - 1);
  paper.paperCode = DMPAPER_USER;
  paper.width = static_cast<LONG>(width * 1000.0 / 72.0 + 0.5);
  paper.height = static_cast<LONG>(height * 1000.0 / 72.0 + 0.5);
  paper.metric = false;
}

namespace {

// Tenths of a millimetre, the printer mode's unit, from either paper unit.
SHORT ToTenthsOfMillimetre(LONG value, bool metric) {
  long tenths = metric ? (value + 5) / 10 : (static_cast<long>(value) * 254 + 500) / 1000;
  return static_cast<SHORT>(tenths > 32767 ? 32767 : tenths);
}

LONG ToRecordUnit(LONG value, bool metric, bool wantMetric) {
  if (metric == wantMetric) {
    return value;
  }
  if (wantMetric) {
    return static_cast<LONG>((static_cast<long>(value) * 254 + 50) / 100);
  }
  return static_cast<LONG>((static_cast<long>(value) * 100 + 127) / 254);
}

HGLOBAL NewDevMode(const SystemPaper& paper) {
  HGLOBAL block = GlobalAlloc(GHND, sizeof(DEVMODEA));
  auto* mode = static_cast<DEVMODEA*>(GlobalLock(block));
  if (!mode) {
    GlobalFree(block);
    return nullptr;
  }
  mode->dmSpecVersion = DM_SPECVERSION;
  mode->dmSize = sizeof(DEVMODEA);
  mode->dmFields = DM_ORIENTATION | DM_PAPERSIZE | DM_PAPERLENGTH | DM_PAPERWIDTH | DM_FORMNAME;
  mode->dmOrientation = DMORIENT_PORTRAIT;
  mode->dmPaperSize = paper.paperCode;
  mode->dmPaperWidth = ToTenthsOfMillimetre(paper.width, paper.metric);
  mode->dmPaperLength = ToTenthsOfMillimetre(paper.height, paper.metric);
  mode->dmScale = 100;
  mode->dmCopies = 1;
  std::memcpy(mode->dmFormName, paper.name, sizeof(mode->dmFormName) - 1);
  GlobalUnlock(block);
  return block;
}

// No printer is known by name here: driver, device and output are empty.
HGLOBAL NewDevNames() {
  const WORD firstName = sizeof(DEVNAMES);
  HGLOBAL block = GlobalAlloc(GHND, sizeof(DEVNAMES) + 3);
  auto* names = static_cast<DEVNAMES*>(GlobalLock(block));
  if (!names) {
    GlobalFree(block);
    return nullptr;
  }
  names->wDriverOffset = firstName;
  names->wDeviceOffset = firstName + 1;
  names->wOutputOffset = firstName + 2;
  names->wDefault = DN_DEFAULTPRN;
  GlobalUnlock(block);
  return block;
}

}  // namespace

BOOL PageSetupDlgA(PAGESETUPDLGA* record) {
  if (!record || record->lStructSize != sizeof(PAGESETUPDLGA)) {
    return FALSE;
  }
  // There is no dialog to show; only the defaults can be reported.
  if (!(record->Flags & PSD_RETURNDEFAULT) || record->hDevMode || record->hDevNames) {
    return FALSE;
  }
  try {
    SystemPaper paper;
    GetSystemDefaultPaper(paper);
    HGLOBAL mode = NewDevMode(paper);
    HGLOBAL names = NewDevNames();
    if (!mode || !names) {
      GlobalFree(mode);
      GlobalFree(names);
      return FALSE;
    }
    if (!(record->Flags & (PSD_INTHOUSANDTHSOFINCHES | PSD_INHUNDREDTHSOFMILLIMETERS))) {
      record->Flags |= paper.metric ? PSD_INHUNDREDTHSOFMILLIMETERS : PSD_INTHOUSANDTHSOFINCHES;
    }
    bool wantMetric = !(record->Flags & PSD_INTHOUSANDTHSOFINCHES);
    LONG inch = wantMetric ? 2540 : 1000;
    record->hDevMode = mode;
    record->hDevNames = names;
    record->ptPaperSize.x = ToRecordUnit(paper.width, paper.metric, wantMetric);
    record->ptPaperSize.y = ToRecordUnit(paper.height, paper.metric, wantMetric);
    record->rtMinMargin = RECT{0, 0, 0, 0};
    record->rtMargin = RECT{inch, inch, inch, inch};
    return TRUE;
  } catch (...) {
    return FALSE;
  }
}

}  // namespace telvanix
