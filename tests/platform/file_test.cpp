#include "telvanix/platform/file.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "telvanix/platform/file_mapping.h"
#include "test_util.h"

using namespace telvanix;

namespace {

constexpr UINT kWriteNew = CkolmFile::modeCreate | CkolmFile::modeWrite | CkolmFile::typeBinary;

std::string ReadAll(CkolmFile& file) {
  std::string out;
  char buffer[7];
  for (;;) {
    UINT got = file.Read(buffer, sizeof buffer);
    out.append(buffer, got);
    if (got < sizeof buffer)
      return out;
  }
}

// Lowers the largest file this process may write, so a write fails midway.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    m_oldHandler = ::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &m_old);
    struct rlimit lowered = m_old;
    lowered.rlim_cur = bytes;
    ::setrlimit(RLIMIT_FSIZE, &lowered);
  }
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &m_old);
    ::signal(SIGXFSZ, m_oldHandler);
  }

 private:
  struct rlimit m_old;
  sighandler_t m_oldHandler;
};

}  // namespace

TEST(KolmFile, WritesThenReadsBack) {
  test::TempDir dir;
  std::string path = dir / "page.htm";
  {
    CkolmFile file;
    ASSERT_TRUE(file.Open(path.c_str(), kWriteNew));
    file.Write("<p>hello</p>", 12);
    EXPECT_EQ(file.GetLength(), 12u);
    EXPECT_EQ(file.GetPosition(), 12u);
    file.Close();
    EXPECT_FALSE(file.IsOpen());
  }
  CkolmFile file(path.c_str(), CkolmFile::modeRead);
  EXPECT_EQ(file.GetLength(), 12u);
  EXPECT_EQ(ReadAll(file), "<p>hello</p>");
  EXPECT_EQ(file.Seek(3, CkolmFile::begin), 3u);
  char five[5];
  EXPECT_EQ(file.Read(five, 5), 5u);
  EXPECT_EQ(std::string(five, 5), "hello");
  EXPECT_EQ(file.Seek(-2, CkolmFile::end), 10u);
  EXPECT_EQ(file.Read(five, 5), 2u);  // short at the end
  EXPECT_EQ(file.Read(five, 0), 0u);
  EXPECT_THROW(file.Write("x", 1), CkolmFileException);  // opened for reading
  EXPECT_THROW(file.Read(nullptr, 4), CkolmFileException);
  EXPECT_THROW(file.Seek(-100, CkolmFile::begin), CkolmFileException);
  file.Close();
  EXPECT_THROW(file.Read(five, 1), CkolmFileException);  // closed
}

TEST(KolmFile, TargetIsReplacedOnlyOnCloseNeverByAnAbandonedWrite) {
  test::TempDir dir;
  dir.Write("page.htm", "old page");
  std::string path = dir / "page.htm";
  struct stat before;
  ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
  ASSERT_EQ(::stat(path.c_str(), &before), 0);
  {
    CkolmFile file(path.c_str(), kWriteNew);
    file.Write("half a pa", 9);
    // destroyed without Close, as on an error path
  }
  {
    CkolmFile file(path.c_str(), kWriteNew);
    file.Write("x", 1);
    file.Abort();
  }
  {
    // A new file abandoned the same way never appears.
    CkolmStdioFile file((dir / "new.htm").c_str(), kWriteNew);
    file.WriteString("buffered");
  }
  EXPECT_EQ(dir.Read("page.htm"), "old page");
  EXPECT_EQ(dir.List(), "page.htm");

  CkolmFile file;
  ASSERT_TRUE(file.Open(path.c_str(), kWriteNew));
  file.Write("new", 3);
  EXPECT_EQ(dir.Read("page.htm"), "old page");  // still the old bytes
  file.Close();
  EXPECT_EQ(dir.Read("page.htm"), "new");
  EXPECT_EQ(dir.List(), "page.htm");
  struct stat after;
  ASSERT_EQ(::stat(path.c_str(), &after), 0);
  EXPECT_EQ(after.st_mode & 07777, 0640u);  // the replacement keeps the mode
  EXPECT_NE(after.st_ino, before.st_ino);   // a new file, renamed into place
}

