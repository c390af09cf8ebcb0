#include "telvanix/view/internal/browser_default_sheet.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "telvanix/css/css_pack.h"
#include "telvanix/css/style_format.h"
#include "telvanix/html/tag_item.h"

namespace telvanix {

// A typo would silently drop a default: every rule must name known tags only
// and have each declaration read by the style format ("inherit" is the view's).
TEST(BrowserDefaultSheetTest, EveryRuleAndDeclarationIsRead) {
  for (const char* sheet : {kBrowserDefaultSheet, kBrowserQuirksSheet}) {
    CByteString text(reinterpret_cast<const unsigned char*>(sheet), static_cast<int>(strlen(sheet)));
    CCssPack pack(&text);
    ASSERT_EQ(pack.Parse(), 1);
    POSITION pos = nullptr;
    for (CCssStyle* style = pack.GetFirstStyle(pos); style; style = pack.GetNextStyle(pos)) {
      CCssStyleSelectors* chain = style->GetStyleSelectors();
      ASSERT_GT(chain->GetSize(), 0);
      for (int i = 0; i < chain->GetSize(); ++i)
        EXPECT_FALSE(chain->GetAt(i)->GetTagId() & CHtmlTagItem::emTagIdUnknownBit) << style->GetStyleName();
      int index = 0;
      style->GetStyleProperty()->GetFirstPropertyPair(index);
      while (auto* pair = style->GetStyleProperty()->GetNextPropertyPair(index)) {
        if (std::string(pair->GetValue()) == "inherit") continue;
        EXPECT_EQ(CCssStyleFormat().AnalyseCssProperty(pair->GetName(), pair->GetValue()), 1) << pair->GetName();
      }
    }
  }
}

TEST(BrowserDefaultSheetTest, QuirksModeFollowsTheDoctype) {
  for (const char* quirks : {(const char*)nullptr, "<!DOCTYPE>", "<!doctype svg>",
                             "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 3.2 Final//EN\">",
                             "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\">"})
    EXPECT_EQ(IsQuirksModeDoctype(quirks), 1) << (quirks ? quirks : "none");
  for (const char* standard : {"<!DOCTYPE html>", "<!DOCTYPE html SYSTEM \"about:legacy-compat\">",
                               "<!DOCTYPE HTML PUBLIC '-//W3C//DTD HTML 4.01 Frameset//EN' 'x.dtd'>"})
    EXPECT_EQ(IsQuirksModeDoctype(standard), 0) << standard;
}

}  // namespace telvanix
