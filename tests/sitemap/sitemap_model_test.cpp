#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <set>
#include <string>

#include "sitemap/sitemap_dump.h"
#include "telvanix/sitemap/file_sitemap.h"

using namespace telvanix;
using telvanix::test::DumpSitemapModel;

namespace {

TEST(SitemapEntry, NullSetterKeepsTextEmptySetterClearsIt) {
  CHtmlSitemap entry;
  struct Field {
    int (CHtmlSitemap::*set)(const char*);
    const char* (CHtmlSitemap::*get)() const;
  };
  using E = CHtmlSitemap;
  const Field fields[] = {
      {&E::SetName, &E::GetName}, {&E::SetFrameName, &E::GetFrameName}, {&E::SetWindowName, &E::GetWindowName},
      {&E::SetComment, &E::GetComment}, {&E::SetNew, &E::GetNew}, {&E::SetMerge, &E::GetMerge},
      {&E::SetMerge2, &E::GetMerge2}, {&E::SetSendEvent, &E::GetSendEvent}, {&E::SetSeeAlso, &E::GetSeeAlso},
      {&E::SetSync, &E::GetSync}, {&E::SetPrimary, &E::GetPrimary}, {&E::SetSecondary, &E::GetSecondary},
      {&E::SetThirdReference, &E::GetThirdReference}, {&E::SetTargetAttribute, &E::GetTargetAttribute},
  };
  for (const Field& f : fields) {
    EXPECT_EQ((entry.*f.set)("kept"), 1);
    EXPECT_EQ((entry.*f.set)(nullptr), 0);
    EXPECT_STREQ((entry.*f.get)(), "kept");
    EXPECT_EQ((entry.*f.set)(""), 1);
    EXPECT_EQ((entry.*f.get)(), nullptr);
  }
}

TEST(SitemapEntry, SectionsAndTypeInfo) {
  CHtmlSitemap entry;
  EXPECT_EQ(entry.GetSection(0), nullptr);
  EXPECT_EQ(entry.GetTypeInfo(-1), nullptr);
  EXPECT_EQ(entry.GetUnknownParam(0), nullptr);

  CHtmlSitemapSection section("n", nullptr, "b.htm");
  EXPECT_STREQ(section.GetPrimary(), "b.htm");
  EXPECT_STREQ(section.GetSecondary(), "b.htm");
  section.SetPrimary("a.htm");
  EXPECT_STREQ(section.GetPrimary(), "a.htm");
  EXPECT_EQ(section.SetName(nullptr), 0);
  EXPECT_STREQ(section.GetName(), "n");

  CHtmlSitemapTypeInfo info;
  EXPECT_EQ(info.AddTypeInfo(nullptr), 0);
  info.AddTypeInfo("beginner");
  info.AddTypeInfo("");
  EXPECT_EQ(info.GetTypeInfoArraySize(), 2);
  EXPECT_STREQ(info.GetTypeInfoString(0), "beginner");
  EXPECT_STREQ(info.GetTypeInfoString(1), "");
  EXPECT_STREQ(info.GetTypeInfoString(2), "");
  EXPECT_STREQ(info.GetTypeInfoString(-1), "");
  info.SetSecondary("s.htm");
  EXPECT_STREQ(info.GetPrimary(), "s.htm");
}

// A file holding a copy of one entry, or of site properties, as the dump prints it.
std::string Held(const CHtmlSitemap& entry) {
  CHtmlFileSitemap file;
  file.AddSitemap(new CHtmlSitemap(entry));
  return DumpSitemapModel(file);
}
std::string Held(const CHtmlSiteProperties& site) {
  CHtmlFileSitemap file;
  *file.GetSiteProperties() = site;
  return DumpSitemapModel(file);
}

// Copies (constructed or assigned) keep what the source held when copied,
// whatever is changed in the source afterwards; Default empties.
TEST(SitemapModel, CopiesAreDeepAndDefaultResets) {
  CHtmlFileSitemap file;
  EXPECT_EQ(file.AddSitemap(nullptr), -1);
  auto* entry = new CHtmlSitemap;
  entry->SetName("kw");
  entry->SetLevel(2);
  entry->AddSection("s", "a.htm");
  auto* info = new CHtmlSitemapTypeInfo;
  info->AddTypeInfo("t");
  entry->AddTypeInfo(info);
  entry->AddUnknownParam("X", "1");
  EXPECT_EQ(entry->AddUnknownParam(nullptr, "1"), 0);
  EXPECT_EQ(entry->AddSection(nullptr), -1);
  EXPECT_EQ(file.AddSitemap(entry), 0);
  file.SetTitle("T");
  file.AddNeedWindowName("w");
  CHtmlSiteProperties& site = *file.GetSiteProperties();
  site.SetSiteType(CHtmlSiteProperties::emSiteTypeIndex);
  site.SetBackground(0x123456);
  site.SetImageList("a.bmp");
  site.SetFont("Arial,8,0");
  auto* category = new CHtmlSiteCategory("Level", "How hard");
  category->AddCategoryTypeInfo(new CHtmlSiteCategoryTypeInfo(CHtmlSiteCategoryTypeInfo::emTypeInfoHidden, "x", "d"));
  site.AddSiteCategory(category);
  site.AddInstruction("Instruction", "i1");
  site.AddUnknownParam("U", "v");

  const std::string before = DumpSitemapModel(file), entryBefore = Held(*entry), siteBefore = Held(site);
  CHtmlFileSitemap copy(file);
  CHtmlSitemap entryCopy(*entry), assigned;
  assigned.AddSection("old", "old.htm");
  assigned = entryCopy;
  CHtmlSitemap& self = assigned;  // through a reference: self-assignment on purpose
  assigned = self;
  CHtmlSiteProperties siteCopy(site);
  CHtmlSiteCategory categoryCopy;
  categoryCopy = *category;
  EXPECT_NE(copy.GetSitemap(0), entry);

  entry->GetSection(0)->SetPrimary("changed.htm");
  entry->GetTypeInfo(0)->AddTypeInfo("u");
  entry->GetUnknownParam(0)->SetValue("2");
  entry->SetName("other");
  category->SetName("changed");
  category->GetCategoryTypeInfo(0)->SetType("changed");
  category->GetCategoryTypeInfo(0)->SetTypeDesc("changed");
  site.GetInstruction(0)->SetValue("changed");
  EXPECT_EQ(DumpSitemapModel(copy), before);
  EXPECT_EQ(Held(entryCopy), entryBefore);
  EXPECT_EQ(Held(assigned), entryBefore);
  EXPECT_EQ(Held(siteCopy), siteBefore);
  EXPECT_STREQ(categoryCopy.GetCategoryTypeInfo(0)->GetTypeDesc(), "d");
  EXPECT_EQ(copy.GetSitemap(1), nullptr);
  EXPECT_EQ(siteCopy.GetSiteCategory(1), nullptr);

  assigned.Default();
  EXPECT_EQ(assigned.GetLevel(), -1);
  EXPECT_EQ(Held(assigned), Held(CHtmlSitemap()));
  site.Default();
  EXPECT_EQ(site.GetBackground(), 0xFFFFFFFFu);
  EXPECT_EQ(Held(site), Held(CHtmlSiteProperties()));
  file.Default();
  EXPECT_EQ(DumpSitemapModel(file), "");
}

TEST(SiteParamTable, EveryRowIsFoundByItsNameInAnyCaseAndNamesAreUnique) {
  const int size = CHtmlFileSitemap::ms_nSiteParamTableSize;
  EXPECT_EQ(size, static_cast<int>(std::size(CHtmlFileSitemap::ms_tSiteParamTable)));
  CHtmlFileSitemap::GetSiteParamCode("Name");  // the first lookup may reorder the rows
  std::set<std::string> names;
  for (int i = 0; i < size; ++i) {
    const QuickMapStringToValueItem& row = CHtmlFileSitemap::ms_tSiteParamTable[i];
    CString lower(row.pszKey), upper(row.pszKey);
    lower.MakeLower();
    upper.MakeUpper();
    EXPECT_TRUE(names.insert(lower.str()).second) << row.pszKey;
    EXPECT_EQ(CHtmlFileSitemap::GetSiteParamCode(row.pszKey), row.nValue) << row.pszKey;
    EXPECT_EQ(CHtmlFileSitemap::GetSiteParamCode(lower), row.nValue) << row.pszKey;
    EXPECT_EQ(CHtmlFileSitemap::GetSiteParamCode(upper), row.nValue) << row.pszKey;
  }
  // Both spellings of the window styles; the codes the reader and writer name.
  EXPECT_EQ(CHtmlFileSitemap::GetSiteParamCode("WindowStyles"), CHtmlFileSitemap::emParamWindowStyles);
  EXPECT_EQ(CHtmlFileSitemap::GetSiteParamCode("Window Styles"), CHtmlFileSitemap::emParamWindowStyles);
  EXPECT_EQ(CHtmlFileSitemap::GetSiteParamCode("Local"), CHtmlFileSitemap::emParamLocal);
  EXPECT_EQ(CHtmlFileSitemap::GetSiteParamCode("Image Width"), CHtmlFileSitemap::emParamImageWidth);
  for (const char* name : {"ImageWidth", "X-Unknown", "", static_cast<const char*>(nullptr)})
    EXPECT_EQ(CHtmlFileSitemap::GetSiteParamCode(name), -1) << (name ? name : "(null)");
}

TEST(FileSitemap, NeededNamesAreKeptOnce) {
  CHtmlFileSitemap file;
  int cursor = 5;
  EXPECT_EQ(file.GetFirstFrameName(cursor), nullptr);
  EXPECT_EQ(file.AddNeedFrameName("main"), 1);
  EXPECT_EQ(file.AddNeedFrameName("MAIN"), 0);
  EXPECT_EQ(file.AddNeedFrameName(""), 0);
  EXPECT_EQ(file.AddNeedFrameName(nullptr), 0);
  EXPECT_EQ(file.AddNeedFrameName("side"), 1);
  EXPECT_STREQ(file.GetFirstFrameName(cursor), "main");
  EXPECT_STREQ(file.GetNextFrameName(cursor), "side");
  EXPECT_EQ(file.GetNextFrameName(cursor), nullptr);

  EXPECT_EQ(file.AddNeedWindowName("$global_w"), 1);
  EXPECT_STREQ(file.GetFirstWindowName(cursor), "$global_w");
  EXPECT_EQ(file.GetNextWindowName(cursor), nullptr);
}

}  // namespace
