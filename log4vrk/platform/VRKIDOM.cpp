#include "log4vrk/platform/VRKIDOM.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <type_traits>
#include <unordered_set>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/HandlerBase.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>

#include "log4vrk/platform/VRKMutex.h"
#include "log4vrk/platform/VRKThrowable.h"

static_assert(std::is_same_v<XMLCh, char16_t>, "texts go to Xerces and back without conversion");

namespace {

constexpr std::size_t MAX_FILE_BYTES = std::size_t{16} << 20;
constexpr std::size_t MAX_PARSER_BYTES = std::size_t{512} << 20;
// Each takes the parser 160 KB for a moment. Well within its memory, since the message of this limit has a position.
constexpr XMLSize_t MAX_ENTITY_EXPANSIONS = 2000;
// Xerces frees a document with line numbers recursively.
constexpr int MAX_DEPTH = 256;

constexpr char16_t LINE_KEY[] = u"line";

struct DocumentTooLarge {};

// The memory of one parser and its document. While parsing goes on, all that was ever asked for counts, given back or
// not: a document that multiplies itself by its entities has soon used up its share, however it does so.
class DocumentMemory : public xercesc::MemoryManager {
 public:
  DocumentMemory() = default;
  DocumentMemory(const DocumentMemory&) = delete;
  DocumentMemory& operator=(const DocumentMemory&) = delete;
  // The parser forgets a few blocks when it is interrupted.
  ~DocumentMemory() override {
    for (void* block : m_blocks) system().deallocate(block);
  }

  void* allocate(XMLSize_t size) override {
    if (m_limited) count(size);
    void* block = system().allocate(size);
    m_blocks.insert(block);
    return block;
  }

  void deallocate(void* block) override {
    m_blocks.erase(block);
    system().deallocate(block);
  }

  xercesc::MemoryManager* getExceptionMemoryManager() override { return system().getExceptionMemoryManager(); }

  void endLimit() { m_limited = false; }

 private:
  // Destructors of the parser ask for small blocks and must not fail. Whatever grows asks for large ones.
  static constexpr XMLSize_t SMALL = 4096;

  static xercesc::MemoryManager& system() { return *xercesc::XMLPlatformUtils::fgMemoryManager; }

  void count(XMLSize_t size) {
    const std::size_t left = MAX_PARSER_BYTES - m_used;
    if (size <= left) {
      m_used += size;
    } else if (size >= SMALL) {
      endLimit();  // for the parser to clean up
      throw DocumentTooLarge();
    }
  }

  std::unordered_set<void*> m_blocks;
  std::size_t m_used = 0;
  bool m_limited = true;
};

// Gives nothing for whatever lies outside the document. Its base raises on fatal errors and lets all others pass.
class ParserHandler : public xercesc::HandlerBase {
 public:
  xercesc::InputSource* resolveEntity(const XMLCh*, const XMLCh*) override {
    return new xercesc::MemBufInputSource(nullptr, 0, u"");
  }
};

class TreeBuilder : public xercesc::XercesDOMParser {
 public:
  TreeBuilder(xercesc::MemoryManager* memory, bool loadExternalDTD) : XercesDOMParser(nullptr, memory) {
    m_limits.setEntityExpansionLimit(MAX_ENTITY_EXPANSIONS);
    setSecurityManager(&m_limits);
    setErrorHandler(&m_handler);
    setEntityResolver(&m_handler);
    setDisableDefaultEntityResolution(true);
    setLoadExternalDTD(loadExternalDTD);
    setValidationScheme(Val_Never);
    setDoNamespaces(false);
    setCreateEntityReferenceNodes(false);
  }

 protected:
  xercesc::DOMElement* createElement(const XMLCh* name) override {
    const xercesc::Locator& place = *getScanner()->getLocator();
    int depth = 0;
    for (const xercesc::DOMNode* outer = fCurrentParent; outer; outer = outer->getParentNode()) ++depth;
    if (depth > MAX_DEPTH) throw xercesc::SAXParseException(u"elements are nested more than 256 deep", place);

    xercesc::DOMElement* element = XercesDOMParser::createElement(name);
    const auto line = static_cast<std::intptr_t>(place.getLineNumber());
    // NOLINTNEXTLINE(performance-no-int-to-ptr): Xerces hands the pointer back and never follows it
    element->setUserData(LINE_KEY, reinterpret_cast<void*>(line), nullptr);
    return element;
  }

