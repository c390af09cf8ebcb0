// telvanix style PAGE [--select SELECTOR] [--json]: the effective format of
// a page's elements, as a browser computes it, with each value's origin.
#include <nlohmann/json.hpp>

#include <cstdio>

#include "cli/attribute_text.h"
#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/page_files.h"
#include "telvanix/css/css_pack_ex_manager.h"
#include "telvanix/view/html_file_view.h"
#include "telvanix/view/tag_format.h"

namespace telvanix::tool {

namespace {

const char kHelp[] =
    "usage: telvanix style PAGE [--select SELECTOR] [--json]\n"
    "\n"
    "Prints the effective format of every element of the page (HTML and HEAD\n"
    "included, in document order) as a browser computes it: colours as\n"
    "rgb(r, g, b), lengths in px, font weights as numbers, keywords in lower\n"
    "case; and where each value came from: \"default\" (the tag defaults),\n"
    "\"attribute\", \"FILE:LINE\" of a stylesheet rule, \"inline\", \"inherited\"\n"
    "or \"initial\".\n"
    "\n"
    "  --select SELECTOR  only the elements the selector applies to\n"
    "                     (\"p.note\", \"div > a\", \"h1, h2\")\n"
    "  --json             one object: {\"file\", \"elements\": [{\"tag\", \"line\",\n"
    "                     \"computed\": {property: value}, \"origin\": {property: origin}}]}\n"
    "\n"
    "A stylesheet that cannot be read is named on stderr and left out.\n"
    "Exit status: 0 done, 1 a stylesheet could not be read, 2 the page could not be read.\n";

int Run(const std::vector<std::string>& args) {
  CommandLine cl;
  if (int rc = StartCommand(args, {{"select", 1}, {"json", 0}}, kHelp, cl, 1, 1); rc >= 0)
    return rc;
  const std::string& path = cl.operands()[0];
  {
    CByteString bytes;
    std::string error;
    if (!LoadTopicBytes(path, bytes, error)) {
      PrintError(error);
      return kExitError;
    }
  }
  CCssPackExManager manager;
  CHtmlFileView view(path.c_str(), &manager);
  if (!view.BuildView()) {
    PrintError(path + ": cannot be read as a page");
    return kExitError;
  }
  const bool selecting = cl.Has("select");
  const std::string selector = selecting ? cl.Values("select").front() : std::string();
  const UINT codePage = view.GetPageCodePage();
  const bool json = cl.Has("json");
  nlohmann::ordered_json elements = nlohmann::ordered_json::array();
  std::string text;
  const int count = view.GetElementCount();
  for (int i = 0; i < count; ++i) {
    if (selecting && !view.IsElementSelected(i, selector.c_str()))
      continue;
    const CHtmlTagFormat* format = view.GetTagFormat(i);
    if (!format)
      continue;
    nlohmann::ordered_json computed = nlohmann::ordered_json::object();
    nlohmann::ordered_json origin = nlohmann::ordered_json::object();
    char head[64];
    std::snprintf(head, sizeof head, "%d ", format->GetLine());
    text += head + AttributeValueToUtf8(format->GetTagName(), codePage) + "\n";
    for (int p = 0; p < CCssStyleCombine::emPropertyCount; ++p) {
      const auto property = static_cast<CCssStyleCombine::EmProperty>(p);
      const char* name = CHtmlTagFormat::GetPropertyName(property);
      const std::string value = AttributeValueToUtf8(format->GetComputedValue(property), codePage);
      const std::string from = FileNameToUtf8(format->GetOriginText(property).GetString());
      computed[name] = value;
      origin[name] = from;
      text += std::string("  ") + name + ": " + value + " (" + from + ")\n";
    }
    if (json)
      elements.push_back({{"tag", AttributeValueToUtf8(format->GetTagName(), codePage)},
                          {"line", format->GetLine()},
                          {"computed", std::move(computed)},
                          {"origin", std::move(origin)}});
  }
  if (json) {
    nlohmann::ordered_json out = {{"file", FileNameToUtf8(path)}, {"elements", std::move(elements)}};
    std::printf("%s\n", out.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace).c_str());
  } else {
    std::fputs(text.c_str(), stdout);
  }
  const CStringArray& errors = view.GetSheetErrors();
  for (int i = 0; i < errors.GetSize(); ++i)
    PrintError(FileNameToUtf8(errors[i].GetString()));
  return errors.GetSize() ? kExitProblems : kExitClean;
}

}  // namespace

extern const Command kStyleCommand = {"style", "effective format of a page's elements, with origins", Run};

}  // namespace telvanix::tool
