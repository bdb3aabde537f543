#include <set>

#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/layouts/LOGObjectRenderer.h"
#include "log4vrk/layouts/LOGRendererMap.h"
#include "log4vrk/net/LOGLocalUDPAppender.h"
#include "tests/net/UdpReceiver.h"
#include "tests/support/Doubles.h"
#include "tests/support/TempDir.h"

using namespace vrktest;
using namespace std::string_literals;

namespace {

// What a receiver takes from a datagram; `error` says where it is no such stream.
struct Received {
  std::string name, header, data, error;
};

// `header` is as long as the receiver's knowledge of the class says.
Received parse(const std::string& datagram, std::size_t headerLength) {
  Received result;
  std::size_t at = 0;
  const auto take = [&](std::size_t count) {
    if (datagram.size() - at < count) result.error = "too short";
    std::string taken = datagram.substr(std::min(at, datagram.size()), count);
    at = std::min(at + count, datagram.size());
    return taken;
  };
  const auto number = [&](std::size_t bytes) {
    std::size_t value = 0;
    for (const char c : take(bytes)) value = value * 256 + static_cast<unsigned char>(c);
    return value;
  };
  const auto expect = [&](const std::string& bytes, const char* what) {
    if (take(bytes.size()) != bytes && result.error.empty()) result.error = what;
  };
  expect("\xAC\xED\0\5\x7A"s, "begin");
  const std::size_t length = number(4), nameLength = number(2);
  if (length != nameLength + 2) result.error = "length of the name";
  result.name = take(nameLength);
  expect("\x73", "object");
  result.header = take(headerLength);
  expect("\x70\x7A", "data");
  result.data = take(number(4));
  expect("\x78", "end");
  if (at != datagram.size()) result.error = "too long";
  return result;
}

constexpr char HEADER[] = "class";

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

constexpr long AROUND = 4 + 1 + 4 + 2 + 1 + sizeof(HEADER) - 1 + 2 + 4 + 1;  // with an empty name and no data

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

  void append(const std::string& loggerName, const I18NString& text, const char* className = "Piece") {
    appendTo(appender, loggerName, text, className);
  }
  void appendTo(LOGLocalUDPAppender& target, const std::string& loggerName, const I18NString& text,
                const char* className = "Piece") {
    LOGObject message(text);
    message.instance(className);
    LOGLoggingEvent event("test", tree.getLogger(loggerName.c_str()), LOGLevel::INFO_OBJ, &message);
    target.doAppend(&event);
  }

  Tree tree;
  UdpReceiver receiver;
  PieceRenderer renderer;
  LOGLocalUDPAppender appender;
  InternalLog log;
};

TEST_F(LocalUDPAppenderTest, SendsNamesAndDataOfEverySizeThatFitsWithTheirExactLengths) {
  const long most = LOGLocalUDPAppender::LARGEST_DATAGRAM - AROUND;
  for (const long name : {0L, 1L, 255L, 256L, 40000L, most, most + 1, 65507L, 80000L}) {
    for (const long data : {0L, 1L, 127L, 128L, 30000L, most - name, most - name + 1, 65536L, 200000L}) {
      if (data < 0) continue;
      for (const long dataLength : {0L, data}) {
        renderer.texts = 0;
        renderer.bytes = data;
        renderer.dataLength = dataLength;
        append(std::string(static_cast<std::size_t>(name), 'n'), "");
        append("", "", "no renderer");
        const std::string datagram = receiver.next();
        const bool fits = name + data <= most;
        SCOPED_TRACE(testing::Message() << name << " + " << data);
        if (fits) {
          const Received got = parse(datagram, sizeof(HEADER) - 1);
          EXPECT_EQ("", got.error);
          EXPECT_EQ(std::string(static_cast<std::size_t>(name), 'n'), got.name);
          EXPECT_EQ(HEADER, got.header);
          EXPECT_EQ(std::string(static_cast<std::size_t>(data), 'd'), got.data);
          receiver.next();
        } else {
          EXPECT_EQ("", parse(datagram, 0).error);  // dropped: this is the one that was sent after it
        }
      }
    }
  }
  EXPECT_EQ(0, log.count("ERROR"));
}

