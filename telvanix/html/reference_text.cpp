#include "telvanix/html/reference_text.h"

#include <cstring>
#include <string>

#include "telvanix/html/html_pack.h"

namespace telvanix {

namespace {

// The references of `like` that stand for one byte, by that byte; and
// whether it holds an "&" that starts no reference.
struct ReferenceStyle {
  std::string byByte[256];
  bool bareAmpersand = false;
};

void ReadStyle(const char* like, ReferenceStyle& style) {
  const size_t n = std::strlen(like);
  for (size_t i = 0; i < n; ++i) {
    if (like[i] != '&')
      continue;
    size_t j = i + 1;
    while (j < n && j - i <= 32 && like[j] != ';' && like[j] != '&')
      ++j;
    if (j < n && like[j] == ';') {
      CByteString decoded;
      CHtmlPack::HtmlToText(decoded, reinterpret_cast<const unsigned char*>(like + i), static_cast<int>(j + 1 - i));
      if (decoded.GetLength() == 1) {
        const unsigned char c = decoded.GetContent()[0];
        if (style.byByte[c].empty())
          style.byByte[c].assign(like + i, j + 1 - i);
        i = j;
        continue;
      }
    }
    style.bareAmpersand = true;
  }
}

bool NeedsQuotes(const std::string& text) {
  for (char c : text)
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '>' || c == '"' || c == '\'' || c == '`' || c == '=')
      return true;
  return text.empty();
}

}  // namespace

CString EncodeHtmlReferenceLike(const char* plain, const char* like, char quote) {
  ReferenceStyle style;
  ReadStyle(like ? like : "", style);
  std::string out;
  for (const char* p = plain ? plain : ""; *p; ++p) {
    const unsigned char c = static_cast<unsigned char>(*p);
    if (!style.byByte[c].empty())
      out += style.byByte[c];
    else if (c == '&')
      out += style.bareAmpersand ? "&" : "&amp;";
    else if (quote && c == static_cast<unsigned char>(quote))
      out += quote == '"' ? "&quot;" : "&#39;";
    else
      out += static_cast<char>(c);
  }
  return CString(out.c_str());
}

CString ResolveHtmlReference(const CFileMoves& moves, const char* written) {
  return moves.ResolveReference(CHtmlPack::HtmlToText(written));
}

CFileMoves::EmRewrite RewriteHtmlReference(const CFileMoves& moves, const char* written, char quote, int canQuote,
                                           CString& out) {
  out.Empty();
  CString plain;
  const CFileMoves::EmRewrite how = moves.RewriteReference(CHtmlPack::HtmlToText(written), plain);
  if (how != CFileMoves::emRewritten)
    return how;
  out = EncodeHtmlReferenceLike(plain, written, quote);
  if (!quote && canQuote && NeedsQuotes(out.str()))
    out = ("\"" + EncodeHtmlReferenceLike(plain, written, '"').str() + "\"").c_str();
  return how;
}

}  // namespace telvanix
