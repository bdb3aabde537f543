#include "log4vrk/net/internal/LOGRecoveryFiles.h"
#include "log4vrk/net/internal/LOGRecoveryRecord.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

class RecoveryFilesTest : public testing::Test {
 protected:
  static constexpr const char* OLD = "recovery/20260102030405-0000000a";

  ~RecoveryFilesTest() override { VRKFault::disarm(); }

  I18NString directory() const { return I18NString(m_dir.file("recovery").c_str()); }

  Texts names() const {
    Texts result = namesIn(m_dir.file("recovery"));
    std::sort(result.begin(), result.end());
    return result;
  }

  std::uintmax_t bytesInDirectory() const {
    std::uintmax_t bytes = 0;
    for (const std::string& name : names()) bytes += std::filesystem::file_size(m_dir.file("recovery/" + name));
    return bytes;
  }

  TempDir m_dir;
  InternalLog m_log;
};

// What has not been taken, as "<sequence> <payload>".
Texts take(LOGRecoveryFiles& files, std::size_t most = 1000000) {
  Texts result;
  LOGRecoveryFiles::Record record;
  while (result.size() < most && files.next(record)) {
    result.push_back(std::to_string(record.sequence) + " " + record.payload);
  }
  return result;
}

Texts numbered(std::size_t first, std::size_t last, const std::string& payload) {
  Texts result;
  for (; first <= last; ++first) result.push_back(std::to_string(first) + " " + payload);
  return result;
}

void append(LOGRecoveryFiles& files, std::uint64_t first, std::uint64_t last, const std::string& payload) {
  for (; first <= last; ++first) ASSERT_TRUE(files.append(first, payload)) << first;
}

unsigned modeOf(const std::string& path) {
  struct stat status;
  return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
}

std::string record(std::uint64_t sequence, const std::string& payload) {
  std::string bytes;
  LOGRecoveryRecord{sequence, payload}.appendTo(bytes);
  return bytes;
}

TEST_F(RecoveryFilesTest, ChecksumIsThePublishedOneAndTheFormatStaysAsItIs) {
  EXPECT_EQ(0xE3069283u, LOGRecoveryRecord::crc32c("123456789"));
  EXPECT_EQ(0xE3069283u, LOGRecoveryRecord::crc32c("6789", LOGRecoveryRecord::crc32c("12345")));
  const std::string expected("\x02\0\0\0....\x08\x07\x06\x05\x04\x03\x02\x01hi", 18);
  const std::string bytes = record(0x0102030405060708, "hi");
  EXPECT_EQ(expected.substr(0, 4) + expected.substr(8), bytes.substr(0, 4) + bytes.substr(8));
}

TEST_F(RecoveryFilesTest, MessagesStayUntilAcknowledgedAndSurviveTheStore) {
  const std::string payload(1000, '\0');
  {
    LOGRecoveryFiles files(directory(), 10 << 20);
    ASSERT_TRUE(files.open());
    append(files, 1, 3000, payload);  // three files
    EXPECT_EQ(numbered(1, 2500, payload), take(files, 2500));
    files.acknowledge(1500);
    files.acknowledge(99);
    files.rewind();
    LOGRecoveryFiles::Record next;
    EXPECT_TRUE(files.next(next) && next.position == 1501);
    EXPECT_EQ(numbered(1502, 1600, payload), take(files, 99));
    append(files, 3001, 3010, payload);
    EXPECT_EQ(numbered(1601, 3010, payload), take(files));
    EXPECT_EQ(1510u, files.pending());
    EXPECT_EQ(0600u, modeOf(m_dir.file("recovery/" + names().at(0))));
    EXPECT_EQ(0700u, modeOf(m_dir.file("recovery")));
  }
  LOGRecoveryFiles files(directory());
  ASSERT_TRUE(files.open());
  const Texts again = take(files);  // from the beginning of the file that was acknowledged in part
  ASSERT_GT(again.size(), 1510u);
  EXPECT_EQ(numbered(1501, 3010, payload), Texts(again.end() - 1510, again.end()));
  EXPECT_EQ(files.pending(), again.size());
  append(files, 3011, 3011, "new");
  EXPECT_EQ(Texts{"3011 new"}, take(files));
  files.acknowledge(again.size() + 1);
  EXPECT_TRUE(files.pending() == 0 && files.bytes() == 0 && names().empty());
}