TEST_F(LocalUDPAppenderTest, DropsWhatSeveralLargeTextsDoNotFitInto) {
  const I18NString large(std::u16string(70000, u'\u00e4'));
  for (const int texts : {1, 2, 5, 20}) {
    renderer.texts = texts;
    append("shop", large);
  }
  EXPECT_TRUE(receiver.isEmpty());
  renderer.texts = 1;
  renderer.dataLength = 65504;  // more than there is room for: not asked to write
  renderer.calls = 0;
  append("shop", "x");
  EXPECT_EQ(0, renderer.calls);
  renderer.dataLength = 0;
  append("shop.\u00e4", "s\u00fc\u00df \U0001f600");
  const Received got = parse(receiver.next(), sizeof(HEADER) - 1);
  EXPECT_EQ("", got.error);
  EXPECT_EQ("shop.\u00e4", got.name);
  EXPECT_EQ("\0\x0a"s + "s\u00fc\u00df \U0001f600", got.data);
}

TEST_F(LocalUDPAppenderTest, AClassWithoutARendererArrivesWithoutText) {
  append("shop", "text", "LOGMessage");
  EXPECT_EQ("\xAC\xED\0\5\x7A\0\0\0\6\0\4shop\x73\x70\x7A\0\0\0\0\x78"s, receiver.next());
  LOGLoggingEvent empty("test", tree.getLogger("shop"), LOGLevel::INFO_OBJ, nullptr);
  appender.doAppend(&empty);
  EXPECT_EQ(1, log.count("ERROR"));
  EXPECT_EQ(1, log.count("log4vrk:ERROR LOGAppenderSkeleton::doAppend -- VRK Exception occured"));
  EXPECT_EQ(1, log.count("VRK_ASSERT(message);"));
  EXPECT_NO_THROW(appender.append(nullptr));
}

TEST_F(LocalUDPAppenderTest, ARendererInUseOutlivesItsReplacementAndAClearing) {
  PieceRenderer other;
  renderer.onWrite = [&] {
    LOGRendererMap::put("Piece", &other);
    LOGRendererMap::clear();
  };
  append("shop", "first");
  EXPECT_EQ("\0\5first"s, parse(receiver.next(), sizeof(HEADER) - 1).data);
  append("shop", "then without");
  EXPECT_EQ("", parse(receiver.next(), 0).data);
}

TEST_F(LocalUDPAppenderTest, NeitherAClosedPortNorABadOneIsNoticed) {
  const Deadline deadline(60);
  const int port = receiver.port();
  receiver.close();
  for (int i = 0; i < 99; ++i) append("shop", "lost");
  UdpReceiver later("127.0.0.1", port);
  append("shop", "found");
  EXPECT_EQ("\0\5found"s, parse(later.next(), sizeof(HEADER) - 1).data);
  for (const long bad : {0L, -1L, 65536L, 65536L + port}) {
    LOGLocalUDPAppender other;
    other.setPort(bad);
    other.activateOptions();
    appendTo(other, "shop", "lost");
  }
  EXPECT_TRUE(later.isEmpty());
  EXPECT_EQ(0, log.count("ERROR"));
}

