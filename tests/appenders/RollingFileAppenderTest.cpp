#include "tests/appenders/AppenderFixture.h"

using namespace vrktest;

namespace {

using Files = std::map<std::string, std::string>;  // what follows "log" in the name, and the content

const std::string LINE59(59, 'x');

class RollingFileAppenderTest : public AppenderFixture {
 protected:
  Files files() const {
    Files found;
    for (const std::string& name : namesIn(m_dir.path())) {
      found[name.substr(3)] = std::filesystem::is_directory(m_dir.file(name)) ? "directory" : m_dir.read(name);
    }
    return found;
  }
  void set(const Files& files) const {
    for (const auto& entry : std::filesystem::directory_iterator(m_dir.path())) std::filesystem::remove_all(entry);
    for (const auto& [suffix, content] : files) m_dir.write("log" + suffix, content);
  }
  /// One event, "x" and a line feed.
  void roll(long size, long backups, int append = 1) {
    LOGRollingFileAppender appender(&m_layout, path("log"), append);
    appender.setMaximumFileSize(size);
    appender.setMaxBackupIndex(backups);
    log(appender, "x");
  }
};

}  // namespace

TEST_F(RollingFileAppenderTest, RollsAfterTheEventThatReachesTheLimit) {
  LOGRollingFileAppender appender(&m_layout, path("log"));
  EXPECT_EQ(appender.getMaximumFileSize(), 10485760);
  appender.setMaximumFileSize(120);
  appender.setMaxFileSize("5");
  log(appender, LINE59);
  EXPECT_EQ(files(), (Files{{"", LINE59 + "\n"}}));
  log(appender, LINE59);
  EXPECT_EQ(files(), (Files{{"", ""}, {".1", LINE59 + "\n" + LINE59 + "\n"}}));
  EXPECT_EQ(m_log.text(),
            "log4vrk: LOGRollingFileAppender::rollOver count 120\n"
            "log4vrk: LOGRollingFileAppender::rollOver maxBackupIndex 1\n");
  EXPECT_EQ(appender.getAppend(), 0) << "the roll-over's way of opening is kept";
}

TEST_F(RollingFileAppenderTest, ShiftsTheBackupsBelowTheIndexAndDropsTheOldest) {
  const auto expectRolled = [&](long backups, const Files& before, const Files& after) {
    set(before);
    roll(1, backups);
    EXPECT_EQ(files(), after) << backups;
  };
  expectRolled(3, {{".1", "1"}, {".2", "2"}, {".3", "3"}}, {{"", ""}, {".1", "x\n"}, {".2", "1"}, {".3", "2"}});
  expectRolled(3, {{".2", "2"}, {".4", "4"}}, {{"", ""}, {".1", "x\n"}, {".3", "2"}, {".4", "4"}});
  expectRolled(1, {{".1", "1"}}, {{"", ""}, {".1", "x\n"}});
  expectRolled(0, {{".1", "1"}}, {{"", ""}, {".1", "1"}});
  expectRolled(12, {{".9", "9"}, {".10", "10"}}, {{"", ""}, {".1", "x\n"}, {".10", "9"}, {".11", "10"}});
  expectRolled(std::numeric_limits<long>::max(), {{".2000000000", "a"}, {".9223372036854775808", "b"}},
               {{"", ""}, {".1", "x\n"}, {".2000000001", "a"}, {".9223372036854775808", "b"}});
  expectRolled(5, {{".01", "a"}, {".1x", "b"}, {".", "c"}, {"1", "d"}, {".2/sub", "e"}},
               {{"", ""}, {".1", "x\n"}, {".01", "a"}, {".1x", "b"}, {".", "c"}, {"1", "d"}, {".2", "directory"}});
  EXPECT_FALSE(m_log.contains("Could not")) << m_log.text();
}

TEST_F(RollingFileAppenderTest, CountsWhatAnAppendedFileHolds) {
  for (int append : {1, 0, 2}) {
    set({{"", std::string(5000, 'o')}});
    roll(4096, 1, append);
    EXPECT_EQ(files().count(".1"), append == 1 ? 1u : 0u) << append;
  }
}

TEST_F(RollingFileAppenderTest, ReportsWhatCannotBeMovedAndGoesOn) {
  const std::string file = m_dir.file("log");
  const auto expectRolled = [&](VRKFault::Point fault, int skip, const std::string& report, const Files& after) {
    set({{"", ""}, {".1", "1"}, {".2", "2"}});
    VRKFault::arm(fault, 1, skip);
    roll(1, 2);
    EXPECT_EQ(files(), after) << report;
    EXPECT_EQ(m_log.lines().back(), "log4vrk:ERROR LOGRollingFileAppender::rollOver ---- Could not " + report);
  };
  expectRolled(VRKFault::FILE_REMOVE, 0, "remove the file: " + file + ".2", {{"", ""}, {".1", "x\n"}, {".2", "1"}});
  expectRolled(VRKFault::FILE_RENAME, 0, "rename [" + file + ".1] to [" + file + ".2]", {{"", ""}, {".1", "x\n"}});
  expectRolled(VRKFault::FILE_RENAME, 1, "rename [" + file + "] to [" + file + ".1]", {{"", ""}, {".2", "1"}});
}

TEST_F(RollingFileAppenderTest, IsClosedWhileTheFileCannotBeReopened) {
  const std::filesystem::path folder = m_dir.file("log"), away = m_dir.file("away");
  std::filesystem::create_directory(folder);
  LOGRollingFileAppender appender(&m_layout, path("log/file"));
  appender.setMaximumFileSize(1);
  std::filesystem::rename(folder, away);
  log(appender, "gone with its file", "lost");
  EXPECT_EQ(m_log.count("::setFile -- " + folder.string() + " directory does not exist"), 2);
  EXPECT_EQ(m_log.lines().back() + "\n", CLOSED);
  std::filesystem::rename(away, folder);
  log(appender, "written");
  EXPECT_EQ(m_dir.read("log/file.1"), "written\n");
}

// Written directly, behind a queue, and with a buffer: what is not written does not count, and each event that is lost
// has its line, with the text of the writer.
TEST_F(RollingFileAppenderTest, AFullDiskRollsNoBackupAwayAndReportsEachLostEvent) {
  for (const std::string way : {"direct", "queued", "buffered"}) {
    const InternalLog log;
    for (const char* suffix : {".1", ".2", ".3"}) m_dir.write(way + suffix, std::string("good") + suffix);
    std::filesystem::create_symlink("/dev/full", m_dir.file(way));
    LOGRollingFileAppender file;
    file.setLayout(&m_layout);
    file.setMaximumFileSize(60);
    file.setMaxBackupIndex(3);
    file.setFile(path(way), 1, way == "buffered" ? 1 : 0, 40);
    LOGAsyncAppender queue;
    queue.addAppender(&file);
    Tree tree;
    LOGLogger* const logger = tree.getLogger("a");
    logger->addAppender(way == "queued" ? static_cast<LOGAppenderSkeleton*>(&queue) : &file);
    for (int i = 0; i < 40; ++i) logger->info("an event that is lost");
    queue.close();
    if (way == "buffered") {
      EXPECT_GE(log.count("LOGCountingQuietWriter::write -- VRKThrowable exception occurred"), 39) << way;
    } else {
      EXPECT_EQ(log.count("LOGCountingQuietWriter::write -- VRKThrowable exception occurred"), 40) << way;
    }
    for (const char* suffix : {".1", ".2", ".3"}) EXPECT_EQ(m_dir.read(way + suffix), std::string("good") + suffix);
    logger->removeAllAppenders();
  }
}
