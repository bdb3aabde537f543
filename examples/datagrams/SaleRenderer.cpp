// libSaleRenderer.so: writes sales so that a Java program reads them as objects. Receiver.java is the other side.

#include "examples/datagrams/Sale.h"
#include "log4vrk/core/LOGObjectRenderer.h"

namespace {

// Of Java's object serialization.
constexpr unsigned char CLASS_DESCRIPTION = 0x72;
constexpr unsigned char END_OF_BLOCK_DATA = 0x78;
constexpr unsigned char EXTERNALIZABLE_IN_BLOCKS = 0x0C;
constexpr long long SERIAL_VERSION = 1;  // serialVersionUID of the Java class

class SaleRenderer : public LOGObjectRenderer {
 public:
  SaleRenderer() { instance("SaleRenderer"); }

  I18NString* doRender(LOGObject* object) override {
    const auto& sale = static_cast<const Sale&>(*object);
    auto* const text = new I18NString();
    *text += sale.quantity();
    *text += " x ";
    *text += sale.article();
    *text += " for ";
    *text += sale.cents();
    *text += " cents";
    return text;
  }

  // The class: its name and version. An Externalizable class reads its fields by itself, so none is listed.
  void writeExtHeader(unsigned char* buffer, long* offset) override {
    I18NString className("Sale");
    writeByte(CLASS_DESCRIPTION, buffer, offset);
    writeUTF(&className, buffer, offset);
    writeLong(SERIAL_VERSION, buffer, offset);
    writeByte(EXTERNALIZABLE_IN_BLOCKS, buffer, offset);
    writeShort(0, buffer, offset);
    writeByte(END_OF_BLOCK_DATA, buffer, offset);
  }

  // What Sale.readExternal() reads. The text goes as UTF-16 units: Java's readUTF() refuses characters above U+FFFF.
  void writeExtData(LOGObject* object, unsigned char* buffer, long* offset) override {
    const auto& sale = static_cast<const Sale&>(*object);
    const I18NString& article = sale.article();
    writeInt(static_cast<long>(article.length()), buffer, offset);
    for (std::size_t i = 0; i < article.length(); ++i) writeShort(static_cast<short>(article[i]), buffer, offset);
    writeInt(sale.quantity(), buffer, offset);
    writeLong(sale.cents(), buffer, offset);
  }

  // Lets the appender drop a message that is too large before it is written.
  long getDataLength(LOGObject* object) override {
    return 4 + 2 * static_cast<long>(static_cast<const Sale&>(*object).article().length()) + 4 + 8;
  }
};

}  // namespace

extern "C" LOG4VRK_EXPORT LOGObjectRenderer* getRenderer() { return new SaleRenderer; }