TEST_F(LocalUDPAppenderTest, OpensAgainAfterAFailureAndAfterCloseWithOneDescriptorAtMost) {
  const long before = openDescriptors();
  {
    LOGLocalUDPAppender other;
    EXPECT_EQ(9362, other.getPort());
    EXPECT_FALSE(other.requiresLayout());
    other.setPort(receiver.port());
    appendTo(other, "shop", "without a socket");
    VRKFault::arm(VRKFault::SOCKET_OPEN);
    other.activateOptions();
    EXPECT_EQ(before, openDescriptors());
    VRKFault::arm(VRKFault::SOCKET_MODE);
    other.activateOptions();
    EXPECT_EQ(before, openDescriptors());
    for (int i = 0; i < 3; ++i) {
      other.activateOptions();
      EXPECT_EQ(before + 1, openDescriptors());
      other.close();
      appendTo(other, "shop", "through the socket that is left");
      EXPECT_EQ("shop", parse(receiver.next(), sizeof(HEADER) - 1).name);
    }
    UdpReceiver elsewhere;
    other.setPort(elsewhere.port());
    other.activateOptions();
    appendTo(other, "shop", "x");
    EXPECT_EQ("\0\1x"s, parse(elsewhere.next(), sizeof(HEADER) - 1).data);
  }
  EXPECT_EQ(before, openDescriptors());
  EXPECT_TRUE(receiver.isEmpty());
}

TEST_F(LocalUDPAppenderTest, ThreadsLogWhileItIsClosedAndCopied) {
  std::multiset<std::string> expected, received;
  std::vector<std::thread> threads;
  for (const std::string letter : {"a", "b"}) {
    std::string each = letter;
    each.append("\0\1"s).append(letter);
    for (int i = 0; i < 100; ++i) expected.insert(each);
    threads.emplace_back([this, letter] {
      for (int i = 0; i < 100; ++i) append(letter, letter.c_str());
    });
  }
  LOGLocalUDPAppender copy;
  for (int i = 0; i < 50; ++i) {
    appender.close();
    appender.activateOptions();
    copy = appender;
    EXPECT_TRUE(copy == appender);
  }
  for (std::thread& thread : threads) thread.join();
  while (!receiver.isEmpty()) {
    const Received got = parse(receiver.last(), sizeof(HEADER) - 1);
    received.insert(got.error + got.name + got.data);
  }
  EXPECT_EQ(expected, received);
}

TEST_F(LocalUDPAppenderTest, ACopyIsEqualAndSendsByItself) {
  auto original = std::make_unique<LOGLocalUDPAppender>(appender);
  LOGLocalUDPAppender copy(*original), assigned;
  EXPECT_FALSE(assigned == copy);
  assigned = copy;
  EXPECT_TRUE(copy == appender);
  EXPECT_TRUE(assigned == appender);
  copy.setPort(1);
  EXPECT_TRUE(copy != appender);
  original.reset();
  for (LOGLocalUDPAppender* each : {&copy, &assigned}) {
    appendTo(*each, "shop", "x");
    EXPECT_EQ("\0\1x"s, parse(receiver.next(), sizeof(HEADER) - 1).data);
  }
}

TEST_F(LocalUDPAppenderTest, AForkedChildSendsThroughWhatItInherited) {
  EXPECT_EQ(0, statusInChild([&] { append("shop", "child"); }));
  EXPECT_EQ("\0\5child"s, parse(receiver.next(), sizeof(HEADER) - 1).data);
  append("shop", "parent");
  EXPECT_EQ("\0\6parent"s, parse(receiver.next(), sizeof(HEADER) - 1).data);
}

TEST_F(LocalUDPAppenderTest, ADocumentNamesThePort) {
  const TempDir dir;
  const std::string port = std::to_string(receiver.port());
  for (const char* className : {"LogLocalUDPAppender", "com.acme.LocalUDPAppender"}) {
    dir.write("log.xml", "<log4j:configuration><appender name='u' class='"s + className +
                             "'><param name='Port' value='" + port + "'/><param name='port' value='1'/></appender>" +
                             "<root><appender-ref ref='u'/></root></log4j:configuration>");
    Tree configured;
    LOGDOMConfigurator().doConfigure(dir.file("log.xml").c_str(), &configured);
    configured.getLogger("shop")->info("text");
    EXPECT_EQ("shop", parse(receiver.next(), 0).name) << className;
  }
}

}  // namespace
