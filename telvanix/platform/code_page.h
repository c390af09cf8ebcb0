// The process-wide active ANSI code page and the double-byte lead-byte test.
// Text is bytes in this code page; when it is a double-byte one (932, 936,
// 949, 950) a lead byte and its trail byte are never cut apart.
#pragma once

#include "telvanix/platform/export.h"
#include "telvanix/platform/types.h"

namespace telvanix {

constexpr UINT CP_ACP = 0;  // "the active code page" where a code page is asked for
constexpr UINT kDefaultCodePage = 1252;

// The active code page: the last one set, else TELVANIX_CODEPAGE (read once,
// as "932", "cp932" or "windows-932"), else 1252.
TELVANIX_API UINT GetActiveCodePage();
// Sets the active code page for the whole process and gives the previous
// one; 0 returns to the environment's choice or the default.
TELVANIX_API UINT SetActiveCodePage(UINT codePage);

// TRUE for the double-byte code pages whose lead bytes the library knows.
TELVANIX_API BOOL IsDBCSCodePage(UINT codePage);
// TRUE when ch starts a two-byte character in the active code page.
TELVANIX_API BOOL IsDBCSLeadByte(BYTE ch);
// As IsDBCSLeadByte for a given code page (CP_ACP: the active one).
TELVANIX_API BOOL IsDBCSLeadByteEx(UINT codePage, BYTE ch);

}  // namespace telvanix
