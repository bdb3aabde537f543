#include "log4vrk/net/LOGWriter.h"
#include "tests/appenders/AppenderFixture.h"

namespace {

struct Sink : LOGWriter {
  void write(const I18NString& text) override { calls += text.toUtf8() + " "; }
  void flush() override { calls += "flush "; }
  void close() override { calls += "close "; }
  std::string calls;
};

class QuietWriterTest : public AppenderFixture {
 protected:
  QuietWriterTest() { m_file.open(path("log"), VRKFmFile::CREATE_EXCLUSIVE); }

  VRKFmFile m_file;
  LOGQuietWriter m_plain{nullptr, &m_file};
  LOGCountingQuietWriter m_counting{nullptr, &m_file};
};

}  // namespace

TEST_F(QuietWriterTest, WritesUtf8WithoutTheTerminatingZeroAndCountsItsBytes) {
  m_plain.write(&m_file, "-");
  m_counting.setCount(10);
  m_counting.write(&m_file, "Z\u00fcrich \u65e5");
  EXPECT_EQ(m_counting.getCount(), 10 + 11);
  m_plain.stWrite(&m_file, "end");
  EXPECT_EQ(m_dir.read("log"), "-Z\u00fcrich \u65e5end");
}

TEST_F(QuietWriterTest, KeepsFailuresToTheInternalLog) {
  using Form = std::function<void(VRKFmFile*, const char*)>;
  const auto expectReports = [&](const std::string& name, const std::vector<VRKFault::Point>& faults,
                                 const Form& write) {
    const InternalLog log;
    const auto expectLast = [&](const std::string& report) {
      EXPECT_EQ(log.lines().back().find("log4vrk:ERROR " + name + report), 0u) << log.text();
    };
    for (VRKFault::Point fault : faults) {
      VRKFault::arm(fault);
      write(&m_file, "");
      write(&m_file, "x");
      expectLast(" -- VRKThrowable exception occurred VRKSystemError: " + m_dir.file("log") +
                 ": Input/output error (5), at LOGQuietWriter::throwFileError:");
    }
    VRKFault::arm(VRKFault::TEXT_CONVERSION);
    write(&m_file, "x");
    expectLast(" -- I18nstring exception occurred I18NRuntimeError: ");
    write(nullptr, "x");
    write(nullptr, "");
    expectLast(" -- VRKThrowable exception occurred VRKAssertError: VRK_ASSERT(outStream != NULL);, at " +
               name.substr(0, name.find(':')) + ":");
    EXPECT_EQ(log.lines().size(), faults.size() + 2) << "an empty text meets no failure and needs no file";
  };
  expectReports("LOGQuietWriter::write", {VRKFault::FILE_SEEK, VRKFault::FILE_WRITE},
                [this](VRKFmFile* file, const char* text) { m_plain.write(file, text); });
  expectReports("LOGCountingQuietWriter::write", {VRKFault::FILE_SEEK, VRKFault::FILE_WRITE},
                [this](VRKFmFile* file, const char* text) { m_counting.write(file, text); });
  EXPECT_EQ(m_counting.getCount(), 0);
  expectReports("LOGQuietWriter::stWrite", {VRKFault::FILE_SEEK, VRKFault::FILE_WRITE, VRKFault::FILE_FLUSH},
                [this](VRKFmFile* file, const char* text) { m_plain.stWrite(file, text); });
  EXPECT_EQ(m_dir.read("log"), "x") << "only the flush failed after the write";
}

TEST_F(QuietWriterTest, PassesTextsToItsSink) {
  Sink sink;
  LOGQuietWriter writer(&sink, nullptr);
  writer.write("hello");
  writer.write("");
  writer.close();
  EXPECT_EQ(sink.calls, "hello flush close ");
  m_plain.write("nobody is there");
  m_plain.close();
}
