// Runs the topic document over real pages (every ".htm"/".html" file under the
// folders named on the command line): Analyse, every enumerator and every
// getter, and checks that reading left the page unchanged (no token inserted,
// changed or discarded). Prints totals of what was found and the time per
// page. Then it edits each page (title, a topic property, K keywords, topic
// and element build tags), saves it, reads the saved bytes back and checks
// that the edits are there. Meant to be built with the sanitizers
// (scripts/corpus-topic.sh).
// Exit status: 0 when every page passes, 1 otherwise.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "telvanix/topic/html_file_ex.h"

using namespace telvanix;

namespace {

struct Totals {
  long pages = 0;
  long bytes = 0;
  long images = 0;
  long stylesheets = 0;
  long anchors = 0;
  long bookmarks = 0;
  long objects = 0;
  long scripts = 0;
  long frames = 0;
  long baggage = 0;
  long multimedia = 0;
  long hhctrlItems = 0;
  long keywords = 0;
  long buildTags = 0;
  long titles = 0;
  long modified = 0;
  long edited = 0;
  long editFailures = 0;
};

// Edits, saves and reads back; false when the saved page lost an edit.
bool EditRoundTrip(CHtmlFileEx& doc, std::string& why) {
  CHtmlFileEx copy(doc);
  if (!copy.SetHtmlTitle("Edited & saved")) {
    why = "no title could be set";
    return true;  // pages without HTML and HEAD tags take no title
  }
  copy.SetTopicAuthor("A <b>");
  CHtmlFileEx::CStringArrayEx keywords;
  CString k1 = "one", k2 = "two";
  keywords.Add(k1);
  keywords.Add(k2);
  copy.SetKeywordK(&keywords);
  copy.SetTopicBuildTags("Web,Print");
  if (copy.GetStyledTagPositions().GetSize() > 0)
    copy.SetInlineBuildTags(copy.GetTokenList()->GetTagItem(copy.GetStyledTagPositions()[0]), "Print");
  CByteString saved;
  if (!copy.Save(&saved, CHtmlPack::emSave)) {
    why = "save failed";
    return false;
  }
  CHtmlFileEx back(saved, "back.htm");
  CString text;
  if (!back.GetHtmlTitle(text) || text != "Edited &amp; saved") {
    why = std::string("title read back as \"") + static_cast<const char*>(text) + "\"";
    return false;
  }
  if (!back.GetTopicAuthor(text) || text != "A <b>") {
    why = "author lost";
    return false;
  }
  if (!back.GetTopicBuildTags(text) || text != "Web,Print") {
    why = "build tags lost";
    return false;
  }
  unsigned int index = 0;
  POSITION pos = nullptr;
  if (copy.GetStyledTagPositions().GetSize() > 0 && back.GetFirstInlineBuildTags(index, &pos) != "Print") {
    why = "element build tags lost";
    return false;
  }
  return true;
}

void Walk(CHtmlFileEx& doc, Totals& t) {
  doc.Analyse();
  unsigned int index = 0, stage = 0;
  for (CString s = doc.GetFirstImage(index); !s.IsEmpty(); s = doc.GetNextImage(index))
    ++t.images;
  for (const char* s = doc.GetFirstScriptSource(index); s; s = doc.GetNextScriptSource(index))
    ++t.scripts;
  for (const char* s = doc.GetFirstAnchorHref(index); s; s = doc.GetNextAnchorHref(index)) {
    doc.GetAnchorHrefType(s);
    doc.IsJavaScriptAnchorHref(s);
    ++t.anchors;
  }
  for (const char* s = doc.GetFirstBookmark(index); s; s = doc.GetNextBookmark(index))
    ++t.bookmarks;
  for (const char* s = doc.GetFirstFrameSource(index); s; s = doc.GetNextFrameSource(index))
    ++t.frames;
  for (CString s = doc.GetFirstBaggageImage(index, stage); !s.IsEmpty(); s = doc.GetNextBaggageImage(index, stage))
    ++t.baggage;
  for (CString s = doc.GetFirstMultimediaFile(index); !s.IsEmpty(); s = doc.GetNextMultimediaFile(index))
    ++t.multimedia;
  for (const char* s = doc.GetFirstRelatedTopic(index); s; s = doc.GetNextRelatedTopic(index))
    ++t.hhctrlItems;
  for (const char* s = doc.GetFirstContentOrIndex(index); s; s = doc.GetNextContentOrIndex(index))
    ++t.hhctrlItems;
  POSITION pos = nullptr;
  for (CString s = doc.GetFirstInlineBuildTags(index, &pos); !s.IsEmpty(); s = doc.GetNextInlineBuildTags(index, &pos))
    ++t.buildTags;

  t.objects += doc.GetObjectPositions().GetSize();
  for (int i = 0; i < doc.GetObjectPositions().GetSize(); ++i) {
    POSITION at = doc.GetObjectPositions()[i];
    CHtmlTagItem* tag = doc.GetTokenList()->GetTagItem(at);
    doc.GetHhctrlCommandType(at);
    doc.IsMultimediaActivexObject(tag, at);
    doc.IsKeywordActiveObject(tag);
    doc.IsPopupActivexObject(tag);
  }

  CHtmlFileEx::CStringArrayEx files;
  doc.GetExternalStyleSheetFileNameEx(files);
  t.stylesheets += files.GetSize();
  CHtmlFileEx::CStringArrayEx keywords;
  doc.GetKeywordK(keywords);
  doc.GetKeywordA(keywords);
  t.keywords += keywords.GetSize();

  CString text;
  int number = 0;
  COLORREF color = 0;
  CStringList list;
  if (doc.GetHtmlTitle(text))
    ++t.titles;
  doc.GetExternalStyleSheetFileName(text);
  doc.GetBodyHtmlText(text);
  for (int which = 1; which <= 5; ++which)
    doc.GetColor(static_cast<CHtmlFileEx::EmColor>(which), color);
  doc.GetWaterMark(number);
  doc.GetBackgroundImage(text);
  doc.GetBackgroundSound(text, number);
  doc.GetTopicAuthor(text);
  doc.GetTopicStatus(text);
  doc.GetTopicPriority(number);
  doc.GetTopicTimeEstimate(number);
  doc.GetTopicCheckList(list);
  doc.GetTopicComment(text);
  doc.GetTopicId(text);
  doc.GetTopicSourceDigitalSignature(text);
  if (doc.GetTopicBuildTags(text))
    ++t.buildTags;
  doc.GetInlineStyleBaggage();
  doc.GetEmbeddedStyleBaggage();
  doc.GetSpecialTagBaggage();
}

void Collect(const std::filesystem::path& root, std::vector<std::string>& files) {
  namespace fs = std::filesystem;
  std::error_code ec;
  if (fs::is_regular_file(root, ec)) {
    files.push_back(root.string());
    return;
  }
  for (fs::recursive_directory_iterator it(root, ec), end; !ec && it != end; it.increment(ec)) {
    std::string ext = it->path().extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (it->is_regular_file() && (ext == ".htm" || ext == ".html"))
      files.push_back(it->path().string());
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> files;
  for (int i = 1; i < argc; ++i)
    Collect(argv[i], files);
  std::sort(files.begin(), files.end());
  if (files.empty()) {
    std::fprintf(stderr, "usage: topic_corpus_check FOLDER|PAGE...\n");
    return 2;
  }
  Totals t;
  double seconds = 0;
  for (const std::string& path : files) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    const std::string bytes = text.str();
    if (bytes.empty())
      continue;
    CByteString source(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
    auto start = std::chrono::steady_clock::now();
    CHtmlFileEx doc(source, path.c_str());
    Walk(doc, t);
    seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    ++t.pages;
    t.bytes += static_cast<long>(bytes.size());
    if (doc.IsTokenListModified()) {
      ++t.modified;
      std::printf("changed by reading: %s\n", path.c_str());
    }
    std::string why;
    if (!EditRoundTrip(doc, why)) {
      ++t.editFailures;
      std::printf("edit lost (%s): %s\n", why.c_str(), path.c_str());
    } else if (why.empty()) {
      ++t.edited;
    }
  }
  std::printf("pages %ld (%ld bytes)\n", t.pages, t.bytes);
  std::printf("images %ld, stylesheets %ld, anchors %ld, bookmarks %ld, objects %ld, scripts %ld, frames %ld\n",
              t.images, t.stylesheets, t.anchors, t.bookmarks, t.objects, t.scripts, t.frames);
  std::printf("baggage %ld, multimedia %ld, help-control items %ld, keywords %ld, build tags %ld, titles %ld\n",
              t.baggage, t.multimedia, t.hhctrlItems, t.keywords, t.buildTags, t.titles);
  std::printf("time %.3f s, %.1f us per page\n", seconds, t.pages ? seconds * 1e6 / static_cast<double>(t.pages) : 0.0);
  std::printf("pages changed by reading: %ld\n", t.modified);
  std::printf("pages edited and read back: %ld, edits lost: %ld\n", t.edited, t.editFailures);
  return (t.modified || t.editFailures) ? 1 : 0;
}
