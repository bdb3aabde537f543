#include "log4vrk/platform/VRKIDOM.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory_resource>
#include <string>
#include <utility>

#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKDocumentError.h"
#include "log4vrk/platform/internal/VRKDynamicLibrary.h"
#include "log4vrk/platform/internal/VRKXmlModule.h"

namespace {

constexpr std::size_t MAX_FILE_BYTES = std::size_t{16} << 20;

// DOM node types, beside that of an element.
constexpr short ATTRIBUTE_NODE = 2;
constexpr short TEXT_NODE = 3;
constexpr short CDATA_NODE = 4;
constexpr short INSTRUCTION_NODE = 7;
constexpr short COMMENT_NODE = 8;
constexpr short DOCUMENT_NODE = 9;

constexpr char MISPLACED[] = "attempt is made to insert a node where it is not permitted";
constexpr char FOREIGN[] = "node is used in a different document than the one that created it";
constexpr char ILLEGAL_NAME[] = "invalid or illegal XML character";

class Tree;

}  // namespace

// What a handle leads to. The tree owns its memory and that of its texts.
struct VRKIDOM_Data {
  Tree* tree;
  short type;
  std::u16string_view name;
  std::u16string_view value;
  VRKXmlSink::Position start = {};
  VRKIDOM_Data* parent = nullptr;
  VRKIDOM_Data* firstChild = nullptr;
  VRKIDOM_Data* lastChild = nullptr;
  VRKIDOM_Data* firstAttribute = nullptr;
  VRKIDOM_Data* next = nullptr;  // child or attribute of the same parent
};

namespace {

using Node = VRKIDOM_Data;

// One document. Its nodes and texts are laid one behind the other and freed all at once, so that they need neither
// owners nor destructors: documents are read once, asked a little and dropped.
class Tree {
 public:
  explicit Tree(const I18NString& file = I18NString()) : m_file(file) {}
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;

  Node* document() { return &m_document; }
  const I18NString& file() const { return m_file; }

  Node* make(short type, std::u16string_view name, std::u16string_view value = {}) {
    const std::u16string_view keptName = keep(name), keptValue = keep(value);
    return new (m_memory.allocate(sizeof(Node), alignof(Node))) Node{this, type, keptName, keptValue};
  }

  std::u16string_view keep(std::u16string_view text) {
    if (text.empty()) return {};
    auto* const units = static_cast<char16_t*>(m_memory.allocate(text.size() * sizeof(char16_t), alignof(char16_t)));
    std::copy(text.begin(), text.end(), units);
    return {units, text.size()};
  }

 private:
  static constexpr std::size_t FIRST_BLOCK = 16384;

