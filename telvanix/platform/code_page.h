// The process-wide active ANSI code page, the double-byte lead-byte test, and
// conversion between code pages and UTF-8. Text is bytes in the active code
// page; when it is a double-byte one (932, 936, 949, 950) a lead byte and its
// trail byte are never cut apart. Pages that declare their own charset are
// read in it for the Unicode text path, which gives UTF-8.
#pragma once

#include <cstddef>
#include <string>

#include "telvanix/platform/export.h"
#include "telvanix/platform/types.h"

namespace telvanix {

constexpr UINT CP_ACP = 0;  // "the active code page" where a code page is asked for
constexpr UINT CP_UTF8 = 65001;
constexpr UINT kDefaultCodePage = 1252;

// The active code page: the last one set, else TELVANIX_CODEPAGE (read once,
// by CodePageFromName), else 1252. A TELVANIX_CODEPAGE that names no valid
// code page is ignored here; hosts and the tool refuse it up front with
// GetCodePageEnvironmentError.
TELVANIX_API UINT GetActiveCodePage();
// Sets the active code page for the whole process and gives the previous
// one; 0 returns to the environment's choice or the default.
TELVANIX_API UINT SetActiveCodePage(UINT codePage);

// A code page from its name: a number ("1252"), "cp1252", "windows-1252", or
// a charset label as pages declare it ("utf-8", "iso-8859-1", "shift_jis",
// "gb2312", ...; letter case is ignored). Labels follow what browsers do, so
// "iso-8859-1" and "us-ascii" are read as 1252. 0 when the name is unknown or
// the code page cannot be converted here.
TELVANIX_API UINT CodePageFromName(const char* name);

// TRUE when text in the code page can be converted to and from UTF-8: 1252,
// 65001, and every code page the system's converters know.
TELVANIX_API BOOL IsValidCodePage(UINT codePage);

// Null when TELVANIX_CODEPAGE is unset or names a valid code page; otherwise
// a one-line reason ("unknown code page 'bogus' in TELVANIX_CODEPAGE").
TELVANIX_API const char* GetCodePageEnvironmentError();

// Appends `length` bytes of text in `codePage` (CP_ACP: the active one) to
// `utf8`. A byte sequence that is not valid in the code page becomes U+FFFD;
// a zero byte stays a zero. false (nothing appended) for an invalid code page.
TELVANIX_API bool CodePageToUtf8(UINT codePage, const char* bytes, std::size_t length, std::string& utf8);

// Called for a character the target code page cannot hold: appends its
// replacement to `out`.
using UnmappableCharHandler = void (*)(char32_t ch, std::string& out);

// Appends UTF-8 text as bytes of `codePage` (CP_ACP: the active one) to
// `bytes`. Bytes that are not valid UTF-8 are taken as U+FFFD. A character
// the code page cannot hold goes to `unmappable` (null: "?" is written).
// false (nothing appended) for an invalid code page.
TELVANIX_API bool Utf8ToCodePage(UINT codePage, const char* utf8, std::size_t length, std::string& bytes,
                                 UnmappableCharHandler unmappable = nullptr);

// Appends one character as UTF-8; a surrogate or a value past U+10FFFF is
// written as U+FFFD.
TELVANIX_API void AppendUtf8(std::string& out, char32_t ch);

// Whether the bytes are well-formed UTF-8: no stray continuation byte, no
// overlong form, no surrogate, nothing past U+10FFFF.
TELVANIX_API bool IsValidUtf8(const char* text, std::size_t length);

// The Unicode character of a Windows-1252 byte (0x80-0x9F are punctuation
// there; the five unassigned bytes keep their own value).
TELVANIX_API char32_t Cp1252ToUnicode(BYTE ch);

// TRUE for the double-byte code pages whose lead bytes the library knows.
TELVANIX_API BOOL IsDBCSCodePage(UINT codePage);
// TRUE when ch starts a two-byte character in the active code page.
TELVANIX_API BOOL IsDBCSLeadByte(BYTE ch);
// As IsDBCSLeadByte for a given code page (CP_ACP: the active one).
TELVANIX_API BOOL IsDBCSLeadByteEx(UINT codePage, BYTE ch);

}  // namespace telvanix
