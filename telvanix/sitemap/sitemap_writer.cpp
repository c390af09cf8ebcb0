// Printing the model as a sitemap page. The printed form is fixed down to the
// byte: hosts and help compilers compare and merge these files as text.
#include <new>

#include "telvanix/html/html_pack.h"
#include "telvanix/sitemap/file_sitemap.h"

namespace telvanix {

namespace {

constexpr int kMaxIndentLevel = 128;

int IndentWidth(int level) {
  if (level < 0)
    level = 0;
  if (level > kMaxIndentLevel)
    level = kMaxIndentLevel;
  return level * 2;
}

void AppendIndent(CByteString& out, int level) {
  static const char kSpaces[2 * kMaxIndentLevel + 1] =
      "                                                                "
      "                                                                "
      "                                                                "
      "                                                                ";
  int width = IndentWidth(level);
  if (width > 0)
    out.Append(reinterpret_cast<const unsigned char*>(kSpaces), width);
}

void AppendLine(CByteString& out, const CString& line) {
  if (!line.IsEmpty())
    out.Append(reinterpret_cast<const unsigned char*>(static_cast<const char*>(line)), line.GetLength());
}

CString Indent(int level) { return CString(' ', IndentWidth(level)); }

const char* OrEmpty(const char* text) { return text ? text : ""; }

bool HasText(const char* text) { return text && *text; }

const char* TypeInfoParamName(int type) {
  switch (type) {
    case CHtmlSiteCategoryTypeInfo::emTypeInfoInclusive:
      return "Type";
    case CHtmlSiteCategoryTypeInfo::emTypeInfoExclusive:
      return "TypeExclusive";
    case CHtmlSiteCategoryTypeInfo::emTypeInfoHidden:
      return "TypeHidden";
    default:
      return nullptr;
  }
}

}  // namespace

// --- parameter lines -------------------------------------------------------

CString CHtmlFileSitemap::DumpObjectParam(int indent, const char* name, const char* value) {
  CString line;
  line.Format("%s<param name=\"%s\" value=\"%s\">\r\n", static_cast<const char*>(Indent(indent)), OrEmpty(name),
              OrEmpty(value));
  return line;
}

CString CHtmlFileSitemap::DumpObjectParam2(int indent, const char* name, const char* value, const char* value2) {
  CString line;
  if (HasText(value) && HasText(value2))
    line.Format("%s<param name=\"%s\" value=\"%s\" value2=\"%s\">\r\n", static_cast<const char*>(Indent(indent)),
                OrEmpty(name), value, value2);
  else if (HasText(value2))
    line.Format("%s<param name=\"%s\" value2=\"%s\">\r\n", static_cast<const char*>(Indent(indent)), OrEmpty(name),
                value2);
  else
    line = DumpObjectParam(indent, name, value);
  return line;
}

CString CHtmlFileSitemap::DumpObjectParamFname(int indent, const char* name, const char* value) {
  CString line;
  if (!value) {
    line.Format("%s<param name=\"%s\">\r\n", static_cast<const char*>(Indent(indent)), OrEmpty(name));
    return line;
  }
  // Drive paths and network paths only open from a compiled help file as file URLs.
  bool drive = value[0] != '\0' && value[1] == ':';
  bool network = (value[0] == '/' && value[1] == '/') || (value[0] == '\\' && value[1] == '\\');
  if (drive || network) {
    line.Format("%s<param name=\"%s\" value=\"file://%s\">\r\n", static_cast<const char*>(Indent(indent)),
                OrEmpty(name), value);
    return line;
  }
  return DumpObjectParam(indent, name, value);
}

CString CHtmlFileSitemap::DumpObjectParamHtml(int indent, const char* name, const char* value) {
  CString encoded = CHtmlPack::TextToHtml(OrEmpty(value));
  return DumpObjectParam(indent, name, encoded);
}

CString CHtmlFileSitemap::DumpObjectParamHexValue(int indent, const char* name, DWORD number) {
  CString value;
  value.Format("0x%x", static_cast<unsigned int>(number));
  return DumpObjectParam(indent, name, value);
}

CString CHtmlFileSitemap::DumpObjectParamDecValue(int indent, const char* name, int number) {
  CString value;
  value.Format("%d", number);
  return DumpObjectParam(indent, name, value);
}

// --- the page --------------------------------------------------------------

int CHtmlFileSitemap::Write(const char* path) {
  if (!path || !*path)
    return 0;
  try {
    CByteString buffer;
    DumpSiteFile(buffer);
    return buffer.SaveToFile(path);
  } catch (...) {
    return 0;
  }
}

int CHtmlFileSitemap::Write(CByteString& out) {
  try {
    return DumpSiteFile(out);
  } catch (...) {
    out.Empty();
    return 0;
  }
}

int CHtmlFileSitemap::DumpSiteFile(CByteString& out) {
  out.Empty();
  out.SetGrowByDoubleSize();
  out += "<html>\r\n";
  DumpSiteFileHeader(out);
  DumpSiteProperties(out);
  out += "<ul>\r\n";
  int current = 1;
  for (int i = 0; i < m_arrSitemaps.GetSize(); ++i) {
    CHtmlSitemap* entry = m_arrSitemaps.GetAt(i);
    if (!entry || (entry->GetSitemapFlags() & 0x1000))
      continue;
    int level = entry->GetLevel();
    if (level >= 1) {
      while (current < level) {
        AppendIndent(out, current);
        out += "<ul>\r\n";
        ++current;
      }
      while (current > level) {
        AppendIndent(out, current);
        out += "</ul>\r\n";
        --current;
      }
    }
    AppendIndent(out, current);
    if (!entry->GetMerge())
      out += "<li>";
    DumpSitemap(out, entry, current);
  }
  while (current > 1) {
    AppendIndent(out, current);
    out += "</ul>\r\n";
    --current;
  }
  out += "</ul>\r\n";
  out += "</html>";
  return 1;
}

int CHtmlFileSitemap::DumpSiteFileHeader(CByteString& out) {
  out += "<!-- Sitemap 1.0 -->\r\n";
  if (!m_strTitle.IsEmpty()) {
    out += "<title>";
    AppendLine(out, CHtmlPack::TextToHtml(m_strTitle));
    out += "</title>\r\n";
  }
  if (!m_strBase.IsEmpty()) {
    out += "<base href=\"";
    AppendLine(out, m_strBase);
    out += "\">\r\n";
  }
  return 1;
}

int CHtmlFileSitemap::DumpSiteProperties(CByteString& out) {
  const CHtmlSiteProperties& site = m_SiteProperties;
  out += "<object type=\"text/site properties\">\r\n";
  auto text = [&out](const char* name, const char* value) {
    if (value)
      AppendLine(out, DumpObjectParam(1, name, value));
  };
  text("FrameName", site.GetFrameName());
  text("WindowName", site.GetWindowName());
  if (site.GetSiteType() == CHtmlSiteProperties::emSiteTypeContents)
    text("SiteType", "toc");
  else if (site.GetSiteType() == CHtmlSiteProperties::emSiteTypeIndex)
    text("SiteType", "index");
  text("Font", site.GetFont());
  text("Font Instructions", site.GetFontInstructions());
  text("Font Types", site.GetFontTypes());
  if (site.GetBackground() != 0xFFFFFFFF)
    AppendLine(out, DumpObjectParamHexValue(1, "Background", site.GetBackground()));
  if (site.GetForeground() != 0xFFFFFFFF)
    AppendLine(out, DumpObjectParamHexValue(1, "Foreground", site.GetForeground()));
  text("Background Image", site.GetBackgroundImage());
  text("ImageType", site.GetImageType());
  // The image count means nothing without the image list it counts.
  if (site.GetImageList()) {
    if (site.GetNumberImages() != -1)
      AppendLine(out, DumpObjectParamDecValue(1, "NumberImages", site.GetNumberImages()));
    text("ImageList", site.GetImageList());
  }
  if (site.GetImageWidth() != -1)
    AppendLine(out, DumpObjectParamDecValue(1, "Image Width", site.GetImageWidth()));
  if (site.GetWindowStyles() != 0xFFFFFFFF)
    AppendLine(out, DumpObjectParamHexValue(1, "Window Styles", site.GetWindowStyles()));
  if (site.GetExWindowStyles() != 0xFFFFFFFF)
    AppendLine(out, DumpObjectParamHexValue(1, "ExWindow Styles", site.GetExWindowStyles()));
  text("Auto Generated", site.GetAutoGenerated());
  for (int i = 0; i < site.GetInstructionArraySize(); ++i) {
    if (CHtmlSiteParamCouple* pair = site.GetInstruction(i))
      AppendLine(out, DumpObjectParam(1, "Instruction", pair->GetValue()));
  }
  for (int i = 0; i < site.GetSiteCategoryArraySize(); ++i) {
    CHtmlSiteCategory* category = site.GetSiteCategory(i);
    if (!category)
      continue;
    text("Category", category->GetName());
    text("CategoryDesc", category->GetDesc());
    for (int j = 0; j < category->GetCategoryTypeInfoArraySize(); ++j) {
      CHtmlSiteCategoryTypeInfo* info = category->GetCategoryTypeInfo(j);
      if (!info)
        continue;
      if (const char* name = TypeInfoParamName(info->GetTypeInfoType()))
        text(name, info->GetType());
      text("TypeDesc", info->GetTypeDesc());
    }
  }
  for (int i = 0; i < site.GetUnknownParamArraySize(); ++i) {
    CHtmlSiteParamCouple* pair = site.GetUnknownParam(i);
    if (pair && pair->GetName() && pair->GetValue())
      AppendLine(out, DumpObjectParam(1, pair->GetName(), pair->GetValue()));
  }
  out += "</object>\r\n";
  return 1;
}

int CHtmlFileSitemap::DumpSitemap(CByteString& out, CHtmlSitemap* sitemap, int level) {
  if (!sitemap)
    return 1;
  const int inner = level + 1;
  auto text = [&out, inner](const char* name, const char* value) {
    if (value)
      AppendLine(out, DumpObjectParam(inner, name, value));
  };
  auto fname = [&out, inner](const char* name, const char* value) {
    if (value)
      AppendLine(out, DumpObjectParamFname(inner, name, value));
  };
  auto html = [&out, inner](const char* name, const char* value) {
    if (value)
      AppendLine(out, DumpObjectParamHtml(inner, name, value));
  };

  if (const char* target = sitemap->GetTargetAttribute()) {
    // "typetype" is the form hosts already read back; it stays as it is.
    out += "<object typetype=\"text/sitemap\" target=\"";
    out += target;
    out += "\">\r\n";
  } else {
    out += "<object type=\"text/sitemap\">\r\n";
  }
  html("Name", sitemap->GetName());
  for (int i = 0; i < sitemap->GetTypeInfoArraySize(); ++i) {
    CHtmlSitemapTypeInfo* info = sitemap->GetTypeInfo(i);
    if (!info)
      continue;
    for (int j = 0; j < info->GetTypeInfoArraySize(); ++j)
      AppendLine(out, DumpObjectParam(inner, "Type", info->GetTypeInfoString(j)));
    text("Local", info->GetPrimary());
    text("Url", info->GetSecondary());
  }
  if (sitemap->GetSectionArraySize() == 0) {
    fname("Local", sitemap->GetPrimary());
    fname("URL", sitemap->GetSecondary());
    fname("Secondary", sitemap->GetThirdReference());
  } else {
    for (int i = 0; i < sitemap->GetSectionArraySize(); ++i) {
      CHtmlSitemapSection* section = sitemap->GetSection(i);
      if (!section)
        continue;
      html("Name", section->GetName());
      text("Local", section->GetPrimary());
      text("Url", section->GetSecondary());
    }
  }
  text("See Also", sitemap->GetSeeAlso());
  text("FrameName", sitemap->GetFrameName());
  text("WindowName", sitemap->GetWindowName());
  text("Comment", sitemap->GetComment());
  text("New", sitemap->GetNew());
  if (sitemap->GetMerge() || sitemap->GetMerge2())
    AppendLine(out, DumpObjectParam2(inner, "Merge", sitemap->GetMerge(), sitemap->GetMerge2()));
  text("SendEvent", sitemap->GetSendEvent());
  text("Sync", sitemap->GetSync());
  if (sitemap->GetImageNumber() != -1)
    AppendLine(out, DumpObjectParamDecValue(inner, "ImageNumber", sitemap->GetImageNumber()));
  for (int i = 0; i < sitemap->GetUnknownParamArraySize(); ++i) {
    CHtmlSiteParamCouple* pair = sitemap->GetUnknownParam(i);
    if (pair && pair->GetName() && pair->GetValue())
      AppendLine(out, DumpObjectParam(inner, pair->GetName(), pair->GetValue()));
  }
  AppendIndent(out, level);
  out += "</object>\r\n";
  return 1;
}

}  // namespace telvanix
