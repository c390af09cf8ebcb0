#include "cli/attribute_text.h"

#include <strings.h>

#include <cstring>

#include "telvanix/html/html_pack.h"
#include "cli/page_files.h"
#include "telvanix/platform/code_page.h"
#include "telvanix/sitemap/file_sitemap.h"
#include "telvanix/topic/html_file_ex.h"

namespace telvanix::tool {

namespace {

void AppendNumericReference(char32_t ch, std::string& out) { out += "&#" + std::to_string(ch) + ";"; }

}  // namespace

UINT PageCodePage(CHtmlFileEx& doc) { return doc.GetPageCodePage(); }

UINT SitemapCodePage(CByteString& bytes, const char* name) {
  CHtmlPack pack(bytes, name);
  return pack.Parse(CHtmlPack::emParseAttributes) ? pack.GetPageCodePage() : GetActiveCodePage();
}

bool ReadSitemapAsUtf8(const std::string& file, CHtmlFileSitemap& sitemap, std::string& error, bool emptyIsRead) {
  CByteString bytes;
  if (!LoadPage(file, bytes, error)) return false;
  std::string utf8;
  if (!CodePageToUtf8(SitemapCodePage(bytes, file.c_str()), bytes, static_cast<size_t>(bytes.GetLength()), utf8)) {
    error = file + ": cannot be read in its charset";
    return false;
  }
  CByteString text(reinterpret_cast<const unsigned char*>(utf8.data()), static_cast<int>(utf8.size()));
  const UINT previous = SetActiveCodePage(CP_UTF8);
  const int read = sitemap.Read(text);
  SetActiveCodePage(previous);
  if (!read && (bytes.GetLength() > 0 || !emptyIsRead)) {
    error = file + ": not a contents or index file (no entries could be read)";
    return false;
  }
  return true;
}

std::string PageTextToUtf8(const char* text, UINT codePage) {
  std::string out;
  if (text && !CodePageToUtf8(codePage, text, std::strlen(text), out)) out = text;
  return out;
}

std::string Utf8ToPageText(const std::string& utf8, UINT codePage) {
  std::string bytes;
  return Utf8ToCodePage(codePage, utf8.data(), utf8.size(), bytes, AppendNumericReference) ? bytes : utf8;
}

std::string ToAttributeValue(const std::string& utf8, UINT codePage) {
  std::string escaped;
  for (char c : utf8) {
    switch (c) {
      case '"': escaped += "&quot;"; break;
      case '&': escaped += "&amp;"; break;
      case '<': escaped += "&lt;"; break;
      case '>': escaped += "&gt;"; break;
      default: escaped += c;
    }
  }
  return Utf8ToPageText(escaped, codePage);
}

std::string AttributeValueToUtf8(const char* value, UINT codePage) {
  std::string out;
  if (value) CHtmlPack::HtmlToUtf8(out, reinterpret_cast<const unsigned char*>(value), -1, codePage);
  return out;
}

CHtmlTagItem* FindMeta(CHtmlFileEx& doc, const char* name) {
  const auto& metas = doc.GetMetaPositions();
  for (int i = 0; i < metas.GetSize(); ++i) {
    CHtmlTagItem* meta = doc.GetTokenList()->GetTagItem(metas[i]);
    const char* metaName = meta && !meta->IsDiscardedToken() ? meta->GetAttributeValue("name") : nullptr;
    if (metaName && strcasecmp(metaName, name) == 0) return meta;
  }
  return nullptr;
}

}  // namespace telvanix::tool
