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