  const I18NString m_file;
  std::pmr::monotonic_buffer_resource m_memory{FIRST_BLOCK};
  Node m_document{this, DOCUMENT_NODE, u"#document", {}};
};

Node* rootOf(const Node& document) {
  Node* child = document.firstChild;
  while (child != nullptr && child->type != VRKIDOM_Node::ELEMENT_NODE) child = child->next;
  return child;
}

Node* attributeOf(const Node& element, std::u16string_view name) {
  Node* attribute = element.firstAttribute;
  while (attribute != nullptr && attribute->name != name) attribute = attribute->next;
  return attribute;
}

void append(Node& parent, Node& child) {
  child.parent = &parent;
  (parent.lastChild != nullptr ? parent.lastChild->next : parent.firstChild) = &child;
  parent.lastChild = &child;
}

// Searches from the first child, because nodes have no pointer to the one before: documents are read far more often
// than changed.
void detach(Node& child) {
  Node* const parent = std::exchange(child.parent, nullptr);
  if (parent == nullptr) return;
  Node* before = nullptr;
  for (Node* each = parent->firstChild; each != &child; each = each->next) before = each;
  (before != nullptr ? before->next : parent->firstChild) = child.next;
  if (parent->lastChild == &child) parent->lastChild = before;
  child.next = nullptr;
}

bool mayHold(const Node& parent, const Node& child) {
  if (child.type == COMMENT_NODE || child.type == INSTRUCTION_NODE) {
    return parent.type == DOCUMENT_NODE || parent.type == VRKIDOM_Node::ELEMENT_NODE;
  }
  if (parent.type == DOCUMENT_NODE) return child.type == VRKIDOM_Node::ELEMENT_NODE && rootOf(parent) == nullptr;
  const bool isContent =
      child.type == VRKIDOM_Node::ELEMENT_NODE || child.type == TEXT_NODE || child.type == CDATA_NODE;
  if (parent.type != VRKIDOM_Node::ELEMENT_NODE || !isContent) return false;
  // An element below itself would make a ring.
  for (const Node* outer = &parent; outer != nullptr; outer = outer->parent) {
    if (outer == &child) return false;
  }
  return true;
}

// The node after `node` in document order, within `top`.
Node* following(Node* node, const Node* top) {
  if (node->firstChild != nullptr) return node->firstChild;
  while (node != top && node->next == nullptr) node = node->parent;
  return node == top ? nullptr : node->next;
}

struct CharacterRange {
  char32_t first, last;
};

// What an XML name may begin with, and what else it may hold.
constexpr CharacterRange NAME_STARTS[] = {
    {':', ':'},       {'A', 'Z'},       {'_', '_'},       {'a', 'z'},         {0xC0, 0xD6},     {0xD8, 0xF6},
    {0xF8, 0x2FF},    {0x370, 0x37D},   {0x37F, 0x1FFF},  {0x200C, 0x200D},   {0x2070, 0x218F}, {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};
constexpr CharacterRange NAME_PARTS[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040},
};

template <std::size_t N>
bool isIn(const CharacterRange (&ranges)[N], char32_t character) {
  return std::any_of(ranges, ranges + N, [character](const CharacterRange& range) {
    return range.first <= character && character <= range.last;
  });
}

// Takes a character off the text. A lone surrogate comes as it is, and is in no range of names.
char32_t nextCharacter(std::u16string_view& text) {
  const char32_t lead = text[0];
  const bool isPair = lead >= 0xD800 && lead < 0xDC00 && text.size() > 1 && text[1] >= 0xDC00 && text[1] < 0xE000;
  const char32_t character = isPair ? 0x10000 + ((lead - 0xD800) << 10) + (text[1] - 0xDC00) : lead;
  text.remove_prefix(isPair ? 2 : 1);
  return character;
}

bool isName(std::u16string_view text) {
  if (text.empty() || !isIn(NAME_STARTS, nextCharacter(text))) return false;
  while (!text.empty()) {
    const char32_t character = nextCharacter(text);
    if (!isIn(NAME_STARTS, character) && !isIn(NAME_PARTS, character)) return false;
  }
  return true;
}

// The tree's memory raises std::bad_alloc, and callers expect the library's own error.
template <typename Operation>
auto translated(Operation&& operation) -> decltype(operation()) {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    throw VRKOutOfMemoryError(VRK_HERE);
  }
}

VRKThrowable failure(const I18NString& where, const I18NString& message) {
  return VRKThrowable(where + ": " + message, VRK_HERE);
}

// Builds the tree of a document.
class TreeBuilder final : public VRKXmlSink {
 public:
  explicit TreeBuilder(Tree& tree) : m_tree(tree), m_parent(tree.document()) {}

  void startElement(std::u16string_view name, const Attribute* attributes, std::size_t count, Position start) override {
    Node* const element = add(VRKIDOM_Node::ELEMENT_NODE, name, {});
    element->start = start;
    Node** end = &element->firstAttribute;
    for (std::size_t i = 0; i < count; ++i) {
      *end = m_tree.make(ATTRIBUTE_NODE, attributes[i].name, attributes[i].value);
      end = &(*end)->next;
    }
    m_parent = element;
  }

  void endElement() override {
    endText();
    m_parent = m_parent->parent;
  }

  // Parsers give a long text in pieces, and one with entities too. The tree has one node for it.
  void characters(std::u16string_view text) override { m_text += text; }

  void node(short type, std::u16string_view name, std::u16string_view value) override { add(type, name, value); }

  [[noreturn]] void fail(std::u16string_view message, unsigned long long line, unsigned long long column) override {
    const I18NString position = line == 0 ? I18NString() : ":" + (I18NString() + line) + ":" + column;
    throw VRKDocumentError(m_tree.file() + position + ": " + I18NString(message), static_cast<long>(line),
                           static_cast<long>(column), VRK_HERE);
  }

