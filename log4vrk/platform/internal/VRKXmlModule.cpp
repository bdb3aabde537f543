// The XML module: all that touches Xerces. A library of its own, so that only programs that read documents load Xerces,
// which brings a network stack along.

#include "log4vrk/platform/internal/VRKXmlModule.h"

#include <cstddef>
#include <mutex>
#include <new>
#include <type_traits>
#include <vector>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/framework/XMLElementDecl.hpp>
#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/parsers/SAXParser.hpp>
#include <xercesc/sax/HandlerBase.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/RefVectorOf.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/DTD/DTDElementDecl.hpp>

#include "log4vrk/platform/VRKExport.h"

static_assert(std::is_same_v<XMLCh, char16_t>, "texts come from Xerces without conversion");

namespace {

constexpr std::size_t MAX_BYTES = std::size_t{512} << 20;
// Each takes the parser 160 KB for a moment. Well within its memory, since the message of this limit has a position.
constexpr XMLSize_t MAX_ENTITY_EXPANSIONS = 2000;
constexpr int MAX_DEPTH = 256;

// DOM node types.
constexpr short CDATA_SECTION = 4;
constexpr short PROCESSING_INSTRUCTION = 7;
constexpr short COMMENT = 8;
constexpr short DOCUMENT_TYPE = 10;

struct DocumentTooLarge {};

std::u16string_view textOf(const XMLCh* text) {
  return text != nullptr ? std::u16string_view(text) : std::u16string_view();
}

// The memory of one parser. All that it ever asks for counts, given back or not, and what it hands on counts too: a
// document that multiplies itself by its entities has soon used up its share, however it does so.
class DocumentMemory : public xercesc::MemoryManager {
 public:
  DocumentMemory() = default;
  DocumentMemory(const DocumentMemory&) = delete;
  DocumentMemory& operator=(const DocumentMemory&) = delete;
  // The parser forgets a few blocks when it is interrupted.
  ~DocumentMemory() override {
    while (m_blocks.next != &m_blocks) deallocate(m_blocks.next + 1);
  }

  void* allocate(XMLSize_t size) override {
    // Destructors of the parser ask for small blocks and must not fail. Whatever grows asks for large ones.
    if (!m_exhausted) count(size, size >= SMALL);
    auto* const block = static_cast<Block*>(system().allocate(sizeof(Block) + size));
    block->previous = &m_blocks;
    block->next = m_blocks.next;
    block->next->previous = block;
    m_blocks.next = block;
    return block + 1;
  }

  void deallocate(void* memory) override {
    if (memory == nullptr) return;
    Block* const block = static_cast<Block*>(memory) - 1;
    block->previous->next = block->next;
    block->next->previous = block->previous;
    system().deallocate(block);
  }

  xercesc::MemoryManager* getExceptionMemoryManager() override { return system().getExceptionMemoryManager(); }

  // For a node with that many units of text in the tree that the document becomes.
  void countNode(std::size_t units) { count(NODE_BYTES + units * sizeof(char16_t), true); }

 private:
  // Stands in front of each block that the parser has.
  struct alignas(std::max_align_t) Block {
    Block* previous;
    Block* next;
  };

  static constexpr XMLSize_t SMALL = 4096;
  static constexpr std::size_t NODE_BYTES = 128;

  static xercesc::MemoryManager& system() { return *xercesc::XMLPlatformUtils::fgMemoryManager; }

  void count(std::size_t size, bool mayFail) {
    const std::size_t left = MAX_BYTES - m_used;
    if (size <= left) {
      m_used += size;
    } else if (mayFail) {
      m_exhausted = true;  // from here on the parser cleans up
      throw DocumentTooLarge();
    }
  }

  Block m_blocks{&m_blocks, &m_blocks};
  std::size_t m_used = 0;
  bool m_exhausted = false;
};

// Gives nothing for whatever lies outside the document. Its base raises on fatal errors and lets all others pass.
class NothingOutside : public xercesc::HandlerBase {
 public:
  xercesc::InputSource* resolveEntity(const XMLCh*, const XMLCh*) override {
    return new xercesc::MemBufInputSource(nullptr, 0, u"");
  }
};

// Hands the document on as the scanner finds it.
class Reader : public xercesc::SAXParser {
 public:
  Reader(DocumentMemory& memory, bool loadExternalDTD, VRKXmlSink& sink)
      : SAXParser(nullptr, &memory), m_memory(memory), m_sink(sink) {
    m_limits.setEntityExpansionLimit(MAX_ENTITY_EXPANSIONS);
    setSecurityManager(&m_limits);
    setDocumentHandler(&m_handler);  // without these the scanner reports nothing
    setDTDHandler(&m_handler);
    setErrorHandler(&m_handler);
    setEntityResolver(&m_handler);
    setDisableDefaultEntityResolution(true);
    setLoadExternalDTD(loadExternalDTD);
    setValidationScheme(Val_Never);
    setDoNamespaces(false);
  }