 private:
  ParserHandler m_handler;
  xercesc::SecurityManager m_limits;
};

I18NString positionOf(const xercesc::SAXParseException& error) {
  if (error.getLineNumber() == 0) return I18NString();
  return ":" + (I18NString() + static_cast<unsigned long long>(error.getLineNumber())) + ":" +
         static_cast<unsigned long long>(error.getColumnNumber());
}

VRKThrowable failure(const I18NString& where, const I18NString& message) {
  return VRKThrowable(where.isEmpty() ? message : where + ": " + message, VRK_HERE);
}

// Lets only the library's own errors out; their texts begin with `where`, if there is one.
template <typename Operation>
auto translated(const I18NString& where, Operation&& operation) -> decltype(operation()) {
  try {
    return operation();
  } catch (const xercesc::SAXParseException& error) {
    throw failure(where + positionOf(error), error.getMessage());
  } catch (const xercesc::SAXException& error) {
    throw failure(where, error.getMessage());
  } catch (const xercesc::XMLException& error) {
    throw failure(where, error.getMessage());
  } catch (const xercesc::DOMException& error) {
    throw failure(where, error.getMessage());
  } catch (const DocumentTooLarge&) {
    throw failure(where, "reading the document takes more than 512 MB of memory");
  } catch (const xercesc::OutOfMemoryException&) {
    throw VRKOutOfMemoryError(VRK_HERE);
  } catch (const std::bad_alloc&) {
    throw VRKOutOfMemoryError(VRK_HERE);
  }
}

struct Descriptor {
  ~Descriptor() {
    if (number >= 0) ::close(number);
  }
  const int number;
};

std::string readFile(const char* path, const I18NString& name) {
  // Non-blocking, since opening a pipe would wait for its writer.
  const Descriptor file{::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)};
  struct stat status;
  if (file.number < 0 || ::fstat(file.number, &status) != 0) throw VRKSystemError(errno, name, VRK_HERE);
  if (!S_ISREG(status.st_mode)) throw failure(name, "not a regular file");

  std::string bytes;
  char block[16384];
  while (const ssize_t count = ::read(file.number, block, sizeof block)) {
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw VRKSystemError(errno, name, VRK_HERE);
    bytes.append(block, static_cast<std::size_t>(count));
    if (bytes.size() > MAX_FILE_BYTES) throw failure(name, "larger than 16 MB");
  }
  if (bytes.empty()) throw failure(name, "the file is empty");
  return bytes;
}

// An I18NString keeps a zero unit behind its text.
const XMLCh* unitsOf(const I18NString& text) { return text.view().data(); }

}  // namespace

// What the handles hide: their pointers lead to a DOMNode or a DOMNamedNodeMap.
struct VRKIDOM_Access {
  static xercesc::DOMNode* nodeOf(const VRKIDOM_Node& handle) {
    return static_cast<xercesc::DOMNode*>(handle.m_node.get());
  }
  static xercesc::DOMElement* elementOf(const VRKIDOM_Element& handle) {
    return static_cast<xercesc::DOMElement*>(nodeOf(handle));
  }
  static xercesc::DOMDocument* documentOf(const VRKIDOM_Document& handle) {
    return static_cast<xercesc::DOMDocument*>(nodeOf(handle));
  }

  // `Handle` must suit the kind of node.
  template <typename Handle>
  static Handle handleFor(const std::shared_ptr<void>& owner, xercesc::DOMNode* node) {
    Handle handle;
    if (node) handle.m_node = std::shared_ptr<void>(owner, node);
    return handle;
  }
  template <typename Handle>
  static Handle handleBeside(const VRKIDOM_Node& other, xercesc::DOMNode* node) {
    return handleFor<Handle>(other.m_node, node);
  }

  static VRKIDOM_NodeList listOf(std::vector<VRKIDOM_Node> nodes) {
    VRKIDOM_NodeList list;
    list.m_nodes = std::make_shared<const std::vector<VRKIDOM_Node>>(std::move(nodes));
    return list;
  }

  static VRKIDOM_NamedNodeMap mapOf(const VRKIDOM_Node& node, xercesc::DOMNamedNodeMap* map) {
    VRKIDOM_NamedNodeMap handle;
    if (map) handle.m_map = std::shared_ptr<void>(node.m_node, map);
    return handle;
  }

  // `memory`, if any, is what the document was made from.
  static VRKIDOM_Document adopt(xercesc::DOMDocument* document, const std::shared_ptr<DocumentMemory>& memory) {
    const std::shared_ptr<xercesc::DOMDocument> owner(document, [memory](auto* last) { last->release(); });
    return handleFor<VRKIDOM_Document>(owner, document);
  }
};

using Access = VRKIDOM_Access;

short VRKIDOM_Node::getNodeType() const {
  return isNull() ? short{0} : static_cast<short>(Access::nodeOf(*this)->getNodeType());
}

I18NString VRKIDOM_Node::getNodeName() const {
  return isNull() ? I18NString() : I18NString(Access::nodeOf(*this)->getNodeName());
}

I18NString VRKIDOM_Node::getNodeValue() const {
  return isNull() ? I18NString() : I18NString(Access::nodeOf(*this)->getNodeValue());
}

long VRKIDOM_Node::getLineNumber() const {
  if (isNull()) return 0;
  return static_cast<long>(reinterpret_cast<std::intptr_t>(Access::nodeOf(*this)->getUserData(LINE_KEY)));
}

VRKIDOM_NodeList VRKIDOM_Node::getChildNodes() const {
  if (isNull()) return VRKIDOM_NodeList();
  std::vector<VRKIDOM_Node> children;
  for (xercesc::DOMNode* child = Access::nodeOf(*this)->getFirstChild(); child; child = child->getNextSibling()) {
    children.push_back(Access::handleBeside<VRKIDOM_Node>(*this, child));
  }
  return Access::listOf(std::move(children));
}

