// Several documents worked on at the same time, one per thread: the
// process-wide tables (tag syntax, tag-name hashes, character entities,
// keyword tables, URL schemes, multimedia extensions, class ids, colour
// names, property vocabulary) must be prepared safely by whichever thread
// needs them first and read-only afterwards. The threads start together on
// a library nobody has touched yet, so the first-use preparation races; each
// result must equal the one a single thread gets. The ThreadSanitizer build
// reports any data race on the way.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <latch>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "html/tree_dump.h"
#include "telvanix/css/css_pack_ex.h"
#include "telvanix/css/css_style.h"
#include "telvanix/css/style_format.h"
#include "telvanix/css/style_values.h"
#include "telvanix/foundation/byte_string.h"
#include "telvanix/foundation/color_names.h"
#include "telvanix/foundation/url_utils.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/sitemap/file_sitemap.h"
#include "telvanix/sitemap/sitemap_entry.h"
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/pure_text.h"
#include "telvanix/topic/topic_text.h"
#include "test_util.h"
#include "topic/topic_page.h"

namespace telvanix {
namespace {

constexpr int kThreads = 6;
constexpr int kJobs = 36;

std::string Str(const CString& text) { return text.str(); }

std::string Str(const CByteString& bytes) {
  if (bytes.GetLength() == 0) return std::string();
  return std::string(static_cast<const char*>(bytes), static_cast<size_t>(bytes.GetLength()));
}

CByteString Bytes(const std::string& text) {
  return CByteString(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
}

// The text with each marker character replaced by its value.
std::string Fill(std::string text, std::initializer_list<std::pair<char, std::string>> values) {
  for (const auto& [marker, value] : values)
    for (size_t at = text.find(marker); at != std::string::npos; at = text.find(marker, at + value.size()))
      text.replace(at, 1, value);
  return text;
}

// A topic that reaches every analysis path: properties, stylesheets, scripts,
// help-control and keyword objects, multimedia, frames, bookmarks, build tags,
// entities and misnested markup. `n` ("$" below) makes each page different.
std::string MakeTopic(int n) {
  static const char* const kColors[] = {"red", "navy", "#336699", "Teal", "fuchsia", "#ffffcc", "silver", "OLIVE"};
  static const char* const kSchemes[] = {"http", "ftp",  "mailto", "news",     "javascript", "file",   "https", "gopher",
                                         "telnet", "nntp", "wais", "prospero", "help.chm:",  "ms-its", "HTTP"};
  std::string page = Fill(
      "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.0 Transitional//EN\">\n<HTML>\n<HEAD>\n"
      "<meta name=\"topic-author\" content=\"Writer $\">\n<meta name=\"topic-priority\" content=\"%\">\n"
      "<meta name=\"topic-checklist\" content=\"draft,review $,done\">\n"
      "<meta name=\"build tags\" content=\"Web,Print$\">\n<TITLE>Topic $ &amp; caf&eacute;</TITLE>\n"
      "<LINK rel=\"stylesheet\" href=\"styles/sheet$.css\">\n"
      "<STYLE>@import url(extra$.css);\nbody { background: #fff url('bg$.gif') }\n"
      "li { list-style-image: url(\"dot.png\") } .n$ { color: ^ }</STYLE>\n"
      "<SCRIPT src=\"scripts/s$.js\"></SCRIPT><script>var x = '<p>';</script>\n"
      "</HEAD>\n<BODY bgcolor=^ text=#000000 link=\"~\" background=\"paper$.jpg\" bgproperties=fixed>\n"
      "<BGSOUND src=\"sound$.wav\" loop=`>\n"
      "<OBJECT id=hhctrl type=\"application/x-oleobject\" classid=\"clsid:adb880a6-d8ff-11cf-9377-00aa003b7a11\">"
      "<PARAM name=\"Command\" value=\"ShortCut\"><PARAM name=\"Button\" value=\"Bitmap:short$.bmp\">"
      "<PARAM name=\"Item1\" value=\",app.exe,\"></OBJECT>\n"
      "<OBJECT type=\"application/x-oleobject\" classid=\"clsid:4c7e19a2-b83f-11d0-a5c1-00e07d3f21ab\">"
      "<param name=\"Keyword\" value=\"key$\"><param name=\"Keyword\" value=\"shared\">"
      "<param name=\"ALink Name\" value=\"alink$\"></OBJECT>\n"
      "<OBJECT id=hhctrl classid=\"clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11\"><PARAM name=\"Command\" "
      "value=\"Related Topics\"><PARAM name=\"Item1\" value=\"One;one$.htm\">"
      "<PARAM name=\"Item2\" value=\"Two;two.htm\"></OBJECT>\n"
      "<object classid=\"clsid:22D6F312-B0F6-11D0-94AB-0080C74C7E95\"><param name=FileName value=\"talk$.mp3\">"
      "</object><embed src=\"m&amp;n$.mid\"><img dynsrc=\"clip.avi\" src=\"still.gif\">\n"
      "<h1 id=\"top$\" style=\"x-condition: Web$; color: red\">Heading $</h1>\n"
      "<p class=note style=\"background:url(inline$.gif)\">Read <a href=\"|://host/p$.htm\">the "
      "<b>requirements</a></b> first &lt;now&gt;&nbsp;&copy;.\n"
      "<a name=\"mark$\" href=\"local.htm#x\">local</a><img src=\"images/pic$.gif\" alt='Picture &amp; $'>\n"
      "<table><tr><td>cell $<td>next<tr><td>row</table>\n<ul><li>one<li>two <i>italic<li>three</ul>\n"
      "<map name=m><area href=\"area$.htm\" alt=\"area\"></map>\n<iframe src=\"inner$.htm\">not shown</iframe>\n"
      "<!-- comment $ --><P>Tab\there &amp; there &#65;&#x42;C &unknown; $</P>\n",
      {{'$', std::to_string(n)}, {'%', std::to_string(n % 5)}, {'`', std::to_string(n % 4)},
       {'^', kColors[n % 8]}, {'~', kColors[(n + 3) % 8]}, {'|', kSchemes[n % 15]}});
  for (int i = 0; i < n % 7; ++i)
    page += Fill("<div><span class=n$>line ~</div></span>\n", {{'$', std::to_string(n)}, {'~', std::to_string(i)}});
  return page + "</BODY>\n</HTML>\n";
}

std::string MakeSheet(int n) {
  return Fill(
      "/* sheet $ */\n@import url(base$.css);\n@import \"print.css\";\n"
      "BODY { font-family: Verdana, \"Courier New\", monospace; font-size: ^pt; color: #00~66; "
      "background: white url(img/bg$.gif) no-repeat fixed }\n"
      "H1 { font: bold italic 16px/1.2 Arial; text-align: center; text-decoration: underline; "
      "margin: 1em 2px 3pt 4% }\n"
      "P.note, UL LI { border: 1px solid red; padding: 4px; list-style: square url(b$.png) inside }\n"
      "A:hover { color: Navy; text-transform: uppercase; vertical-align: super; display: block }\n"
      "@media print { P { color: black } }\n"
      ".x$ { cursor: url(c.cur), auto; filter: alpha(opacity=50); white-space: pre; "
      "letter-spacing: -1px; line-height: 150% }\n"
      "broken { color: ; ; font-weight: 700 }  unclosed { width: 3in\n",
      {{'$', std::to_string(n)}, {'^', std::to_string(8 + n % 9)}, {'~', std::to_string(10 + n % 90)}});
}

std::string MakeSitemap(int n) {
  const std::string id = std::to_string(n);
  std::string page = Fill(
      "<!DOCTYPE HTML PUBLIC \"-//IETF//DTD HTML//EN\">\n<HTML>\n<HEAD>\n<title>Contents $</title>\n</HEAD><BODY>\n"
      "<OBJECT type=\"text/site properties\">\n\t<param name=\"FrameName\" value=\"right$\">\n"
      "\t<param name=\"Window Styles\" value=\"0x800625\">\n\t<param name=\"Category\" value=\"Audience\">\n"
      "\t<param name=\"Type\" value=\"beginner\">\n\t<param name=\"Foreground\" value=\"navy\">\n</OBJECT>\n<UL>\n",
      {{'$', id}});
  for (int i = 0; i < 3 + n % 5; ++i) {
    page += Fill(
        "\t<LI> <OBJECT type=\"text/sitemap\">\n\t\t<param name=\"Name\" value=\"Entry ~ &amp; $\">\n"
        "\t\t<param name=\"Local\" value=\"topics\\t~.htm\">\n\t\t<param name=\"ImageNumber\" value=\"^\">\n"
        "\t\t</OBJECT>\n",
        {{'$', id}, {'~', std::to_string(i)}, {'^', std::to_string(i % 3 + 1)}});
    if (i % 2)
      page += Fill(
          "\t<UL>\n\t\t<LI> <OBJECT type=\"text/sitemap\"><param name=\"Name\" value=\"Child\">"
          "<param name=\"URL\" value=\"http://example.invalid/c$.htm\"><param name=\"Keyword\" value=\"kw\">"
          "</OBJECT>\n\t</UL>\n",
          {{'$', id}});
  }
  return page + "</UL>\n</BODY></HTML>\n";
}

// The inputs of one job; the data files are read before any thread starts.
struct Job {
  std::string topic;
  std::string extraPage;  // a page from the test data, or ""
  std::string sheet;
  std::string sitemap;
};

std::vector<Job> MakeJobs() {
  static const char* const kDataPages[] = {
      "topic/edit_page.htm",        "topic_text/blocks.htm",    "topic_text/entities.htm",
      "topic_text/broken_head.htm", "topic_text/hidden.htm",    "topic_text/html5.htm",
      "topic_text/pre.htm",         "html/layout/outline.html", "html/layout/comment_object.html"};
  static const char* const kDataSheets[] = {"css/help_topic.css", "css/at_rules.css", "css/odd.css",
                                            "css/urls.css",       "css/merged.css",   "css/hidden_block.css"};
  static const char* const kDataSitemaps[] = {"sitemap/site_properties.hhc", "sitemap/index_keywords.hhk",
                                              "sitemap/loose_markup.hhc",    "sitemap/merged_contents.hhc",
                                              "sitemap/truncated.hhc",       "sitemap/contents_upper.hhc"};
  std::vector<Job> jobs(kJobs);
  for (int n = 0; n < kJobs; ++n) {
    Job& job = jobs[static_cast<size_t>(n)];
    job.topic = MakeTopic(n);
    job.extraPage = test::ReadDataFile(kDataPages[n % 9]);
    job.sheet = (n % 3 == 0) ? test::ReadDataFile(kDataSheets[(n / 3) % 6]) : MakeSheet(n);
    job.sitemap = (n % 2 == 0) ? test::ReadDataFile(kDataSitemaps[(n / 2) % 6]) : MakeSitemap(n);
  }
  return jobs;
}

std::string Joined(const CHtmlFileEx::CStringArrayEx& list) {
  std::string out;
  for (int i = 0; i < list.GetSize(); ++i) out += Str(list[i]) + ";";
  return out;
}

// Levels 2 and 4 of the pack: the token count, both save forms and the tree.
void ParsePack(const std::string& page, std::ostream& out) {
  for (CHtmlPack::EmParseFlag level : {CHtmlPack::emParseAttributes, CHtmlPack::emParseHtmlTree}) {
    CByteString source = Bytes(page);
    CHtmlPack pack(source, nullptr);
    out << "parse " << pack.Parse(level) << " tokens " << pack.GetTokenList()->GetCount() << "\n";
    CByteString saved, layout;
    pack.Save(&saved, CHtmlPack::emSave);
    pack.Save(&layout, CHtmlPack::emSaveLayoutObject);
    out << "same " << (Str(saved) == page) << "\n" << Str(layout) << "\n";
    if (level == CHtmlPack::emParseHtmlTree) out << test::DumpTree(pack.GetTokenList());
  }
}

// Every getter and enumerator of the topic document.
void AnalyseTopic(CHtmlFileEx& doc, std::ostream& out) {
  out << "analyse " << doc.Analyse() << "\n";
  CString text;
  int number = 0;
  COLORREF color = 0;
  out << "title " << doc.GetHtmlTitle(text) << Str(text) << "\n";
  for (int which = CHtmlFileEx::emColorLink; which <= CHtmlFileEx::emColorText; ++which) {
    color = 0;
    out << "color " << doc.GetColor(static_cast<CHtmlFileEx::EmColor>(which), color) << " " << color << "\n";
  }
  out << "mark " << doc.GetWaterMark(number) << number;
  out << " bg " << doc.GetBackgroundImage(text) << Str(text);
  out << " sound " << doc.GetBackgroundSound(text, number) << Str(text) << number;
  out << " sheet " << doc.GetExternalStyleSheetFileName(text) << Str(text) << "\n";
  CHtmlFileEx::CStringArrayEx array;
  doc.GetExternalStyleSheetFileNameEx(array);
  out << "sheets " << Joined(array) << "\n";

  unsigned int index = 0, stage = 0;
  using D = CHtmlFileEx;
  out << "scripts " << test::Walk(doc, &D::GetFirstScriptSource, &D::GetNextScriptSource);
  out << "\nimages " << test::Walk(doc, &D::GetFirstImage, &D::GetNextImage);
  out << "\nbaggage ";
  for (CString s = doc.GetFirstBaggageImage(index, stage); !s.IsEmpty(); s = doc.GetNextBaggageImage(index, stage))
    out << Str(s) << "@" << stage << ";";
  out << "\nlists " << Joined(doc.GetInlineStyleBaggage()) << "|" << Joined(doc.GetEmbeddedStyleBaggage()) << "|"
      << Joined(doc.GetSpecialTagBaggage());
  out << "\nmultimedia " << test::Walk(doc, &D::GetFirstMultimediaFile, &D::GetNextMultimediaFile);
  out << "\nrelated " << test::Walk(doc, &D::GetFirstRelatedTopic, &D::GetNextRelatedTopic);
  out << "\nhhctrl " << test::Walk(doc, &D::GetFirstHhctrlBaggageImage, &D::GetNextHhctrlBaggageImage)
      << test::Walk(doc, &D::GetFirstContentOrIndex, &D::GetNextContentOrIndex);
  out << "\nanchors ";
  for (const char* s = doc.GetFirstAnchorHref(index); s && *s; s = doc.GetNextAnchorHref(index))
    out << std::string(s) << "=" << doc.GetAnchorHrefType(s) << ";";
  out << "\nbookmarks " << test::Walk(doc, &D::GetFirstBookmark, &D::GetNextBookmark);
  out << "\nframes " << test::Walk(doc, &D::GetFirstFrameSource, &D::GetNextFrameSource);
  const CHtmlFileEx::CPositionArray& objects = doc.GetObjectPositions();
  out << "\nobjects ";
  for (int i = 0; i < objects.GetSize(); ++i)
    out << doc.GetHhctrlCommandType(objects[i]) << "/" << Str(doc.GetMultimediaFileOfObject(objects[i])) << ";";
  CHtmlFileEx::CStringArrayEx k, a;
  doc.GetKeywordK(k);
  doc.GetKeywordA(a);
  out << "\nkeywords " << Joined(k) << "|" << Joined(a) << "\n";

  out << "author " << doc.GetTopicAuthor(text) << Str(text);
  out << " status " << doc.GetTopicStatus(text) << Str(text);
  out << " priority " << doc.GetTopicPriority(number) << number;
  out << " estimate " << doc.GetTopicTimeEstimate(number) << number;
  out << " id " << doc.GetTopicId(text) << Str(text);
  out << " tags " << doc.GetTopicBuildTags(text) << Str(text);
  CStringList checks;
  out << " checks " << doc.GetTopicCheckList(checks);
  for (POSITION pos = checks.GetHeadPosition(); pos;) out << ";" << Str(checks.GetNext(pos));
  out << "\ninline ";
  for (CString s = doc.GetFirstInlineBuildTags(index, nullptr); !s.IsEmpty();
       s = doc.GetNextInlineBuildTags(index, nullptr))
    out << Str(s) << ";";
  out << "\nbody " << doc.GetBodyHtmlText(text) << " " << text.GetLength() << "\n";
  out << "text[" << Str(doc.GetPureText(emPureTextLineBreaks, nullptr, "untitled")) << "]\n";
  out << "line[" << Str(doc.GetPureText(emPureTextOneLine, nullptr, nullptr)) << "]\n";
}

// The edits a host makes before saving, then a save to a file of its own and
// a read back through both entry points.
void EditAndSave(CHtmlFileEx& doc, int n, const std::string& folder, std::ostream& out) {
  const std::string id = std::to_string(n);
  out << "edit " << doc.SetHtmlTitle(("New <title> " + id).c_str());
  out << doc.SetTopicAuthor(("Editor & " + id).c_str());
  out << doc.SetTopicPriority(n);
  out << doc.SetTopicBuildTags(n % 2 ? "Web" : nullptr);
  out << doc.SetColor(CHtmlFileEx::emColorBgColor, static_cast<COLORREF>(0x10203 * n));
  out << doc.SetBackgroundSound(n % 3 ? "new.wav" : nullptr, n % 2);
  out << doc.SetExternalStyleSheetFileName(("new" + id + ".css").c_str());
  CHtmlFileEx::CStringArrayEx keywords;
  CString k1(("k" + id).c_str()), k2("second");
  keywords.Add(k1);
  keywords.Add(k2);
  out << doc.SetKeywordK(&keywords);
  out << doc.ReplaceBuildTag("Print", "Paper");
  out << doc.SetBodyHtmlText(("<p>added " + id + "</p>").c_str(), n % 2);
  out << " modified " << doc.IsTokenListModified() << "\n";

  CByteString saved;
  doc.Save(&saved, CHtmlPack::emSave);
  out << Str(saved);
  const std::string path = folder + "/topic" + id + ".htm";
  out << "saved " << doc.Save(path.c_str(), CHtmlPack::emSaveLayout) << "\n";

  CHtmlFileEx reread(path.c_str());
  CString title;
  out << "reread " << reread.GetHtmlTitle(title) << Str(title);
  CHtmlFileEx::CStringArrayEx k;
  reread.GetKeywordK(k);
  out << " " << Joined(k) << "\n";

  std::unique_ptr<CHtmlTopicTextParser> parser(GetTopicTextParser());
  CString text, second;
  CStringArray words;
  out << "parser " << parser->OpenDocument(path.c_str(), nullptr, n % 2, nullptr, nullptr, nullptr);
  out << parser->GetFirstTopicText(text, second, &words) << "[" << Str(text) << "]";
  for (int i = 0; i < words.GetSize(); ++i) out << Str(words[i]) << ";";
  parser->CloseDocument();
  out << "\n";
}

void DescribeSheet(CCssPackEx& pack, std::ostream& out) {
  out << "css " << pack.Parse() << "\n";
  POSITION pos = nullptr;
  for (CCssStyle* style = pack.GetFirstStyle(pos); style; style = pack.GetNextStyle(pos)) {
    out << Str(style->GetStyleName()) << " {";
    if (CCssStyleFormat* format = style->GetStyleFormat()) {
      out << Str(format->GetFontSize().GetPrintableString()) << "," << Str(format->GetColor().GetPrintableString())
          << "," << Str(format->GetBackgroundColor().GetPrintableString()) << ","
          << Str(format->GetBackgroundImage().GetPrintableString()) << "," << Str(format->GetFirstFontFamily()) << ","
          << format->GetFontWeight() << "," << format->GetTextAlign() << "," << format->GetTextDecoration() << ","
          << Str(format->GetMargin(1).GetPrintableString()) << "," << Str(format->GetDisplay());
    }
    out << "}\n";
  }
  out << "imports ";
  for (CString url = pack.GetFirstImportCssUrl(pos); !url.IsEmpty(); url = pack.GetNextImportCssUrl(pos))
    out << Str(url) << ";";
  out << "\nfiles ";
  UINT index = 0;
  for (CString name = pack.GetFirstBaggageFile(index); !name.IsEmpty(); name = pack.GetNextBaggageFile(index))
    out << Str(name) << ";";
  CByteString saved;
  pack.Save(saved);
  out << "\n" << Str(saved) << "\n";
}

// The sheet as a STYLE block of a page, then as a linked file that is read,
// saved under another name and read again.
void ParseSheet(const std::string& sheet, int n, const std::string& folder, std::ostream& out) {
  CByteString content = Bytes(sheet);
  CCssPackEx embedded("/help/page.htm", &content);
  DescribeSheet(embedded, out);

  const std::string path = folder + "/sheet" + std::to_string(n) + ".css";
  std::ofstream(path, std::ios::binary) << sheet;
  CCssPackEx linked(path.c_str(), nullptr);
  DescribeSheet(linked, out);
  const std::string copy = folder + "/copy" + std::to_string(n) + ".css";
  out << "sheet saved " << linked.Save(copy.c_str());
  // At-rules keep their trailing blanks, so only the rules are compared.
  CCssPackEx reread(copy.c_str(), nullptr);
  reread.Parse();
  std::string first, second;
  POSITION pos = nullptr;
  for (CCssStyle* style = linked.GetFirstStyle(pos); style; style = linked.GetNextStyle(pos))
    first += Str(style->GetPrintableString(&linked));
  for (CCssStyle* style = reread.GetFirstStyle(pos); style; style = reread.GetNextStyle(pos))
    second += Str(style->GetPrintableString(&reread));
  out << " same " << (first == second) << "\n";
}

void ReadWriteSitemap(const std::string& page, int n, const std::string& folder, std::ostream& out) {
  CByteString source = Bytes(page);
  CHtmlFileSitemap sitemap;
  out << "sitemap " << sitemap.Read(source) << " " << sitemap.GetSitemapArraySize() << " "
      << (sitemap.GetTitle() ? sitemap.GetTitle() : "(null)") << "\n";
  for (int i = 0; i < sitemap.GetSitemapArraySize(); ++i) {
    CHtmlSitemap* entry = sitemap.GetSitemap(i);
    out << entry->GetLevel() << ":" << (entry->GetName() ? entry->GetName() : "(null)") << ";";
  }
  CByteString written;
  sitemap.Write(written);
  out << "\n" << Str(written);
  const std::string path = folder + "/contents" + std::to_string(n) + ".hhc";
  out << "written " << sitemap.Write(path.c_str());
  CHtmlFileSitemap reread;
  out << " reread " << reread.Read(path.c_str()) << " " << std::to_string(reread.GetSitemapArraySize()) << "\n";
}

void Lookups(int n, std::ostream& out) {
  static const char* const kNames[] = {"red", "AQUA", "cyan", "LightGoldenRodYellow", "#12ab3F", "#abc", "notacolour",
                                       "",    "Navy", "white"};
  COLORREF color = 0;
  CString name;
  for (int i = 0; i < 10; ++i) {
    const char* text = kNames[(n + i) % 10];
    out << ColorNameToColor(text, color) << ":" << color;
    out << ColorToColorName(color, name) << Str(name) << ";";
  }
  out << IsSupportedMultimediaFileName(n % 2 ? "a/b.MID" : "c.txt");
  out << IsRemoteUrlEx(n % 2 ? "HTTP://x" : "local.htm");
  out << Str(CHtmlPack::HtmlToText("&lt;&eacute;&amp;&#233;&euro;&bogus;&nbsp;x")) << "|";
  out << Str(CHtmlPack::TextToHtml("<\xE9&\xA0\x80>")) << "\n";
}

// Everything one thread does with job n; the text is what must not depend on
// the other threads.
std::string RunJob(const Job& job, int n, const std::string& folder) {
  std::ostringstream out;
  ParsePack(job.topic, out);
  if (!job.extraPage.empty()) ParsePack(job.extraPage, out);
  {
    CByteString bytes = Bytes(job.topic);
    CHtmlFileEx doc(bytes, ("/help/topics/topic" + std::to_string(n) + ".htm").c_str());
    AnalyseTopic(doc, out);
    CHtmlFileEx copy(doc);
    EditAndSave(copy, n, folder, out);
  }
  if (!job.extraPage.empty()) {
    CByteString bytes = Bytes(job.extraPage);
    CHtmlFileEx doc(bytes, "/help/extra.htm");
    AnalyseTopic(doc, out);
  }
  ParseSheet(job.sheet, n, folder, out);
  ReadWriteSitemap(job.sitemap, n, folder, out);
  Lookups(n, out);
  return out.str();
}

// The whole run in a process of its own; the exit code is 0 when every
// threaded result equals the single-threaded one.
[[noreturn]] void RunThreadsThenCompare(const std::vector<Job>& jobs) {
  int failures = 0;
  {
    test::TempDir dir;
    const std::string& folder = dir.path();
    std::vector<std::string> threaded(jobs.size());
    std::latch start(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&, t] {
        start.arrive_and_wait();
        for (int n = t; n < kJobs; n += kThreads)
          threaded[static_cast<size_t>(n)] = RunJob(jobs[static_cast<size_t>(n)], n, folder);
      });
    }
    for (std::thread& thread : threads) thread.join();

    for (int n = 0; n < kJobs; ++n) {
      const std::string alone = RunJob(jobs[static_cast<size_t>(n)], n, folder);
      const std::string& shared = threaded[static_cast<size_t>(n)];
      // A job whose saves failed would compare equal too.
      const bool worked = alone.find("saved 1") != std::string::npos &&
                          alone.find("sheet saved 1 same 1") != std::string::npos &&
                          alone.find("written 1 reread 1") != std::string::npos;
      if (alone == shared && worked) continue;
      size_t at = 0;
      while (at < alone.size() && at < shared.size() && alone[at] == shared[at]) ++at;
      std::fprintf(stderr, "job %d differs at byte %zu (%zu/%zu bytes):\n  alone:    %s\n  threaded: %s\n", n, at,
                   alone.size(), shared.size(), alone.substr(at > 40 ? at - 40 : 0, 120).c_str(),
                   shared.substr(at > 40 ? at - 40 : 0, 120).c_str());
      ++failures;
    }
  }
  // exit, not _Exit: the sanitizers report and set the exit code at exit.
  std::exit(failures == 0 ? 0 : 1);
}

TEST(ConcurrencyDeathTest, ThreadsWorkingOnTheirOwnDocumentsGetTheSingleThreadResults) {
  // The "threadsafe" style runs the test again in a fresh process, so that
  // no earlier test has prepared any table.
  const std::string style = GTEST_FLAG_GET(death_test_style);
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::vector<Job> jobs = MakeJobs();
  for (const Job& job : jobs) ASSERT_FALSE(job.extraPage.empty() || job.sheet.empty() || job.sitemap.empty());
  EXPECT_EXIT(RunThreadsThenCompare(jobs), ::testing::ExitedWithCode(0), "");
  GTEST_FLAG_SET(death_test_style, style);
}

}  // namespace
}  // namespace telvanix