  // Token by token, because the scanner tells the place of an element only when its start tag has been read: the place
  // before that is where the tag begins.
  void read(const xercesc::InputSource& source) {
    xercesc::XMLPScanToken token;
    bool goesOn = parseFirst(source, token);
    while (goesOn) {
      const xercesc::Locator& place = *getScanner().getLocator();
      m_start = {static_cast<long>(place.getLineNumber()), static_cast<long>(place.getColumnNumber())};
      goesOn = parseNext(token);
    }
  }

  void startElement(const xercesc::XMLElementDecl& declaration, unsigned, const XMLCh*,
                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t count, bool isEmpty,
                    bool) override {
    const xercesc::Locator& place = *getScanner().getLocator();
    if (++m_depth > MAX_DEPTH) throw xercesc::SAXParseException(u"elements are nested more than 256 deep", place);
    m_seen = true;
    const std::u16string_view name = declaration.getFullName();
    m_memory.countNode(name.length());
    m_attributes.clear();
    for (XMLSize_t i = 0; i < count; ++i) {
      const xercesc::XMLAttr& attribute = *attributes.elementAt(i);
      m_attributes.push_back({textOf(attribute.getName()), textOf(attribute.getValue())});
      m_memory.countNode(m_attributes.back().name.length() + m_attributes.back().value.length());
    }
    m_sink.startElement(name, m_attributes.data(), count, m_start);
    if (isEmpty) end();
  }

  void endElement(const xercesc::XMLElementDecl&, unsigned, bool, const XMLCh*) override { end(); }

  void docCharacters(const XMLCh* text, XMLSize_t length, bool isSection) override {
    if (m_depth == 0) return;
    if (isSection) return node(CDATA_SECTION, u"#cdata-section", {text, length});
    m_memory.countNode(length);
    m_sink.characters({text, length});
  }

  void ignorableWhitespace(const XMLCh* text, XMLSize_t length, bool isSection) override {
    docCharacters(text, length, isSection);
  }

  void docComment(const XMLCh* text) override { node(COMMENT, u"#comment", textOf(text)); }
  void docPI(const XMLCh* target, const XMLCh* data) override {
    node(PROCESSING_INSTRUCTION, textOf(target), textOf(data));
  }
  void doctypeDecl(const xercesc::DTDElementDecl& root, const XMLCh*, const XMLCh*, bool, bool) override {
    node(DOCUMENT_TYPE, root.getFullName(), u"");
  }

  bool hasSeenElement() const { return m_seen; }

 private:
  void end() {
    --m_depth;
    m_sink.endElement();
  }

  void node(short type, std::u16string_view name, std::u16string_view value) {
    m_memory.countNode(name.length() + value.length());
    m_sink.node(type, name, value);
  }

  DocumentMemory& m_memory;
  VRKXmlSink& m_sink;
  NothingOutside m_handler;
  xercesc::SecurityManager m_limits;
  std::vector<VRKXmlSink::Attribute> m_attributes;
  VRKXmlSink::Position m_start;  // of the token that is being read
  int m_depth = 0;
  bool m_seen = false;
};

// Xerces would end the process.
class RaisingPanicHandler : public xercesc::PanicHandler {
 public:
  void panic(const PanicReasons) override { throw std::bad_alloc(); }
};

// Xerces counts who initialised it; the module takes one count and keeps it, because the parser belongs to the whole
// process: the program may use Xerces by itself.
//
// False when it ran out of memory half-way, now or before. Then it counts as initialised, and neither using it nor
// giving the count back is safe: documents cannot be read any more.
bool initialize() {
  enum State { UNTOUCHED, READY, BROKEN };
  static State state = UNTOUCHED;
  static std::mutex mutex;
  static auto& panicHandler = *new RaisingPanicHandler;  // Xerces keeps it until the process ends
  const std::lock_guard<std::mutex> guard(mutex);
  if (state == UNTOUCHED) {
    state = BROKEN;
    xercesc::XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr, &panicHandler);
    state = READY;
  }
  return state == READY;
}

}  // namespace

static_assert(std::string_view(VRK_XML_PARSE) == "vrkXmlParse2");

extern "C" LOG4VRK_EXPORT void vrkXmlParse2(const char* bytes, std::size_t size, bool loadExternalDTD,
                                            VRKXmlSink& sink) try {
  if (!initialize()) sink.fail(u"the XML parser ran out of memory when it was initialised", 0, 0);
  // Outside of what may fail: the parser's exceptions live in it.
  DocumentMemory memory;
  try {
    const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes), size, u"");
    Reader reader(memory, loadExternalDTD, sink);
    reader.read(source);
    if (!reader.hasSeenElement()) sink.fail(u"the document has no element", 0, 0);
  } catch (const xercesc::SAXParseException& error) {
    sink.fail(textOf(error.getMessage()), error.getLineNumber(), error.getColumnNumber());
  } catch (const xercesc::SAXException& error) {
    sink.fail(textOf(error.getMessage()), 0, 0);
  } catch (const xercesc::XMLException& error) {
    sink.fail(textOf(error.getMessage()), 0, 0);
  } catch (const DocumentTooLarge&) {
    sink.fail(u"reading the document takes more than 512 MB of memory", 0, 0);
  }
} catch (const xercesc::XMLException& error) {
  sink.fail(textOf(error.getMessage()), 0, 0);
} catch (const xercesc::OutOfMemoryException&) {
  throw std::bad_alloc();
}