VRKIDOM_NamedNodeMap VRKIDOM_Node::getAttributes() const {
  return isNull() ? VRKIDOM_NamedNodeMap() : Access::mapOf(*this, Access::nodeOf(*this)->getAttributes());
}

VRKIDOM_Document VRKIDOM_Node::getOwnerDocument() const {
  if (isNull()) return VRKIDOM_Document();
  return Access::handleBeside<VRKIDOM_Document>(*this, Access::nodeOf(*this)->getOwnerDocument());
}

void VRKIDOM_Node::appendChild(const VRKIDOM_Node& child) {
  if (isNull() || child.isNull()) return;
  translated("", [&] { Access::nodeOf(*this)->appendChild(Access::nodeOf(child)); });
}

VRKIDOM_Element::VRKIDOM_Element(const VRKIDOM_Node& node) {
  if (node.getNodeType() == ELEMENT_NODE) VRKIDOM_Node::operator=(node);
}

I18NString VRKIDOM_Element::getAttribute(const I18NString& name) const {
  return isNull() ? I18NString() : I18NString(Access::elementOf(*this)->getAttribute(unitsOf(name)));
}

void VRKIDOM_Element::setAttribute(const I18NString& name, const I18NString& value) {
  if (isNull()) return;
  translated("", [&] { Access::elementOf(*this)->setAttribute(unitsOf(name), unitsOf(value)); });
}

VRKIDOM_Element VRKIDOM_Document::getDocumentElement() const {
  if (isNull()) return VRKIDOM_Element();
  return Access::handleBeside<VRKIDOM_Element>(*this, Access::documentOf(*this)->getDocumentElement());
}

VRKIDOM_NodeList VRKIDOM_Document::getElementsByTagName(const I18NString& name) const {
  if (isNull()) return VRKIDOM_NodeList();
  const xercesc::DOMNodeList* found = Access::documentOf(*this)->getElementsByTagName(unitsOf(name));
  std::vector<VRKIDOM_Node> elements;
  while (xercesc::DOMNode* element = found->item(elements.size())) {
    elements.push_back(Access::handleBeside<VRKIDOM_Node>(*this, element));
  }
  return Access::listOf(std::move(elements));
}

VRKIDOM_Element VRKIDOM_Document::createElement(const I18NString& name) {
  if (isNull()) return VRKIDOM_Element();
  return translated("", [&] {
    return Access::handleBeside<VRKIDOM_Element>(*this, Access::documentOf(*this)->createElement(unitsOf(name)));
  });
}

VRKIDOM_Node VRKIDOM_NodeList::item(long index) const {
  return index < 0 || index >= getLength() ? VRKIDOM_Node() : (*m_nodes)[static_cast<std::size_t>(index)];
}

VRKIDOM_Node VRKIDOM_NamedNodeMap::getNamedItem(const I18NString& name) const {
  if (isNull()) return VRKIDOM_Node();
  const auto* map = static_cast<const xercesc::DOMNamedNodeMap*>(m_map.get());
  return Access::handleFor<VRKIDOM_Node>(m_map, map->getNamedItem(unitsOf(name)));
}

VRKIDOM_Document VRKIDOM_Parser::parse(const char* utf8Path) const {
  VRKIDOM_DOMImplementation::initialize();
  const I18NString name(utf8Path);
  // Outside of what may fail: the parser's exceptions live in it.
  const auto memory = std::make_shared<DocumentMemory>();
  return translated(name, [&] {
    const std::string bytes = readFile(utf8Path ? utf8Path : "", name);
    const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(), u"");
    TreeBuilder parser(memory.get(), m_loadExternalDTD);
    parser.parse(source);
    const xercesc::DOMDocument* parsed = parser.getDocument();
    if (!parsed || !parsed->getDocumentElement()) throw failure(name, "the document has no element");
    memory->endLimit();
    return Access::adopt(parser.adoptDocument(), memory);
  });
}

void VRKIDOM_DOMImplementation::initialize() {
  static VRKMutex mutex;
  static bool initialized = false;
  const VRKMutexGuard guard(mutex);
  if (initialized) return;
  translated("", [] { xercesc::XMLPlatformUtils::Initialize(); });
  initialized = true;
}

// Xerces counts who initialised it; this library takes one count and keeps it, because the parser belongs to the
// whole process: documents may outlive the last call of terminate(), and the program may use Xerces by itself.
void VRKIDOM_DOMImplementation::terminate() {}

VRKIDOM_DOMImplementation VRKIDOM_DOMImplementation::getImplementation() {
  initialize();
  return VRKIDOM_DOMImplementation();
}

VRKIDOM_Document VRKIDOM_DOMImplementation::createDocument() const {
  initialize();
  return translated("", [] {
    xercesc::DOMImplementation* implementation = xercesc::DOMImplementationRegistry::getDOMImplementation(u"Core");
    return Access::adopt(implementation->createDocument(), nullptr);
  });
}
