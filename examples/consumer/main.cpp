// Uses the library only through the umbrella header of an installed copy.
#include <telvanix/telvanix.h>

#include <cstdio>

int main() {
  telvanix::CStringList names;
  names.AddTail("index.htm");
  names.AddTail("topic.htm");
  telvanix::CString joined;
  for (telvanix::POSITION pos = names.GetHeadPosition(); pos;) {
    joined += names.GetNext(pos);
    joined += ";";
  }
  std::printf("%s\n", static_cast<const char*>(joined));
  return joined == "index.htm;topic.htm;" ? 0 : 1;
}
