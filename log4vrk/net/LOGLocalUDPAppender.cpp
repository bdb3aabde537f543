#include "log4vrk/net/LOGLocalUDPAppender.h"

#include <utility>

#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGObjectRenderer.h"
#include "log4vrk/core/LOGRendererMap.h"
#include "log4vrk/core/internal/LOGTaking.h"
#include "log4vrk/platform/VRKThrowable.h"

namespace {

constexpr int SOCKET_BUFFER = 65536;
// The write operations of LOGObjectRenderer stop at the end of the datagram. The room behind it is for renderers that
// write bytes by themselves.
constexpr long SLACK = 65536;

// The marks of Java's object serialization.
constexpr short STREAM_MAGIC = static_cast<short>(0xACED);
constexpr short STREAM_VERSION = 5;
constexpr unsigned char NO_OBJECT = 0x70;
constexpr unsigned char NEW_OBJECT = 0x73;
constexpr unsigned char END_OF_BLOCK_DATA = 0x78;
constexpr unsigned char LONG_BLOCK_DATA = 0x7A;

}  // namespace

const I18NString& LOGLocalUDPAppender::PORT_OPTION = vrkImmortal<I18NString>("Port");

// A datagram under construction. A step that finds no room writes nothing, but moves the position on all the same. So
// no step needs a check of its own: room() is negative at the end.
class LOGLocalUDPAppender::Datagram {
 public:
  explicit Datagram(unsigned char* buffer) : m_buffer(buffer), m_bound(buffer, LARGEST_DATAGRAM) {}

  void writeByte(unsigned char value) { LOGObjectRenderer::writeByte(value, m_buffer, &m_position); }
  void writeShort(short value) { LOGObjectRenderer::writeShort(value, m_buffer, &m_position); }
  // What `write(buffer, offset)` writes, and in front of it its length in bytes as 32 bits.
  template <typename Write>
  void writeBlock(Write&& write) {
    long lengthAt = m_position;
    LOGObjectRenderer::writeInt(0, m_buffer, &m_position);
    const long begin = m_position;
    write(m_buffer, &m_position);
    LOGObjectRenderer::writeInt(m_position - begin, m_buffer, &lengthAt);
  }
  template <typename Write>
  void write(Write&& write) {
    write(m_buffer, &m_position);
  }

  long room() const { return LARGEST_DATAGRAM - m_position; }
  const void* bytes() const { return m_buffer; }
  std::size_t size() const { return static_cast<std::size_t>(m_position); }

 private:
  unsigned char* const m_buffer;
  const LOGObjectRenderer::Bound m_bound;
  long m_position = 0;
};

LOGLocalUDPAppender::LOGLocalUDPAppender() {
  instance("LOGLocalUDPAppender");
  LOGAppenderSkeleton::setName("LOGLocalUDPAppender");
}

LOGLocalUDPAppender::LOGLocalUDPAppender(const LOGLocalUDPAppender& other) : LOGAppenderSkeleton(other) {
  *this = other;
}

LOGLocalUDPAppender& LOGLocalUDPAppender::operator=(const LOGLocalUDPAppender& other) {
  if (this == &other) return *this;
  LOGAppenderSkeleton::operator=(other);
  // Never both locks at once: another thread may be copying the other way round.
  VRKDatagramSocket socket;
  int closed = 1;
  {
    const LOGGuard guard(other);
    socket = other.m_socket;
    closed = other.m_socketClosed;
  }
  const LOGGuard guard(*this);
  m_socket = std::move(socket);
  m_socketClosed = closed;
  setPort(other.getPort());
  return *this;
}

LOGLocalUDPAppender::~LOGLocalUDPAppender() = default;

void LOGLocalUDPAppender::activateOptions() {
  if (m_socketClosed.load(std::memory_order_acquire) == 1) init();
}

void LOGLocalUDPAppender::init() {
  const LOGGuard guard(*this);
  if (m_socketClosed == 1) openSocket();
}

void LOGLocalUDPAppender::openSocket() {
  VRKSocketAddress destination(VRKSocketAddress::BUILT_IN_INTERFACE);
  VRKSocketAddress local(VRKSocketAddress::BUILT_IN_INTERFACE);
  if (!destination.resolve("localhost", getPort(), false)) return;
  if (!local.resolve(I18NString(), 0, true, destination.getFamily())) return;
  // A socket of its own until all has gone well: a failure leaves the appender as it was.
  VRKDatagramSocket socket;
  if (!socket.open(local) || !socket.setBufferSizes(SOCKET_BUFFER)) return;
  socket.setDestination(destination);
  if (!socket.setNonBlocking()) return;
  m_socket = std::move(socket);
  m_socketClosed.store(0, std::memory_order_release);
}

void LOGLocalUDPAppender::append(LOGLoggingEvent* event) {
  if (event == nullptr) return;
  LOGObject* const message = event->getMessage();
  VRK_ASSERT(message);
  const LOGGuard guard(*this);
  if (!m_buffer) m_buffer.reset(new unsigned char[LARGEST_DATAGRAM + SLACK]());
  Datagram datagram(m_buffer.get());
  const bool isSent = build(datagram, *event, *message) && m_socket.send(datagram.bytes(), datagram.size());
  if (!isSent) LOGTaking::refuse();
}

bool LOGLocalUDPAppender::build(Datagram& datagram, LOGLoggingEvent& event, LOGObject& message) {
  const LOGRendererMap::Use renderer(message.instanceOf());  // in use, so that another thread cannot free it meanwhile
  datagram.writeShort(STREAM_MAGIC);
  datagram.writeShort(STREAM_VERSION);
  datagram.writeByte(LONG_BLOCK_DATA);
  datagram.writeBlock([&](unsigned char* buffer, long* offset) {
    I18NString name = event.getLoggerName();  // writeUTF() takes no const text
    LOGObjectRenderer::writeUTF(&name, buffer, offset);
  });
  datagram.writeByte(NEW_OBJECT);
  // Before the renderer writes: one that writes by itself counts on the whole room behind the datagram.
  if (datagram.room() < 0) return false;
  datagram.write([&](unsigned char* buffer, long* offset) { renderer->writeExtHeader(buffer, offset); });
  datagram.writeByte(NO_OBJECT);
  datagram.writeByte(LONG_BLOCK_DATA);
  // For the same reason it is asked for the length before it writes the data.
  if (datagram.room() < renderer->getDataLength(&message)) return false;
  datagram.writeBlock([&](unsigned char* buffer, long* offset) { renderer->writeExtData(&message, buffer, offset); });
  datagram.writeByte(END_OF_BLOCK_DATA);
  return datagram.room() >= 0;
}

void LOGLocalUDPAppender::close() { m_socketClosed.store(1, std::memory_order_release); }

bool LOGLocalUDPAppender::operator==(const LOGObject& other) const {
  const auto* const that = dynamic_cast<const LOGLocalUDPAppender*>(&other);
  return that != nullptr && LOGAppenderSkeleton::operator==(other) && getPort() == that->getPort() &&
         m_socketClosed == that->m_socketClosed;
}

bool LOGLocalUDPAppender::operator!=(const LOGObject& other) const { return !(*this == other); }
