#include <sys/resource.h>

#include <cstring>
#include <deque>

#include "log4vrk/net/internal/LOGOutboxFiles.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

using Ring = LOGOutboxRing;

constexpr std::uint64_t SMALL = Ring::FEWEST_BYTES;
constexpr int EVENTS = 5;
const std::string TEXT(100, 'x');

std::unique_ptr<VRKMappedFile> anonymous() {
  auto memory = std::make_unique<VRKMappedFile>();
  EXPECT_TRUE(memory->makeAnonymous(Ring::fileSize(SMALL)));
  Ring::begin(*memory, SMALL, "12ab");
  return memory;
}

class OutboxTest : public testing::Test {
 protected:
  OutboxTest() {
    std::filesystem::create_directory(dir.file("run"));
    ::setenv("XDG_RUNTIME_DIR", dir.file("run").c_str(), 1);
  }
  I18NString recovery(const std::string& name = "recovery") const { return I18NString(dir.file(name).c_str()); }
  Texts left() const { return namesIn(dir.file("run/log4vrk")); }
  // As a killed process leaves it: nobody has the lock.
  std::string leaveOne() {
    Ring ring;
    ring.use(LOGOutboxFiles(recovery(), "test: ").make(SMALL));
    for (std::uint64_t n = 1; n <= EVENTS; ++n) EXPECT_TRUE(ring.put({TEXT + std::to_string(n), 1, 0}, n));
    return std::filesystem::relative(ring.file().path().toUtf8(), dir.path());
  }
  /// The sequences of what a start finds.
  std::string recovered(bool everything = true, const std::string& name = "recovery") {
    LOGRecoveryFiles files(recovery(name));
    files.open();
    EXPECT_EQ(everything, LOGOutboxFiles(recovery(name), "test: ").recover(files));
    std::string sequences;
    for (LOGRecoveryFiles::Record each; files.next(each);) {
      sequences += std::to_string(each.sequence);
      EXPECT_NE(each.payload.npos, each.payload.find(" sequence=\"" + std::to_string(each.sequence) + "\"xxx"));
    }
    files.acknowledge(1000);
    return sequences;
  }

  TempDir dir;
  const InternalLog log;
};

// Against a queue as one would write it, many times round; and what a dead process leaves is what there was.
TEST(LOGOutboxRing, GivesBackWhatWasPutInOrderAndHasNoMoreThanItsMemory) {
  Ring ring;
  ring.use(anonymous());
  std::deque<std::pair<std::uint64_t, std::string>> expected;  // not released
  std::size_t passed = 0;                                      // of those
  std::mt19937 random(20261122);
  std::uint64_t sequence = 0;
  for (int step = 0; step < 20000; ++step) {
    const std::string text(random() % (step % 50 == 0 ? 40000 : 300), static_cast<char>('a' + step % 26));
    if (random() % 2 == 0 && ring.put({text, 0, 0}, sequence + 1)) expected.emplace_back(++sequence, text);
    LOGEncodedEvent event;
    if (random() % 2 == 0 && ring.get(event, ring.tail())) {
      ASSERT_LT(passed, expected.size());
      EXPECT_EQ(expected[passed], std::make_pair(event.sequence, event.text));
      ring.pass();
      ++passed;
    }
    if (random() % 4 == 0 && passed > 0) {
      const std::size_t released = random() % (passed + 1);
      ring.release(expected.front().first + released);
      expected.erase(expected.begin(), expected.begin() + static_cast<long>(released));
      passed -= released;
    }
    ASSERT_LE(ring.used(), SMALL);
  }
  EXPECT_GT(ring.tail(), 20 * SMALL);
  auto copy = std::make_unique<VRKMappedFile>();
  copy->makeAnonymous(ring.file().size());
  std::memcpy(copy->data(), ring.file().data(), ring.file().size());
  Ring dead;
  std::string finding;
  ASSERT_EQ(LOGQueueHeader::WHOLE, dead.open(std::move(copy), finding)) << finding;
  for (const auto& each : expected) {
    LOGEncodedEvent event;
    ASSERT_TRUE(dead.get(event, dead.tail()));
    EXPECT_EQ(each, std::make_pair(event.sequence, event.text));
    dead.pass();
  }
  LOGEncodedEvent none;
  EXPECT_FALSE(dead.get(none, dead.tail()));
  EXPECT_EQ(0u, dead.damaged());
}

