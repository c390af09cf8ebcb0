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

// Where the "?query#fragment" of HTML text begins: the first "?" or a "#"
// that does not open a numeric character reference.
size_t RestStart(const std::string& written) {
  for (size_t i = 0; i < written.size(); ++i)
    if (written[i] == '?' || (written[i] == '#' && (i == 0 || written[i - 1] != '&')))
      return i;
  return written.size();
}

// Character references decoded; most references hold none.
CString Decoded(const char* text) {
  return text && std::strchr(text, '&') ? CHtmlPack::HtmlToText(text) : CString(text);
}

}  // namespace

CString EncodeHtmlReferenceLike(const char* plain, const char* like, char quote) {
  try {
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
  } catch (...) {
    return CString();
  }
}

CString ResolveHtmlReference(const CFileMoves& moves, const char* written) {
  try {
    return moves.ResolveReference(Decoded(written));
  } catch (...) {
    return CString();
  }
}

CFileMoves::EmRewrite RewriteHtmlReference(const CFileMoves& moves, const char* written, char quote, int canQuote,
                                           CString& out, CString* target) {
  try {
    out.Empty();
    // The path is decoded, rewritten and encoded again; the query and the
    // fragment stay byte for byte.
    const std::string text(written ? written : "");
    const size_t cut = RestStart(text);
    const std::string path = text.substr(0, cut), rest = text.substr(cut);
    CString plain;
    const CFileMoves::EmRewrite how = moves.RewriteReference(Decoded(path.c_str()), plain, target);
    if (how != CFileMoves::emRewritten)
      return how;
    out = (EncodeHtmlReferenceLike(plain, path.c_str(), quote).str() + rest).c_str();
    // Quotes only where the new value needs them and the old one did not.
    if (!quote && canQuote && NeedsQuotes(out.str()) && !NeedsQuotes(text))
      out = ("\"" + EncodeHtmlReferenceLike(plain, path.c_str(), '"').str() + rest + "\"").c_str();
    return how;
  } catch (...) {
    return CFileMoves::emUnchanged;
  }
}

}  // namespace telvanix
