#include "tests/appenders/AppenderFixture.h"

using namespace vrktest;

using FileAppenderTest = AppenderFixture;

TEST_F(FileAppenderTest, SaysNothingOfAMissingLayoutANameOrAFileThatCannotBeOpened) {
  LOGFileAppender noLayout(nullptr, path("log")), unnamed, directory(&m_layout, path("."));
  log(noLayout, "unseen");
  EXPECT_EQ(m_dir.read("log") + m_log.text(), "");
  log(unnamed, "lost");
  log(directory, "lost");
  EXPECT_EQ(m_log.text(), std::string(CLOSED) + CLOSED);
}

TEST_F(FileAppenderTest, TakesAnotherFileOnlyAfterItWasClosed) {
  const long descriptors = openDescriptors();
  {
    VRKConfigurationFactory::getInstance().setBaseDirectory(m_dir.path().c_str());
    LOGFileAppender appender(&m_layout, "first");
    VRKConfigurationFactory::getInstance().setBaseDirectory("");
    appender.setFile(path("second"), 1, 0, 8192);
    EXPECT_EQ(appender.getFile(), path("first"));
    log(appender, "1");
    appender.close();
    appender.close();
    log(appender, "lost");
    EXPECT_EQ(m_log.text(), CLOSED);
    appender.setFile(path("second"));
    log(appender, "2");
    EXPECT_EQ(m_dir.read("first") + m_dir.read("second"), "1\n2\n");
    EXPECT_EQ(openDescriptors(), descriptors + 1);
  }
  EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(FileAppenderTest, FlushesOnOpeningAndThenOnlyWhenTold) {
  VRKFault::arm(VRKFault::FILE_FLUSH);
  LOGFileAppender appender(&m_layout, path("log"));
  EXPECT_FALSE(VRKFault::hit(VRKFault::FILE_FLUSH));
  for (int immediate : {0, 1}) {
    appender.setImmediateFlush(immediate);
    VRKFault::arm(VRKFault::FILE_FLUSH);
    log(appender, "x");
    EXPECT_EQ(VRKFault::hit(VRKFault::FILE_FLUSH), immediate == 0);
  }
  appender.setBufferedIO(1);
  EXPECT_EQ(appender.getImmediateFlush(), 0);
}

TEST_F(FileAppenderTest, AFailureIsReportedInTheWordsOfTheOperation) {
  VRKFault::arm(VRKFault::TEXT_CONVERSION);
  LOGRollingFileAppender rolling(&m_layout, path("rolling"));
  EXPECT_EQ(m_log.count("LOGRollingFileAppender::setFile -- some i18nstring exception occurred I18NRuntimeError"), 1);
  VRKFault::arm(VRKFault::FILE_SEEK);
  log(rolling, "lost");
  EXPECT_EQ(m_log.count("LOGCountingQuietWriter::write -- VRKThrowable exception occurred VRKSystemError: " +
                        m_dir.file("rolling") + ": Input/output error (5), at LOGQuietWriter::throwFileError:"),
            1);
  struct : LOGFileAppender {
    void setQWForFiles() override { throw 7; }
  } failing;
  EXPECT_THROW(failing.setFile(path("failing"), 1, 0, 0), int);
  EXPECT_EQ(m_log.count("log4vrk:ERROR LOGFileAppender::setFile -- generic exception happened"), 1);
  EXPECT_EQ(m_log.count("log4vrk:ERROR LOGFileAppender::setFileOptions -- generic exception happened"), 1);
}

TEST_F(FileAppenderTest, BuffersWholeEventsUntilThereAreEnough) {
  LOGFileAppender appender(&m_layout, path("log"), 0, 1, 10);
  log(appender, "one", "two");
  EXPECT_EQ(m_dir.read("log"), "");
  log(appender, "three");
  EXPECT_EQ(m_dir.read("log"), "one\ntwo\nthree\n");
  log(appender, "four");
  appender.setImmediateFlush(1);
  log(appender, "five");
  EXPECT_EQ(m_dir.read("log"), "one\ntwo\nthree\nfour\nfive\n");
  appender.setImmediateFlush(0);
  log(appender, "six");
  VRKFault::arm(VRKFault::FILE_WRITE);
  appender.close();
  EXPECT_TRUE(
      m_log.contains("LOGFileAppender::closeFile -- what was buffered could not be written to " + m_dir.file("log")));
}

TEST_F(FileAppenderTest, WritesItsBufferAtExitAndLeavesThatOfItsParentAlone) {
  static LOGFileAppender& appender = *new LOGFileAppender(&m_layout, path("log"), 0, 1, 1000);
  log(appender, "parent");
  EXPECT_EQ(0, vrktest::statusInChild([] {
              log(appender, "child");
              std::exit(0);
            }));
  EXPECT_EQ(m_dir.read("log"), "child\n");
  appender.close();
  EXPECT_EQ(m_dir.read("log"), "child\nparent\n");
}

// A limit on the size of files stops a write half-way, as a full disk does.
TEST_F(FileAppenderTest, WhatFollowsATornLineBeginsANewOne) {
  const std::string old(9000, '-');  // more than the internal log will have, for the limit is everybody's
  for (const char* name : {"direct", "buffered"}) m_dir.write(name, old);
  LOGFileAppender direct(&m_layout, path("direct"));
  LOGFileAppender buffered(&m_layout, path("buffered"), 1, 1, 25);
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before;
  ::getrlimit(RLIMIT_FSIZE, &before);
  for (LOGFileAppender* appender : {&direct, &buffered}) {
    const rlimit small{old.size() + 15, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    log(*appender, "first line", "second line", "third line");
    ::setrlimit(RLIMIT_FSIZE, &before);
    log(*appender, "fourth line");
    appender->close();
  }
  for (const char* name : {"direct", "buffered"}) {
    EXPECT_EQ(m_dir.read(name), old + "first line\nseco\nfourth line\n") << name;
  }
  EXPECT_EQ(m_log.count("LOGQuietWriter::write -- VRKThrowable exception occurred"), 4) << "two events each";
}

// One of the program's own that hands its events on: only what the dispatcher itself releases may be held back.
TEST_F(FileAppenderTest, AFileBehindAnAppenderOfTheProgramWritesAtOnce) {
  LOGFileAppender file(&m_layout, path("log"));
  RecordingAppender wrapper;
  wrapper.onAppend = [&](const std::string& text) { log(file, text); };
  LOGAsyncAppender queue;
  queue.addAppender(&wrapper);
  log(queue, "one", "two");
  EXPECT_TRUE(eventually([&] { return m_dir.read("log") == "one\ntwo\n"; }));
}

// The writer of a derived class is used and counted; whoever holds its lock keeps the appender from writing.
TEST_F(FileAppenderTest, AWriterOfTheProgramsOwnTakesEveryLine) {
  struct Writer : LOGCountingQuietWriter {
    using LOGCountingQuietWriter::LOGCountingQuietWriter;
    void write(VRKFmFile* file, const I18NString& text) override { LOGCountingQuietWriter::write(file, "> " + text); }
  };
  struct Rolling : LOGRollingFileAppender {
    void setQWForFiles() override VRK_REQUIRES(m_critSection) {
      m_qw.reset();  // the next may get the same address
      m_qw = std::make_unique<Writer>(nullptr, m_file.get());
    }
    LOGQuietWriter& writer() {
      const LOGGuard guard(*this);
      return *m_qw;
    }
  } rolling;
  rolling.setLayout(&m_layout);
  rolling.setMaximumFileSize(10);
  rolling.setFile(path("log"), 0, 0, 0);
  log(rolling, "one", "two", "three");
  EXPECT_EQ(m_dir.read("log.1") + m_dir.read("log"), "> one\n> two\n> three\n");
  LOGQuietWriter& writer = rolling.writer();
  writer.lock();
  std::thread logging([&] { log(rolling, "four"); });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(m_dir.read("log"), "> three\n");
  writer.unlock();
  logging.join();
  EXPECT_EQ(m_dir.read("log.1"), "> three\n> four\n");
}