TEST_F(OutboxTest, KeepsAllThatCanBeReadOfADamagedFileAndSetsTheRestAside) {
  constexpr std::size_t RECORD = sizeof(Ring::Record) + 104, THIRD = Ring::BYTES_AT + 2 * RECORD;
  constexpr std::size_t TAIL = Ring::PAGE + offsetof(Ring::Control, tail);
  constexpr std::size_t HEAD = Ring::PAGE + offsetof(Ring::Control, head);
  const struct {
    const char *what, *line, *ending;
    std::size_t at;      // where a byte is changed, or where the file is cut off
    int byte;            // -1: cut off
    const char* events;  // that are recovered
  } cases[] = {
      {"whole", "has ended with events that were in no recovery file, and now are: 5", nullptr, HEAD, 0, "12345"},
      {"begun", "now are: 4", nullptr, TAIL, 4 * RECORD % 256, "1234"},  // 4 * 128 is 512
      {"released", "now are: 3", nullptr, HEAD + 1, 2 * RECORD / 256, "345"},
      {"foreign", "it is not the file of a queue", ".damaged", 0, 'x', ""},
      {"empty", "it is not the file of a queue (0 bytes)", ".damaged", 0, -1, ""},
      {"newer", "its version is 2, and this program knows 1", ".outbox", offsetof(LOGQueueHeader, version), 2, ""},
      {"header", "its header is damaged", ".damaged", offsetof(LOGQueueHeader, units), 1, ""},
      {"no bytes", "it is truncated to 8192 of 73728 bytes", ".damaged", Ring::BYTES_AT, -1, ""},
      {"cut in the third", "it is truncated to ", ".damaged", THIRD + 50, -1, "12"},
      {"cut in its head", "it is truncated to ", ".damaged", THIRD + 5, -1, "12"},
      {"head", "its positions are damaged (head 72057594037927936, ", ".damaged", HEAD + 7, 1, ""},
      {"tail", "its positions are damaged (head 0, tail ", ".damaged", TAIL + 3, 1, ""},
      {"sequence", "128 bytes of events are damaged", ".damaged", THIRD + offsetof(Ring::Record, sequence), 9, "1245"},
      {"length", "128 bytes of events are damaged", ".damaged", THIRD + offsetof(Ring::Record, length) + 3, 9, "1245"},
      {"text", "now are: 5", nullptr, THIRD + RECORD - 20, 'x', "12345"},
  };
  static_assert(RECORD == 128);
  for (const auto& each : cases) {
    const InternalLog lines;
    const std::string path = leaveOne();
    std::string bytes = dir.read(path);
    if (std::string(each.what) == "begun") bytes[TAIL + 1] = 2;
    each.byte < 0 ? bytes.resize(each.at) : static_cast<void>(bytes[each.at] = static_cast<char>(each.byte));
    dir.write(path, bytes);
    EXPECT_EQ(each.events, recovered()) << each.what;
    EXPECT_TRUE(lines.contains(path + ": ") && lines.contains(each.line)) << each.what << "\n" << lines.text();
    const Texts files = left();
    ASSERT_EQ(each.ending != nullptr ? 1u : 0u, files.size()) << each.what;
    if (files.empty()) continue;
    const std::filesystem::path file = dir.file("run/log4vrk/" + files[0]);
    EXPECT_EQ(each.ending, file.extension()) << each.what;
    EXPECT_EQ(bytes.size(), std::filesystem::file_size(file)) << each.what;
    std::filesystem::remove(file);
  }
}

TEST_F(OutboxTest, FindsWhatHasNoOwnerAndTheSameRecoveryDirectoryByAnyName) {
  Ring living;
  living.use(LOGOutboxFiles(recovery(), "").make(SMALL));
  EXPECT_TRUE(living.put({TEXT, 1, 0}, 9));
  leaveOne();
  EXPECT_EQ("", recovered(true, "other"));
  std::filesystem::create_directory_symlink(dir.file("recovery"), dir.file("link"));
  std::filesystem::create_directory(dir.file("recovery"));
  EXPECT_EQ("12345", recovered(true, "x/../link"));
  EXPECT_EQ(1u, left().size());
}

// The disk is full after two of them. The next attempt goes on with the third.
TEST_F(OutboxTest, LeavesWhatTheRecoveryFilesDoNotTake) {
  leaveOne();
  EXPECT_EQ(0, statusInChild([&] {
              ::signal(SIGXFSZ, SIG_IGN);
              const rlimit limit = {500, 500};
              ::setrlimit(RLIMIT_FSIZE, &limit);
              EXPECT_EQ("12", recovered(false));
            }));
  EXPECT_EQ("345", recovered());
  EXPECT_TRUE(left().empty());
}

TEST_F(OutboxTest, LeavesADirectoryAloneThatOthersMayWriteTo) {
  leaveOne();
  std::filesystem::permissions(dir.file("run/log4vrk"), std::filesystem::perms::all);
  EXPECT_EQ("", recovered());
  EXPECT_EQ(1u, left().size());
  const I18NString path = LOGOutboxFiles(recovery(), "test: ").make(SMALL)->path();
  EXPECT_NE(0U, path.toUtf8().find(dir.path())) << "it is made elsewhere";
  EXPECT_TRUE(log.contains("test: no queue in " + dir.file("run/log4vrk") + ": others may write to it (mode 0777)"));
  EXPECT_TRUE(VRKFmDir::removeFile(path));
}

}  // namespace
