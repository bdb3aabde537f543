#include "log4vrk/appenders/LOGWriter.h"
#include "tests/appenders/AppenderFixture.h"

namespace {

using QuietWriterTest = AppenderFixture;

struct Sink : LOGWriter {
  void write(const I18NString& text) override { calls += text.toUtf8() + " "; }
  void flush() override { calls += "flush "; }
  void close() override { calls += "close "; }
  std::string calls;
};

}  // namespace

TEST_F(QuietWriterTest, WritesUtf8ToItsFileAndPassesTextsToItsSink) {
  VRKFmFile file;
  file.open(path("log"), VRKFmFile::CREATE_EXCLUSIVE);
  LOGQuietWriter plain(nullptr, &file);
  LOGCountingQuietWriter counting(nullptr, &file);
  plain.write(&file, "-");
  counting.setCount(10);
  counting.write(&file, "Z\u00fcrich \u65e5");
  EXPECT_EQ(counting.getCount(), 10 + 11) << "bytes";
  plain.stWrite(&file, "end");
  EXPECT_EQ(m_dir.read("log"), "-Z\u00fcrich \u65e5end");
  Sink sink;
  LOGQuietWriter writer(&sink, nullptr);
  for (LOGQuietWriter* each : {&writer, &plain}) {
    for (const char* text : {"hello", ""}) each->write(text);
    each->close();
  }
  EXPECT_EQ(sink.calls, "hello flush close ");
  EXPECT_EQ(m_log.text(), "");
}
