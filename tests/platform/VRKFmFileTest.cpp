#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

/// As an appender writes.
bool write(VRKFmFile& file, const std::string& bytes) {
  const auto count = static_cast<long>(bytes.size());
  return file.seekFromEnd(0) == 0 && file.write(bytes.data(), count) == count && file.flush() != 0;
}

unsigned modeOf(const std::string& path) { return static_cast<unsigned>(std::filesystem::status(path).permissions()); }

}  // namespace

TEST(VRKFmFile, GivesNewFilesAModeUnderTheMaskAndLeavesOldOnesAlone) {
  const TempDir dir;
  for (const auto& [mask, expected] : {std::pair(0u, 0640u), {077u, 0600u}, {027u, 0640u}}) {
    ::umask(mask);
    const std::string path = dir.file("log" + std::to_string(mask));
    const I18NString name(path.c_str());
    VRKFmFile file, again;
    EXPECT_TRUE(file.open(name, VRKFmFile::CREATE_EXCLUSIVE) && modeOf(path) == expected) << mask;
    EXPECT_TRUE(!again.open(name, VRKFmFile::CREATE_EXCLUSIVE) && again.getLastError() == EEXIST);
    EXPECT_NE(std::system(("ls -l /proc/self/fd | grep -q " + path).c_str()), 0) << "programs that are started";
    ASSERT_EQ(::chmod(path.c_str(), 0666), 0);
    EXPECT_TRUE(VRKFmFile().open(name, VRKFmFile::TRUNCATE) && modeOf(path) == 0666u);
  }
}

// A signal may come in the middle of a write, before or after a part has been written.
TEST(VRKFmFile, GoesOnWhereASignalInterruptedIt) {
  const Deadline deadline(60);
  const TempDir dir;
  ASSERT_EQ(::mkfifo(dir.file("pipe").c_str(), 0600), 0);
  struct sigaction action {};
  action.sa_handler = [](int) {};  // without SA_RESTART
  ASSERT_EQ(::sigaction(SIGUSR1, &action, nullptr), 0);
  std::size_t received = 0;
  std::thread reading([&] {
    const int descriptor = ::open(dir.file("pipe").c_str(), O_RDONLY);
    char bytes[5000];
    for (ssize_t count; (count = ::read(descriptor, bytes, sizeof bytes)) > 0 || (count < 0 && errno == EINTR);) {
      if (count > 0) received += static_cast<std::size_t>(count);
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    ::close(descriptor);
  });
  VRKFmFile file;
  // Before it is read, it cannot be opened; that is known at once.
  ASSERT_TRUE(eventually([&] { return file.open(dir.file("pipe").c_str(), VRKFmFile::EXISTING); }));
  const pthread_t writer = ::pthread_self();
  const std::string chunk(100000, 'x');
  {
    const Meanwhile interrupting({[&] { ::pthread_kill(writer, SIGUSR1), ::usleep(100); }});
    for (int i = 0; i < 20; ++i) EXPECT_TRUE(write(file, chunk)) << i;
  }
  file.close();
  reading.join();
  EXPECT_EQ(received, 20 * chunk.size());
}

// As a terminal that another program has made non-blocking.
TEST(VRKFmFile, AFullPipeIsWaitedForUntilEverythingIsWritten) {
  const Deadline deadline(30);
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
