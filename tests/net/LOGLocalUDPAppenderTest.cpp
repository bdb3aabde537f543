#include "tests/net/UdpReceiver.h"
#include "tests/support/Tests.h"

using namespace vrktest;
using namespace std::string_literals;

namespace {

constexpr char HEADER[] = "class";

// As Java's object streams read it: the logger's name, and an object whose class has that header.
std::string datagram(const std::string& name, const std::string& data, const std::string& header = HEADER) {
  const auto number = [](std::size_t value, int bytes) {
    std::string text;
    while (bytes-- > 0) text += static_cast<char>(value >> 8 * bytes & 0xFF);
    return text;
  };
  return "\xAC\xED\0\5\x7A"s + number(name.size() + 2, 4) + number(name.size(), 2) + name + "\x73" + header +
         "\x70\x7A" + number(data.size(), 4) + data + "\x78";
}

// Writes a header, and data in pieces.
class PieceRenderer : public LOGObjectRenderer {
 public:
  I18NString* doRender(LOGObject*) override { return nullptr; }
  void writeExtHeader(unsigned char* buffer, long* offset) override {
    for (const char* c = HEADER; *c != '\0'; ++c) writeByte(static_cast<unsigned char>(*c), buffer, offset);
  }
  void writeExtData(LOGObject* object, unsigned char* buffer, long* offset) override {
    ++calls;
    if (onWrite) onWrite();
    I18NString text = object->toString();
    for (int i = 0; i < texts; ++i) writeUTF(&text, buffer, offset);
    for (long i = 0; i < bytes; ++i) writeByte('d', buffer, offset);
  }
  long getDataLength(LOGObject*) override { return dataLength; }

  int texts = 1;
  long bytes = 0;
  long dataLength = 0;
  std::atomic<int> calls{0};
  std::function<void()> onWrite;
};

class LocalUDPAppenderTest : public testing::Test {
 protected:
  LocalUDPAppenderTest() {
    appender.setPort(receiver.port());
    appender.activateOptions();
    LOGRendererMap::put("Piece", &renderer);
  }
  ~LocalUDPAppenderTest() override {
    LOGRendererMap::clear();
    VRKFault::disarm();
  }

  void append(const std::string& loggerName, const I18NString& text, const char* className = "Piece",
              LOGLocalUDPAppender* other = nullptr) {
    LOGObject message(text);
    message.instance(className);
    LOGLoggingEvent event("test", tree.getLogger(loggerName.c_str()), LOGLevel::INFO_OBJ, &message);
    (other ? other : &appender)->doAppend(&event);
  }

  Tree tree;
  UdpReceiver receiver;
  PieceRenderer renderer;
  LOGLocalUDPAppender appender;
  InternalLog log;
};

TEST_F(LocalUDPAppenderTest, SendsNamesAndDataOfEverySizeThatFitsWithTheirExactLengths) {
  const long most = LOGLocalUDPAppender::LARGEST_DATAGRAM - static_cast<long>(datagram("", "").size());
  renderer.texts = 0;
  for (const long name : {0L, 1L, 255L, 256L, 40000L, most, most + 1, 65507L, 80000L}) {
    for (const long data : {0L, 1L, 127L, 128L, 30000L, most - name, most - name + 1, 65536L, 200000L}) {
      if (data < 0) continue;
      for (const long dataLength : {0L, data}) {
        const std::string letters(static_cast<std::size_t>(name), 'n');
        renderer.bytes = data;
        renderer.dataLength = dataLength;
        append(letters, "");
        append("", "", "no renderer");
        if (name + data <= most) {
          ASSERT_TRUE(receiver.next() == datagram(letters, std::string(static_cast<std::size_t>(data), 'd')))
              << name << " + " << data;
        }
        ASSERT_EQ(datagram("", "", ""), receiver.next()) << "what was sent next";
      }
    }
  }
  EXPECT_EQ(0, log.count("ERROR"));
}

TEST_F(LocalUDPAppenderTest, DropsWhatSeveralLargeTextsDoNotFitInto) {
  const I18NString large(std::u16string(70000, u'\u00e4'));
  for (renderer.texts = 1; renderer.texts < 20; renderer.texts *= 3) append("shop", large);
  renderer.texts = 1;
  renderer.dataLength = 65504;  // more than there is room for: not asked to write
  renderer.calls = 0;
  append("shop", "x");
  EXPECT_EQ(0, renderer.calls);
  renderer.dataLength = 0;
  append("shop.\u00e4", "s\u00fc\u00df \U0001f600");
  EXPECT_EQ(datagram("shop.\u00e4", "\0\x0as\u00fc\u00df \U0001f600"s), receiver.next());
}

TEST_F(LocalUDPAppenderTest, AClassWithoutARendererArrivesWithoutText) {
  append("shop", "text", "LOGMessage");
  EXPECT_EQ(datagram("shop", "", ""), receiver.next());
  LOGLoggingEvent empty("test", tree.getLogger("shop"), LOGLevel::INFO_OBJ, nullptr);
  appender.doAppend(&empty);
  EXPECT_EQ(1, log.count("log4vrk:ERROR LOGAppenderSkeleton::doAppend -- VRK Exception occured"));
  EXPECT_EQ(1, log.count("VRK_ASSERT(message);"));
  EXPECT_NO_THROW(appender.append(nullptr));
}

TEST_F(LocalUDPAppenderTest, NeitherAClosedPortNorABadOneIsNoticed) {
  const Deadline deadline(60);
  const int port = receiver.port();
  receiver.close();
  for (int i = 0; i < 99; ++i) append("shop", "lost");
  UdpReceiver later("127.0.0.1", port);
  append("shop", "found");
  EXPECT_EQ(datagram("shop", "\0\5found"s), later.next());
  for (const long bad : {0L, -1L, 65536L, 65536L + port}) {
    LOGLocalUDPAppender other;
    other.setPort(bad);
    other.activateOptions();
    append("shop", "lost", "Piece", &other);
  }
  EXPECT_TRUE(later.isEmpty());
  EXPECT_EQ(0, log.count("ERROR"));
}

TEST_F(LocalUDPAppenderTest, OpensAgainAfterAFailureAndAfterCloseWithOneDescriptorAtMost) {
  const long before = openDescriptors();
  {
    LOGLocalUDPAppender other;
    EXPECT_EQ(9362, other.getPort());
    other.setPort(receiver.port());
    append("shop", "without a socket", "Piece", &other);
    for (const VRKFault::Point fault : {VRKFault::SOCKET_OPEN, VRKFault::SOCKET_MODE}) {
      VRKFault::arm(fault);
      other.activateOptions();
      EXPECT_EQ(before, openDescriptors());
    }
    for (int i = 0; i < 3; ++i) {
      other.activateOptions();
      EXPECT_EQ(before + 1, openDescriptors());
      other.close();
      append("shop", "through the socket that is left", "Piece", &other);
      EXPECT_NE("(nothing)", receiver.next());
    }
    UdpReceiver elsewhere;
    other.setPort(elsewhere.port());
    other.activateOptions();
    const auto copy = std::make_unique<LOGLocalUDPAppender>(other);
    other = appender;  // a copy sends by itself
    append("shop", "x", "Piece", copy.get());
    EXPECT_EQ(datagram("shop", "\0\1x"s), elsewhere.next());
  }
  EXPECT_EQ(before, openDescriptors());
  EXPECT_TRUE(receiver.isEmpty());
}

}  // namespace
