// An indexer as a host would be: it finds the topic text parser by name in
// the shared library, reads a page's text and keywords, and deletes the
// parser through its virtual destructor.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

#include "telvanix/telvanix.h"
#include "../test_util.h"

using namespace telvanix;

namespace {

using GetTopicTextParserFn = CHtmlTopicTextParser* (*)();

// The expected texts of the data pages are kept with bare line ends.
std::string WithCrLf(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (c == '\n')
      out += '\r';
    out += c;
  }
  return out;
}

TEST(HostTopicTextParser, FoundByNameReadsTextAndKeywords) {
  void* library = dlopen(TELVANIX_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(nullptr, library) << dlerror();
  auto factory = reinterpret_cast<GetTopicTextParserFn>(dlsym(library, "GetTopicTextParser"));
  ASSERT_NE(nullptr, factory) << "the factory must be exported with C linkage";

  CHtmlTopicTextParser* parser = factory();
  ASSERT_NE(nullptr, parser);
  const std::string page = std::string(TELVANIX_TEST_DATA_DIR) + "/topic_text/hidden.htm";
  ASSERT_EQ(1, parser->OpenDocument(page.c_str(), nullptr, 0, nullptr, nullptr, nullptr));

  CString text, second;
  CStringArray keywords;
  ASSERT_EQ(1, parser->GetFirstTopicText(text, second, &keywords));
  EXPECT_EQ(WithCrLf(test::ReadDataFile("topic_text/hidden.expected")), text.str());
  ASSERT_EQ(2, keywords.GetSize());
  EXPECT_EQ("alpha", keywords[0]);
  EXPECT_EQ("beta", keywords[1]);
  EXPECT_EQ(0, parser->GetNextTopicText(text, second, &keywords));

  // Deleted open: the destructor closes the document.
  delete parser;

  // A second parser is independent of the first.
  CHtmlTopicTextParser* other = factory();
  ASSERT_NE(nullptr, other);
  EXPECT_EQ(0, other->GetFirstTopicText(text, second, &keywords));
  EXPECT_EQ(0, other->OpenDocument("/nonexistent/topic.htm", nullptr, 0, nullptr, nullptr, nullptr));
  EXPECT_EQ(1, other->CloseDocument());
  delete other;
  dlclose(library);
}

}  // namespace