TEST(KolmFile, WriteFailingMidwayKeepsTheTarget) {
  test::TempDir dir;
  const std::string original(1000, 'o'), big(64 * 1024, 'n'), path = dir / "page.htm";
  dir.Write("page.htm", original);
  // Writes past a 4096-byte limit and closes: true when that threw as a full disk.
  auto fails = [&](auto* type, UINT bytes) {
    FileSizeLimit limit(4096);
    try {
      std::remove_pointer_t<decltype(type)> file(path.c_str(), kWriteNew);
      file.Write(big.data(), bytes);
      file.Close();
    } catch (const CkolmFileException& e) {
      EXPECT_EQ(e.GetErrno(), EFBIG);
      EXPECT_EQ(e.GetCause(), CkolmFileException::diskFull);
      EXPECT_NE(std::string(e.what()).find("page.htm"), std::string::npos);
      return true;
    }
    return false;
  };
  EXPECT_TRUE(fails(static_cast<CkolmFile*>(nullptr), static_cast<UINT>(big.size())));
  EXPECT_EQ(dir.Read("page.htm"), original);
  // The buffered class fails the same way on its final flush.
  EXPECT_TRUE(fails(static_cast<CkolmStdioFile*>(nullptr), 5000));
  EXPECT_EQ(dir.Read("page.htm"), original);
  EXPECT_EQ(dir.List(), "page.htm");
}

TEST(KolmFile, OpenFailuresAreReportedNotThrown) {
  test::TempDir dir;
  dir.Write("folder/file.txt", "x");
  CkolmFile file;
  CkolmFileException error;
  EXPECT_FALSE(file.Open((dir / "missing.htm").c_str(), CkolmFile::modeRead, &error));
  EXPECT_EQ(error.GetCause(), CkolmFileException::fileNotFound);
  EXPECT_EQ(error.GetErrno(), ENOENT);
  EXPECT_NE(error.GetFileName().Find("missing.htm"), -1);

  EXPECT_FALSE(file.Open(nullptr, CkolmFile::modeRead));
  const std::string longPath = dir.path() + "/" + std::string(5000, 'x');
  EXPECT_FALSE(file.Open(longPath.c_str(), kWriteNew, &error));
  const UINT read = CkolmFile::modeRead;
  // No name, a folder, a missing folder, no modeCreate, a file used as a folder, an overlong name.
  for (auto [name, mode] : {std::pair{std::string(), kWriteNew}, {dir / "folder", read}, {dir / "folder", kWriteNew},
                            {dir / "nowhere/new.htm", kWriteNew}, {dir / "absent.htm", UINT(CkolmFile::modeWrite)},
                            {dir / "folder/file.txt/below", read}, {longPath, read}})
    EXPECT_FALSE(file.Open(name.c_str(), mode)) << name;
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(dir.List(), "folder");

  // A pipe under a page's name is refused rather than waited on or replaced.
  ASSERT_EQ(::mkfifo((dir / "pipe.htm").c_str(), 0644), 0);
  EXPECT_FALSE(file.Open((dir / "pipe.htm").c_str(), CkolmFile::modeRead));
  EXPECT_FALSE(file.Open((dir / "pipe.htm").c_str(), kWriteNew));
  struct stat st;
  ASSERT_EQ(::stat((dir / "pipe.htm").c_str(), &st), 0);
  EXPECT_TRUE(S_ISFIFO(st.st_mode));
  EXPECT_EQ(dir.List(), "folder pipe.htm");

  EXPECT_THROW(CkolmFile((dir / "missing.htm").c_str(), CkolmFile::modeRead), CkolmFileException);
  EXPECT_THROW(CkolmStdioFile((dir / "missing.htm").c_str(), CkolmFile::modeRead), CkolmFileException);
}

TEST(KolmFile, NoTruncateEditsACopyOfTheContents) {
  test::TempDir dir;
  dir.Write("log.txt", "line one\n");
  std::string path = dir / "log.txt";
  {
    CkolmFile file(path.c_str(), CkolmFile::modeCreate | CkolmFile::modeNoTruncate | CkolmFile::modeReadWrite);
    EXPECT_EQ(file.GetLength(), 9u);
    EXPECT_EQ(file.SeekToEnd(), 9u);
    file.Write("line two\n", 9);
    file.SeekToBegin();
    char first[4];
    EXPECT_EQ(file.Read(first, 4), 4u);
    EXPECT_EQ(std::string(first, 4), "line");
    EXPECT_EQ(dir.Read("log.txt"), "line one\n");
    file.Close();
  }
  EXPECT_EQ(dir.Read("log.txt"), "line one\nline two\n");
  {
    CkolmFile file(path.c_str(), CkolmFile::modeWrite);  // existing, not truncated
    file.Write("LINE", 4);
    file.SetLength(8);
    file.Close();
  }
  EXPECT_EQ(dir.Read("log.txt"), "LINE one");
  {
    CkolmFile file(path.c_str(), CkolmFile::modeCreate | CkolmFile::modeNoTruncate | CkolmFile::modeWrite);
    char c;
    EXPECT_THROW(file.Read(&c, 1), CkolmFileException);  // write-only
  }
  EXPECT_EQ(dir.List(), "log.txt");
}