 private:
  Node* add(short type, std::u16string_view name, std::u16string_view value) {
    endText();
    Node* const node = m_tree.make(type, name, value);
    append(*m_parent, *node);
    return node;
  }

  void endText() {
    if (m_text.empty()) return;
    append(*m_parent, *m_tree.make(TEXT_NODE, u"#text", m_text));
    m_text.clear();
  }

  Tree& m_tree;
  Node* m_parent;
  std::u16string m_text;  // since the last tag
};

struct Descriptor {
  ~Descriptor() {
    if (number >= 0) ::close(number);
  }
  const int number;
};

std::string readFile(const char* path, const I18NString& name) {
  // Non-blocking, because otherwise opening a pipe would wait for a writer before it can be refused.
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

// The parser is in a module of its own: programs that are configured in code do not pay for loading it.
// A failure is not remembered: the next document tries again.
VRKXmlParse parser(const I18NString& file) {
  try {
    static const auto parse =
        reinterpret_cast<VRKXmlParse>(VRKDynamicLibrary::moduleFunction(VRK_XML_MODULE, VRK_XML_PARSE));
    return parse;
  } catch (const VRKThrowable& error) {
    throw failure(file, error.getText());
  }
}

}  // namespace

// Makes the handles. Each is a share of the whole document that leads to one node of it: that keeps a document alive
// for as long as somebody has any place in it.
struct VRKIDOM_Access {
  template <typename Handle>
  static Handle handle(const std::shared_ptr<Node>& owner, Node* node) {
    Handle handle;
    if (node != nullptr) handle.m_node = std::shared_ptr<Node>(owner, node);
    return handle;
  }
  static VRKIDOM_NodeList list(const std::shared_ptr<Node>& owner, std::vector<Node*> nodes) {
    VRKIDOM_NodeList list;
    list.m_owner = owner;
    list.m_nodes = std::move(nodes);
    return list;
  }
  static VRKIDOM_NamedNodeMap attributes(const std::shared_ptr<Node>& element) {
    VRKIDOM_NamedNodeMap map;
    map.m_element = element;
    return map;
  }
  static VRKIDOM_Document document(const std::shared_ptr<Tree>& tree) {
    VRKIDOM_Document handle;
    handle.m_node = std::shared_ptr<Node>(tree, tree->document());
    return handle;
  }
};

using Access = VRKIDOM_Access;

short VRKIDOM_Node::getNodeType() const { return isNull() ? short{0} : m_node->type; }

I18NString VRKIDOM_Node::getNodeName() const { return isNull() ? I18NString() : I18NString(m_node->name); }

I18NString VRKIDOM_Node::getNodeValue() const { return isNull() ? I18NString() : I18NString(m_node->value); }

long VRKIDOM_Node::getLineNumber() const { return isNull() ? 0 : m_node->start.line; }

long VRKIDOM_Node::getColumnNumber() const { return isNull() ? 0 : m_node->start.column; }

VRKIDOM_NodeList VRKIDOM_Node::getChildNodes() const {
  if (isNull()) return VRKIDOM_NodeList();
  std::vector<Node*> children;
  for (Node* child = m_node->firstChild; child != nullptr; child = child->next) children.push_back(child);
  return Access::list(m_node, std::move(children));
}

VRKIDOM_NamedNodeMap VRKIDOM_Node::getAttributes() const {
  return getNodeType() == ELEMENT_NODE ? Access::attributes(m_node) : VRKIDOM_NamedNodeMap();
}

VRKIDOM_Document VRKIDOM_Node::getOwnerDocument() const {
  if (isNull() || m_node->type == DOCUMENT_NODE) return VRKIDOM_Document();
  return Access::handle<VRKIDOM_Document>(m_node, m_node->tree->document());
}

void VRKIDOM_Node::appendChild(const VRKIDOM_Node& child) {
  if (isNull() || child.isNull()) return;
  if (child.m_node->tree != m_node->tree) throw VRKThrowable(FOREIGN, VRK_HERE);
  if (!mayHold(*m_node, *child.m_node)) throw VRKThrowable(MISPLACED, VRK_HERE);
  detach(*child.m_node);
  append(*m_node, *child.m_node);
}

