#include <fcntl.h>
#include <sys/stat.h>

#include "tests/support/Tests.h"

namespace {

using vrktest::TempDir;

I18NString text(const std::string& path) { return I18NString(std::string_view(path)); }

/// As an appender writes.
bool write(VRKFmFile& file, const std::string& bytes) {
  const auto count = static_cast<long>(bytes.size());
  return file.seekFromEnd(0) == 0 && file.write(bytes.data(), count) == count && file.flush() != 0;
}

/// The descriptor under which this process has the file open, or -1.
int descriptorOf(const std::string& path) {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (std::filesystem::read_symlink(entry.path(), gone) == path) return std::stoi(entry.path().filename());
  }
  return -1;
}

unsigned modeOf(const std::string& path) {
  struct stat status;
  return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

}  // namespace

TEST(VRKFmFile, OpensByFlagsAndAlwaysWritesAtTheEnd) {
  const struct {
    int flags;
    bool exists;
    int error;
    std::string content;
  } CASES[] = {{VRKFmFile::EXISTING, true, 0, "old new"},
               {VRKFmFile::EXISTING, false, ENOENT, ""},
               {VRKFmFile::TRUNCATE, true, 0, " new"},
               {VRKFmFile::TRUNCATE, false, ENOENT, ""},
               {VRKFmFile::CREATE_EXCLUSIVE, true, EEXIST, "old"},
               {VRKFmFile::CREATE_EXCLUSIVE, false, 0, " new"}};
  for (const auto& c : CASES) {
    const TempDir dir;
    if (c.exists) dir.write("log", "old");
    VRKFmFile file;
    EXPECT_EQ(file.open(text(dir.file("log")), c.flags), c.error == 0) << c.flags << c.exists;
    EXPECT_TRUE(file.getLastError() == c.error && file.isOpen() == (c.error == 0));
    if (file.isOpen()) {
      EXPECT_TRUE(write(file, " new") && file.size() == static_cast<std::int64_t>(c.content.size()));
      EXPECT_TRUE(::fcntl(descriptorOf(dir.file("log")), F_GETFL) & O_APPEND);
      EXPECT_TRUE(::fcntl(descriptorOf(dir.file("log")), F_GETFD) & FD_CLOEXEC);
    }
    EXPECT_EQ(dir.read("log"), c.content);
    file.close();
    file.close();
    EXPECT_EQ(descriptorOf(dir.file("log")), -1);
  }
}

TEST(VRKFmFile, GivesNewFilesAModeUnderTheMaskAndLeavesOldOnesAlone) {
  const mode_t before = ::umask(0);
  const TempDir dir;
  for (const auto& [mask, expected] : {std::pair(0u, 0640u), {027u, 0640u}, {077u, 0600u}}) {
    ::umask(mask);
    const std::string path = dir.file("log" + std::to_string(mask));
    EXPECT_TRUE(VRKFmFile().open(text(path), VRKFmFile::CREATE_EXCLUSIVE) && modeOf(path) == expected) << mask;
    ASSERT_EQ(::chmod(path.c_str(), 0666), 0);
    EXPECT_TRUE(VRKFmFile().open(text(path), VRKFmFile::TRUNCATE) && modeOf(path) == 0666u);
  }
  ::umask(before);
}

TEST(VRKFmFile, AnAttachedFileIsWrittenAtItsEndAndNotClosed) {
  const TempDir dir;
  const int descriptor = ::open(dir.write("redirected", "before ").c_str(), O_RDWR);
  VRKFmFile file;
  EXPECT_TRUE(file.attach(descriptor) && write(file, "event"));
  file.close();
  EXPECT_EQ(::write(descriptor, " after", 6), 6);
  EXPECT_EQ(dir.read("redirected"), "before event after");
  ::close(descriptor);
}

// As a terminal that another program has made non-blocking.
TEST(VRKFmFile, AFullPipeIsWaitedForUntilEverythingIsWritten) {
  const vrktest::Deadline deadline(30);
  int ends[2];
  ASSERT_TRUE(::pipe(ends) == 0 && ::fcntl(ends[1], F_SETFL, O_NONBLOCK) == 0);
  std::string sent(3000000, '\0'), received;
  for (std::size_t i = 0; i < sent.size(); ++i) sent[i] = static_cast<char>('a' + i % 23);
  VRKFmFile file;
  ASSERT_TRUE(file.attach(ends[1]));
  std::thread writer([&] { EXPECT_TRUE(write(file, sent)); });
  char bytes[5000];
  while (received.size() < sent.size()) {
    const ssize_t count = ::read(ends[0], bytes, sizeof bytes);
    received.append(bytes, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  }
  writer.join();
  EXPECT_TRUE(received == sent);
  ::signal(SIGPIPE, SIG_IGN);
  ::close(ends[0]);
  EXPECT_TRUE(!write(file, "x") && file.getLastError() == EPIPE);
  ::close(ends[1]);
}

TEST(VRKFmFile, ReturnsFailuresAndGoesOnAfterThem) {
  VRKFmFile file;
  EXPECT_TRUE(file.write("x", 1) == -1 && file.getLastError() == EBADF && file.flush() == 0 && file.size() == -1);
  const TempDir dir;
  ASSERT_TRUE(file.open(text(dir.write("log", "")), VRKFmFile::EXISTING));
  for (const auto point : {VRKFault::FILE_SEEK, VRKFault::FILE_WRITE, VRKFault::FILE_FLUSH}) {
    VRKFault::arm(point);
    EXPECT_TRUE(!write(file, "x") && file.getLastError() == EIO) << point;
  }
  VRKFault::disarm();
  EXPECT_FALSE(file.open(text(dir.file("none/log")), VRKFmFile::CREATE_EXCLUSIVE));
  EXPECT_TRUE(write(file, "still open"));
  EXPECT_EQ(dir.read("log"), "xstill open") << "the failing flush came after its write";
}

TEST(VRKConfigurationFactory, ResolvesRelativeNamesOnce) {
  VRKConfigurationFactory& factory = VRKConfigurationFactory::getInstance();
  EXPECT_EQ(factory.resolvePath("logs/a.log"), "logs/a.log");
  factory.setBaseDirectory("here");
  const I18NString resolved = factory.resolvePath("logs/a.log");
  EXPECT_EQ(resolved, text(std::filesystem::current_path().string() + "/here/logs/a.log"));
  EXPECT_TRUE(factory.resolvePath(resolved) == resolved && factory.resolvePath("").isEmpty());
}