TEST(KolmFile, NamesResolveCaseBlind) {
  test::TempDir dir;
  dir.Write("Help/Topics/Page.HTM", "old");
  CkolmFile file;
  ASSERT_TRUE(file.Open((dir.path() + "\\HELP\\topics\\page.htm").c_str(), kWriteNew));
  EXPECT_EQ(std::string(file.GetFilePath()), dir / "Help/Topics/Page.HTM");
  file.Write("new", 3);
  file.Close();
  EXPECT_EQ(dir.List("Help/Topics"), "Page.HTM");
  EXPECT_EQ(dir.Read("Help/Topics/Page.HTM"), "new");

  ASSERT_TRUE(file.Open((dir.path() + "/help/TOPICS/Fresh.htm").c_str(), kWriteNew));
  file.Close();
  EXPECT_EQ(dir.List("Help/Topics"), "Fresh.htm Page.HTM");
}

TEST(KolmStdioFile, BufferedWritesAndReadsAgree) {
  test::TempDir dir;
  std::string path = dir / "data.bin";
  std::string expected;
  for (int i = 0; i < 40000; ++i)
    expected += static_cast<char>('a' + i % 26) + std::to_string(i % 7);
  {
    CkolmStdioFile file(path.c_str(), kWriteNew);
    for (size_t at = 0; at < expected.size(); at += 7) {
      size_t n = std::min<size_t>(7, expected.size() - at);
      file.Write(expected.data() + at, static_cast<UINT>(n));
    }
    EXPECT_EQ(file.GetPosition(), expected.size());
    EXPECT_EQ(file.GetLength(), expected.size());
    file.Write(expected.data(), 0);
    file.Close();
  }
  EXPECT_EQ(dir.Read("data.bin"), expected);

  CkolmStdioFile file(path.c_str(), CkolmFile::modeRead);
  std::string got;
  char buffer[13];
  for (UINT n; (n = file.Read(buffer, sizeof buffer)) > 0;)
    got.append(buffer, n);
  EXPECT_EQ(got, expected);

  // Seeking relative to what the caller has read, not to the read-ahead.
  file.SeekToBegin();
  ASSERT_EQ(file.Read(buffer, 4), 4u);
  EXPECT_EQ(file.GetPosition(), 4u);
  EXPECT_EQ(file.Seek(2, CkolmFile::current), 6u);
  ASSERT_EQ(file.Read(buffer, 2), 2u);
  EXPECT_EQ(std::string(buffer, 2), expected.substr(6, 2));

  std::string large(200000, 'L');
  CkolmStdioFile big((dir / "big.bin").c_str(), kWriteNew);
  big.Write("head", 4);
  big.Write(large.data(), static_cast<UINT>(large.size()));  // bypasses the buffer
  big.Close();
  EXPECT_EQ(dir.Read("big.bin"), "head" + large);
}

TEST(KolmStdioFile, ReadsLines) {
  test::TempDir dir;
  dir.Write("lines.txt", "first\r\nsecond\n\nlast without newline");
  CkolmStdioFile file((dir / "lines.txt").c_str(), CkolmFile::modeRead | CkolmFile::typeText);
  CString line;
  for (const char* want : {"first", "second", "", "last without newline"}) {
    ASSERT_TRUE(file.ReadString(line));
    EXPECT_EQ(line, want);
  }
  EXPECT_FALSE(file.ReadString(line));
  EXPECT_TRUE(line.IsEmpty());

  file.SeekToBegin();
  char small[5];
  ASSERT_NE(file.ReadString(small, sizeof small), nullptr);
  EXPECT_STREQ(small, "firs");
  ASSERT_NE(file.ReadString(small, sizeof small), nullptr);
  EXPECT_STREQ(small, "t\r\n");
  EXPECT_EQ(file.ReadString(nullptr, 4), nullptr);
  EXPECT_EQ(file.ReadString(small, 0), nullptr);

  CkolmStdioFile out((dir / "out.txt").c_str(), kWriteNew);
  out.WriteString("a\n");
  out.WriteString(nullptr);
  out.WriteString("b");
  out.Close();
  EXPECT_EQ(dir.Read("out.txt"), "a\nb");
}

