#include "telvanix/view/internal/browser_default_sheet.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "telvanix/css/css_pack.h"
#include "telvanix/css/css_selector.h"
#include "telvanix/css/style_format.h"
#include "telvanix/css/style_property.h"
#include "telvanix/html/tag_item.h"

namespace telvanix {
namespace {

// A typo in the sheets would silently drop a default: every rule must be kept
// by the parser, name known tags only, and have each declaration read by the
// style format ("inherit" is the view's to resolve, not the format's).
TEST(BrowserDefaultSheetTest, EveryRuleAndDeclarationIsRead) {
  for (const char* sheet : {kBrowserDefaultSheet, kBrowserQuirksSheet}) {
    CByteString text(reinterpret_cast<const unsigned char*>(sheet), static_cast<int>(strlen(sheet)));
    CCssPack pack(&text);
    ASSERT_EQ(pack.Parse(), 1);
    int rules = 0;
    POSITION pos = nullptr;
    for (CCssStyle* style = pack.GetFirstStyle(pos); style; style = pack.GetNextStyle(pos), ++rules) {
      const std::string name(style->GetStyleName());
      CCssStyleSelectors* chain = style->GetStyleSelectors();
      ASSERT_GT(chain->GetSize(), 0) << name;
      for (int i = 0; i < chain->GetSize(); ++i)
        EXPECT_FALSE(chain->GetAt(i)->GetTagId() & CHtmlTagItem::emTagIdUnknownBit) << name;
      CCssStyleProperty* list = style->GetStyleProperty();
      int index = 0;
      list->GetFirstPropertyPair(index);
      while (CCssStyleProperty::CPropertyPair* pair = list->GetNextPropertyPair(index)) {
        CCssStyleFormat format;
        if (std::string(pair->GetValue()) != "inherit") {
          EXPECT_EQ(format.AnalyseCssProperty(pair->GetName(), pair->GetValue()), 1)
              << name << " " << std::string(pair->GetName());
        }
      }
    }
    EXPECT_GT(rules, 1);
  }
}

}  // namespace
}  // namespace telvanix
