// CHtmlPack: the document pack that loads, parses and saves one page, and
// the character-entity conversion between raw HTML text (bytes with
// references such as "&eacute;") and decoded 16-bit text.
#pragma once

#include "telvanix/foundation/byte_string.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

// One named character reference. `code` is a Windows-1252 byte value, not a
// Unicode code point; `hash` is filled when the table is prepared.
struct TagHtmlCharEntity {
  const char* name;
  DWORD hash;
  WORD code;
};

class TELVANIX_API CHtmlPack {
 public:
  // The 128 named references, sorted by hash once prepared.
  static TagHtmlCharEntity ms_tTagHtmlCharTable[128];
  // 0 until InitializeHtmlCharTable has run, then 128.
  static int ms_nHtmlCharTableSize;

  // Hashes and sorts the table once; later calls return 1 at once. Safe to
  // call from several threads (the library also calls it while loading).
  static int InitializeHtmlCharTable();

  // Decodes references into one unit per character. length -1 reads to the
  // terminating zero. With mark 1 a character below 256 that came from a
  // reference gets 0xFF in its high byte, so TextToHtml writes it back as a
  // reference. 0 for null text.
  static int HtmlToText(CWordString& out, const unsigned char* text, int length, int mark);
  // Decodes (no marks) and narrows to bytes; a unit of 255 or more looks at
  // the unit after it to pick a Windows-1252 punctuation byte.
  static int HtmlToText(CByteString& out, const unsigned char* text, int length);
  // The byte form of the decoded text; empty for null.
  static CString HtmlToText(const char* text);

  // Appends the HTML-safe form of the units to out. length -1 reads to the
  // zero unit; a length below 1 appends nothing and gives 1. 0 for null text.
  static int TextToHtml(CByteString& out, const unsigned short* text, int length);
  // Widens the bytes one to one (nothing marked) and encodes them.
  static int TextToHtml(CByteString& out, const unsigned char* text, int length);
  static CString TextToHtml(const char* text);

  // (document loading, parsing and saving members are declared below)
};

}  // namespace telvanix