TEST_F(RecoveryFilesTest, OneOwnerAtATimeAndTheNextOneComesAfterAKill) {
  LOGRecoveryFiles mine(directory());
  ASSERT_TRUE(mine.open());
  append(mine, 1, 2, "mine");
  const pid_t child = startChild([&] {
    mine.abandon();
    LOGRecoveryFiles theirs(directory());
    theirs.open();
    append(theirs, 1, 3, "theirs");
    if (theirs.pending() == 3) m_dir.write("ready", "");
    ::pause();
  });
  EXPECT_TRUE(eventually([&] { return std::filesystem::exists(m_dir.file("ready")); }));
  EXPECT_EQ(2u, names().size());
  mine.adopt();
  EXPECT_EQ(Texts({"1 mine", "2 mine"}), take(mine));
  ::kill(child, SIGKILL);
  EXPECT_EQ(-SIGKILL, statusOf(child));
  mine.adopt();
  append(mine, 3, 3, "mine");
  EXPECT_EQ(Texts({"1 theirs", "2 theirs", "3 theirs", "3 mine"}), take(mine));
  mine.acknowledge(6);
  EXPECT_EQ(Texts(), names());
}

TEST_F(RecoveryFilesTest, LimitTakesTheOldestAndSaysSoOnce) {
  LOGRecoveryFiles files(directory(), 16 * 1024);
  ASSERT_TRUE(files.open());
  const std::string payload(240, 'x');
  append(files, 1, 20, payload);
  EXPECT_EQ(numbered(1, 20, payload), take(files));
  append(files, 21, 200, payload);
  EXPECT_LE(files.bytes(), 16 * 1024);
  EXPECT_EQ(200u, files.pending() + files.dropped());
  EXPECT_GE(files.pending(), 56u);
  files.acknowledge(20);  // has been dropped
  EXPECT_EQ(numbered(201 - files.pending(), 200, payload), take(files));
  EXPECT_EQ(1, m_log.count("LOGRecoveryFiles"));
  files.acknowledge(200);
  EXPECT_EQ(Texts(), names());
  EXPECT_EQ(1, m_log.count(std::to_string(files.dropped()) + " messages lost")) << m_log.text();
  EXPECT_FALSE(files.append(201, std::string(16 * 1024, 'x')));
}

// Each life takes over what it can of those before.
TEST_F(RecoveryFilesTest, LimitHoldsForTheDirectoryHoweverManyLivesHaveFilledIt) {
  const std::string payload(1000 - LOGRecoveryRecord::HEADER, 'x');
  for (std::uint64_t life = 1; life <= 200; ++life) {
    LOGRecoveryFiles files(directory(), 100000);
    files.open();
    append(files, life, life, payload);
  }
  EXPECT_LE(bytesInDirectory(), 100000u);
  LOGRecoveryFiles first(directory(), 20000), second(directory(), 20000);
  first.open();
  EXPECT_LE(bytesInDirectory(), 20000u);
  append(first, 201, 250, payload);
  append(second, 1, 50, payload);
  EXPECT_GE(second.pending(), 2u) << "it may keep a file of its own";
  EXPECT_GE(first.pending(), 15u) << "and others keep theirs";
  for (std::uint64_t i = 1; i <= 100; ++i) EXPECT_FALSE(second.setAside(i, payload).isEmpty());
  EXPECT_LE(bytesInDirectory(), 20000u + 2 * 20000 / 8 + 1000);
}

TEST_F(RecoveryFilesTest, FilesStayWhereTheyAreWhenTheProgramGoesElsewhere) {
  const std::filesystem::path before = std::filesystem::current_path();
  for (const char* name : {"here", "there"}) std::filesystem::create_directory(m_dir.file(name));
  std::filesystem::current_path(m_dir.file("here"));
  LOGRecoveryFiles files("../recovery", 8000);
  ASSERT_TRUE(files.open());
  append(files, 1, 1, "a");
  std::filesystem::current_path(m_dir.file("there"));
  std::filesystem::remove(m_dir.file("here"));
  append(files, 2, 10, std::string(400, 'x'));  // in new files
  EXPECT_GT(names().size(), 3u);
  EXPECT_EQ(10u, take(files).size());
  files.acknowledge(10);
  EXPECT_EQ(Texts(), names());
  std::filesystem::current_path(before);
}

TEST_F(RecoveryFilesTest, WhatItsOwnerGoesOnDeliveringIsGivenOutOnlyInItsTurn) {
  LOGRecoveryFiles files(directory());
  ASSERT_TRUE(files.open());
  std::uint64_t position = 99;
  ASSERT_TRUE(files.appendTaken(1, "a", position));
  EXPECT_EQ(1u, position);
  EXPECT_FALSE(files.hasMore());
  append(files, 2, 2, "b");
  EXPECT_TRUE(files.hasMore());
  ASSERT_TRUE(files.appendTaken(3, "c", position));
  EXPECT_EQ(0u, position) << "one before it is not taken";
  EXPECT_EQ(Texts{"2 b"}, take(files, 1));
  files.giveBack(2);
  EXPECT_EQ(Texts({"2 b", "3 c"}), take(files));
  files.rewind();
  EXPECT_EQ(Texts({"1 a", "2 b", "3 c"}), take(files));
}