VRKIDOM_Element::VRKIDOM_Element(const VRKIDOM_Node& node) {
  if (node.getNodeType() == ELEMENT_NODE) VRKIDOM_Node::operator=(node);
}

I18NString VRKIDOM_Element::getAttribute(const I18NString& name) const {
  const Node* const attribute = isNull() ? nullptr : attributeOf(*m_node, name.view());
  return attribute != nullptr ? I18NString(attribute->value) : I18NString();
}

void VRKIDOM_Element::setAttribute(const I18NString& name, const I18NString& value) {
  if (isNull()) return;
  translated([&] {
    Node* attribute = attributeOf(*m_node, name.view());
    if (attribute == nullptr) {
      if (!isName(name.view())) throw VRKThrowable(ILLEGAL_NAME, VRK_HERE);
      attribute = m_node->tree->make(ATTRIBUTE_NODE, name.view());
      attribute->next = std::exchange(m_node->firstAttribute, attribute);
    }
    attribute->value = m_node->tree->keep(value.view());  // the former value is freed with the tree
  });
}

VRKIDOM_Element VRKIDOM_Document::getDocumentElement() const {
  return isNull() ? VRKIDOM_Element() : Access::handle<VRKIDOM_Element>(m_node, rootOf(*m_node));
}

I18NString VRKIDOM_Document::getFileName() const { return isNull() ? I18NString() : m_node->tree->file(); }

VRKIDOM_NodeList VRKIDOM_Document::getElementsByTagName(const I18NString& name) const {
  if (isNull()) return VRKIDOM_NodeList();
  std::vector<Node*> elements;
  const bool all = name == "*";
  for (Node* node = m_node.get(); node != nullptr; node = following(node, m_node.get())) {
    if (node->type == ELEMENT_NODE && (all || node->name == name.view())) elements.push_back(node);
  }
  return Access::list(m_node, std::move(elements));
}

VRKIDOM_Element VRKIDOM_Document::createElement(const I18NString& name) {
  if (isNull()) return VRKIDOM_Element();
  if (!isName(name.view())) throw VRKThrowable(ILLEGAL_NAME, VRK_HERE);
  return vrkTranslateErrors(
      VRK_HERE, [&] { return Access::handle<VRKIDOM_Element>(m_node, m_node->tree->make(ELEMENT_NODE, name.view())); });
}

VRKIDOM_Node VRKIDOM_NodeList::item(long index) const {
  if (index < 0 || index >= getLength()) return VRKIDOM_Node();
  return Access::handle<VRKIDOM_Node>(m_owner, m_nodes[static_cast<std::size_t>(index)]);
}

long VRKIDOM_NamedNodeMap::getLength() const {
  long length = 0;
  for (const Node* each = isNull() ? nullptr : m_element->firstAttribute; each != nullptr; each = each->next) ++length;
  return length;
}

VRKIDOM_Node VRKIDOM_NamedNodeMap::item(long index) const {
  Node* each = isNull() || index < 0 ? nullptr : m_element->firstAttribute;
  while (each != nullptr && index-- > 0) each = each->next;
  return Access::handle<VRKIDOM_Node>(m_element, each);
}

VRKIDOM_Node VRKIDOM_NamedNodeMap::getNamedItem(const I18NString& name) const {
  return isNull() ? VRKIDOM_Node() : Access::handle<VRKIDOM_Node>(m_element, attributeOf(*m_element, name.view()));
}

VRKIDOM_Document VRKIDOM_Parser::parse(const char* utf8Path) const {
  return translated([&] {
    const I18NString name(utf8Path);
    const std::string bytes = readFile(utf8Path != nullptr ? utf8Path : "", name);
    const auto tree = std::make_shared<Tree>(name);
    TreeBuilder builder(*tree);
    parser(name)(bytes.data(), bytes.size(), m_loadExternalDTD, builder);
    return Access::document(tree);
  });
}

VRKIDOM_DOMImplementation VRKIDOM_DOMImplementation::getImplementation() { return VRKIDOM_DOMImplementation(); }

VRKIDOM_Document VRKIDOM_DOMImplementation::createDocument() const {
  return translated([] { return Access::document(std::make_shared<Tree>()); });
}
