// Project files as data: tests/data/project/NAME.hhp is read, its sections and
// file values listed, then each value is renamed (a longer name, so that
// every later offset moves) and the [FILES] lines removed, and the bytes are
// shown after each step: nothing but the values may change.
#include "golden_cases.h"
#include "telvanix/project/help_project.h"

namespace telvanix {
namespace {

std::string Describe(const std::string& input) {
  CHtmlHelpProject hhp;
  const auto* bytes = reinterpret_cast<const unsigned char*>(input.data());
  if (!hhp.Analyse(bytes, static_cast<int>(input.size()))) return "not read\n";
  std::string out = "sections:";
  for (const std::string& s : hhp.GetSectionNames()) out += " [" + s + "]";
  out += "\ndefault topic: " + hhp.GetOption("default TOPIC").str() + "\n";
  for (const auto& v : hhp.GetFileValues()) {
    out += "line " + std::to_string(v.m_nLine) + " role " + std::to_string(v.m_emRole) + " input " +
           std::to_string(CHtmlHelpProject::IsInputRole(v.m_emRole, v.m_strKey)) + " key '" + v.m_strKey +
           "' value '" + v.m_strValue + "'\n";
    // The offsets name exactly the value.
    if (input.compare(static_cast<size_t>(v.m_nOffset), static_cast<size_t>(v.m_nLength), v.m_strValue) != 0)
      out += "  offset does not hold the value\n";
  }
  const size_t count = hhp.GetFileValues().size();
  for (size_t i = 0; i < count; ++i) hhp.SetFileValue(static_cast<int>(i), ("new/" + hhp.GetFileValues()[i].m_strValue).c_str());
  out += "-- every value renamed (changed " + std::to_string(hhp.IsChanged()) + "):\n" + hhp.GetBytes();
  for (size_t i = hhp.GetFileValues().size(); i-- > 0;)
    if (hhp.GetFileValues()[i].m_emRole == CHtmlHelpProject::emRoleListedFile) hhp.RemoveFileValue(static_cast<int>(i));
  out += "-- [FILES] lines removed:\n" + hhp.GetBytes();
  return out;
}

TEST(HelpProjectFile, EveryCaseOfTestsDataProject) {
  test::RunGoldenCases("project", ".hhp", [](const std::string&, const std::string& input) { return Describe(input); },
                       2);
}

TEST(HelpProjectFile, BadInputGivesZero) {
  CHtmlHelpProject hhp;
  EXPECT_EQ(hhp.Analyse(nullptr, 3), 0);
  EXPECT_EQ(hhp.Read("/nonexistent/x.hhp"), 0);
  EXPECT_EQ(hhp.SetFileValue(0, "x"), 0);
  EXPECT_EQ(hhp.RemoveFileValue(-1), 0);
}

}  // namespace
}  // namespace telvanix