TEST_F(RecoveryFilesTest, FullDiskLeavesNothingHalfWritten) {
  ::signal(SIGXFSZ, SIG_IGN);
  LOGRecoveryFiles files(directory());
  ASSERT_TRUE(files.open());
  const std::string fits(150000, 'x');
  append(files, 1, 3, fits);
  rlimit before;
  ASSERT_EQ(0, ::getrlimit(RLIMIT_FSIZE, &before));
  rlimit small = before;
  small.rlim_cur = 500000;  // far more than the internal log of all the tests in this program
  ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &small));
  for (const std::uint64_t sequence : {4, 5}) EXPECT_FALSE(files.append(sequence, fits));
  ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &before));
  EXPECT_EQ(0u, files.dropped()) << "the caller still has them";
  EXPECT_EQ(3 * record(1, fits).size(), m_dir.read("recovery/" + names().at(0)).size());
  append(files, 6, 6, "z");
  EXPECT_EQ(1, m_log.count("could not keep a message"));
  EXPECT_EQ(1, m_log.count("keeps messages again")) << m_log.text();
  const Texts kept = take(files);
  EXPECT_TRUE(kept.size() == 4 && kept.back() == "6 z");
}

TEST_F(RecoveryFilesTest, FileThatCannotBeRemovedIsNotDeliveredTwice) {
  m_dir.write(OLD, record(1, "a"));
  LOGRecoveryFiles files(directory());
  ASSERT_TRUE(files.open());
  EXPECT_EQ(Texts{"1 a"}, take(files));
  VRKFault::arm(VRKFault::FILE_REMOVE);
  files.acknowledge(1);
  files.adopt();
  EXPECT_EQ(Texts(), take(files));
  EXPECT_EQ(1, m_log.count("could not remove"));
}

TEST_F(RecoveryFilesTest, DamagedFileYieldsItsBeginningAndIsSetAside) {
  const std::string payload(20, 'x');
  const std::size_t length = record(1, payload).size();
  std::string whole;
  for (std::uint64_t i = 1; i <= 5; ++i) whole += record(i, payload);
  const auto isPrefix = [&](const std::string& bytes, std::size_t intact) {
    const std::size_t count = intact / length;  // records that are before the damage
    m_dir.write(OLD, bytes);
    LOGRecoveryFiles files(directory());
    ASSERT_TRUE(files.open());
    ASSERT_EQ(count, files.pending());
    ASSERT_EQ(numbered(1, count, payload), take(files));
    ASSERT_EQ(count > 0, std::filesystem::exists(m_dir.file(OLD)));
    files.acknowledge(count);
    ASSERT_FALSE(std::filesystem::exists(m_dir.file(OLD)));
    const bool damaged = count * length < bytes.size();
    ASSERT_EQ(damaged ? bytes : "", m_dir.read(std::string(OLD) + ".damaged"));
    ASSERT_EQ(damaged ? bytes.size() : 0, static_cast<std::size_t>(files.bytes()));
    std::filesystem::remove(m_dir.file(std::string(OLD) + ".damaged"));
  };
  ASSERT_NO_FATAL_FAILURE(isPrefix(whole, whole.size()));
  for (std::size_t i = 0; i < whole.size(); ++i) {
    std::string flipped = whole;
    flipped[i] = static_cast<char>(flipped[i] ^ 1 << i % 8);
    ASSERT_NO_FATAL_FAILURE(isPrefix(flipped, i)) << "bit flipped in byte " << i;
    ASSERT_NO_FATAL_FAILURE(isPrefix(whole.substr(0, i), i)) << "cut off at byte " << i;
  }
}

TEST_F(RecoveryFilesTest, DamageThatHappensLaterLosesOnlyThatFile) {
  m_dir.write(OLD, record(1, "a") + record(2, "b") + record(3, "c"));
  LOGRecoveryFiles files(directory());
  ASSERT_TRUE(files.open());
  append(files, 4, 4, "d");
  m_dir.write(OLD, record(1, "a") + record(2, "b").replace(16, 1, "?"));
  EXPECT_EQ(Texts({"1 a", "4 d"}), take(files));
  EXPECT_TRUE(files.pending() == 2 && files.dropped() == 2);
  files.acknowledge(2);
  EXPECT_EQ(Texts{std::string(OLD).substr(9) + ".damaged"}, names());
}

TEST_F(RecoveryFilesTest, OtherFilesInTheDirectoryAreLeftAlone) {
  const char* const others[] = {"recovery/README", "recovery/20260102030405-0000000A",
                                "recovery/20260102030405-0000000a~"};
  for (const char* other : others) m_dir.write(other, record(1, "a"));
  std::filesystem::create_symlink(m_dir.file(others[0]), m_dir.file(OLD));
  LOGRecoveryFiles files(directory(), 1000);
  ASSERT_TRUE(files.open());
  append(files, 1, 100, "x");
  EXPECT_EQ(1, m_log.count("could not open a file")) << m_log.text();
  for (const char* other : others) EXPECT_EQ(record(1, "a"), m_dir.read(other));
}

}  // namespace
