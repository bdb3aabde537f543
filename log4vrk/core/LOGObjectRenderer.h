// What turns a message object into text or bytes.

#pragma once

#include "log4vrk/core/LOGObject.h"
#include "log4vrk/platform/VRKExport.h"

/// Renders the objects of one class. A renderer of your own overrides doRender(); a library libNAME.so that the
/// document names as a renderer exports `extern "C" LOGObjectRenderer* getRenderer()`, which gives a new one.
///
/// The write operations put values into a buffer at `*offset`, most significant byte first, and advance the offset.
/// A null buffer or offset raises VRKAssertError. They know how large a buffer is only when it is that of an
/// appender that sends bytes. What does not fit there is not written, while the offset goes on, and the appender drops
/// the message.
///
/// Thread safety: several threads may render through one renderer at once. The message length belongs to whoever sets
/// it.
class LOG4VRK_EXPORT LOGObjectRenderer : public LOGObject {
 public:
  /// As many bytes of text as one datagram can hold.
  static constexpr long MOST_TEXT = 65507;

  LOGObjectRenderer();
  ~LOGObjectRenderer() override;

  /// A new text that the caller owns, or null.
  virtual I18NString* doRender(LOGObject* object) = 0;
  /// The description of the class and the data of an object, for receivers of objects. Nothing, unless overridden. A
  /// renderer that does not leave writing to the write operations overrides getDataLength() too, and keeps its header
  /// below 60000 bytes.
  virtual void writeExtHeader(unsigned char* buffer, long* offset);
  virtual void writeExtData(LOGObject* object, unsigned char* buffer, long* offset);
  /// How many bytes writeExtData() will write, 0 when that is not known. It is not called for more than there is room.
  virtual long getDataLength(LOGObject* object);

  unsigned long getMessageLength() const { return m_messageLength; }
  void setMessageLength(unsigned long length) { m_messageLength = length; }

  static void writeByte(unsigned char value, unsigned char* buffer, long* offset);
  static void writeShort(short value, unsigned char* buffer, long* offset);
  /// The low 32 bits.
  static void writeInt(long value, unsigned char* buffer, long* offset);
  static void writeUInt(unsigned long value, unsigned char* buffer, long* offset);
  static void writeLong(long long value, unsigned char* buffer, long* offset);
  /// The text in UTF-8 after its length in bytes as 16 bits; null is an empty text.
  static void writeUTF(I18NString* text, unsigned char* buffer, long* offset);
  /// At most `limit` bytes of text, and never more than MOST_TEXT. A character that would be cut is left out. A limit
  /// of 5 or less writes nothing at all.
  static void writeUTFExt(I18NString* text, unsigned char* buffer, long* offset, long limit);

  /// For its life the calling thread's write operations know how large one buffer is.
  class LOG4VRK_EXPORT Bound {
   public:
    Bound(const unsigned char* buffer, long size);
    ~Bound();
    Bound(const Bound&) = delete;
    Bound& operator=(const Bound&) = delete;

   private:
    friend class LOGObjectRenderer;

    const unsigned char* const m_buffer;
    const long m_size;
    const Bound* const m_outer;
  };

 private:
  LOG4VRK_HIDDEN static bool fits(const unsigned char* buffer, long offset, long count);
  LOG4VRK_HIDDEN static void writeBytes(unsigned long long value, int count, unsigned char* buffer, long* offset);

  unsigned long m_messageLength = 0;
};