TEST(KolmHandles, CreateAndCloseLikeThePlatformCalls) {
  test::TempDir dir;
  std::string path = dir / "page.htm";
  EXPECT_EQ(kolmCreateFile(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(kolmCreateFile(nullptr, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr), INVALID_HANDLE_VALUE);

  HANDLE out = kolmCreateFile(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  ASSERT_NE(out, INVALID_HANDLE_VALUE);
  EXPECT_EQ(kolmWriteFile(out, "abcdef", 6), 6);
  EXPECT_FALSE(std::filesystem::exists(path));  // in place only once closed
  EXPECT_TRUE(kolmCloseFile(out));
  EXPECT_FALSE(kolmCloseFile(out));  // already closed
  EXPECT_EQ(dir.List(), "page.htm");

  EXPECT_EQ(kolmCreateFile(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr), INVALID_HANDLE_VALUE);
  HANDLE in = kolmCreateFile(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(in, INVALID_HANDLE_VALUE);
  EXPECT_EQ(kolmGetFileSize(in), 6);
  EXPECT_GE(kolmGetFileDescriptor(in), 0);
  char buffer[8];
  EXPECT_EQ(kolmReadFile(in, buffer, sizeof buffer), 6);
  EXPECT_EQ(kolmWriteFile(in, "x", 1), -1);
  EXPECT_TRUE(kolmCloseFile(in));

  int notAHandle = 0;
  EXPECT_FALSE(kolmCloseFile(&notAHandle));
  EXPECT_FALSE(kolmCloseFile(nullptr));
  EXPECT_EQ(kolmGetFileSize(&notAHandle), -1);
  EXPECT_EQ(kolmGetFileDescriptor(INVALID_HANDLE_VALUE), -1);
  EXPECT_EQ(kolmReadFile(nullptr, buffer, 1), -1);

  HANDLE opened = kolmCreateFile(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS, 0, nullptr);
  ASSERT_NE(opened, INVALID_HANDLE_VALUE);
  EXPECT_EQ(kolmGetFileSize(opened), 6);  // kept, not truncated
  EXPECT_TRUE(kolmCloseFile(opened));
  HANDLE truncated = kolmCreateFile(path.c_str(), GENERIC_WRITE, 0, nullptr, TRUNCATE_EXISTING, 0, nullptr);
  ASSERT_NE(truncated, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(kolmCloseFile(truncated));
  EXPECT_EQ(dir.Read("page.htm"), "");
}

TEST(FileMapping, MapsWholeFilesReadOnly) {
  test::TempDir dir;
  dir.Write("page.htm", "<html></html>");
  dir.Write("empty.htm", "");
  CFileMapping mapping;
  EXPECT_FALSE(mapping.IsOpen());
  ASSERT_TRUE(mapping.Open((dir / "page.htm").c_str()));
  ASSERT_EQ(mapping.GetSize(), 13u);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(mapping.GetData()), 13), "<html></html>");

  // Replacing the page does not disturb a view of the old one.
  {
    CkolmFile file((dir / "page.htm").c_str(), kWriteNew);
    file.Write("x", 1);
    file.Close();
  }
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(mapping.GetData()), 13), "<html></html>");

  ASSERT_TRUE(mapping.Open((dir / "empty.htm").c_str()));
  EXPECT_TRUE(mapping.IsOpen());
  EXPECT_EQ(mapping.GetSize(), 0u);
  EXPECT_NE(mapping.GetData(), nullptr);

  EXPECT_FALSE(mapping.Open((dir / "missing.htm").c_str()));
  EXPECT_FALSE(mapping.IsOpen());
  EXPECT_EQ(mapping.GetData(), nullptr);
  EXPECT_FALSE(mapping.Open(nullptr));
  EXPECT_FALSE(mapping.Open(dir.path().c_str()));
  mapping.Close();
  mapping.Close();

  ASSERT_TRUE(mapping.Open((dir.path() + "\\PAGE.HTM").c_str()));
  CFileMapping moved(std::move(mapping));
  EXPECT_FALSE(mapping.IsOpen());
  EXPECT_EQ(moved.GetSize(), 1u);
  EXPECT_EQ(moved.GetData()[0], 'x');
}
