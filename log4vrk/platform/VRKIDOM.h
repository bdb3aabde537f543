// XML documents as a tree of value handles.

#pragma once

#include <memory>
#include <vector>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

struct VRKIDOM_Data;
class VRKIDOM_Document;
class VRKIDOM_NamedNodeMap;
class VRKIDOM_NodeList;

/// A place in a document. Copies lead to the same place, and every handle keeps its document alive, without the
/// parser. A null handle may be asked anything: its answers are null handles and empty texts, and it ignores changes.
///
/// Thread safety: one thread at a time for all handles of one document, reading included; different documents at once.
class LOG4VRK_EXPORT VRKIDOM_Node {
 public:
  static constexpr short ELEMENT_NODE = 1;

  VRKIDOM_Node() = default;

  bool isNull() const { return !m_node; }
  /// A DOM node type; 0 for a null handle.
  short getNodeType() const;
  I18NString getNodeName() const;
  /// Empty for the kinds of nodes that have no value, such as elements.
  I18NString getNodeValue() const;
  /// Where an element's start tag begins, line and column counted from 1; both 0 when it did not come from a file.
  long getLineNumber() const;
  long getColumnNumber() const;

  /// Empty for everything but elements and documents.
  VRKIDOM_NodeList getChildNodes() const;
  /// Null for everything but elements.
  VRKIDOM_NamedNodeMap getAttributes() const;
  /// Null for a document itself.
  VRKIDOM_Document getOwnerDocument() const;

  /// Moves `child` to the end of this node's children. Raises VRKThrowable when it cannot stand there.
  void appendChild(const VRKIDOM_Node& child);

 protected:
  friend struct VRKIDOM_Access;

  std::shared_ptr<VRKIDOM_Data> m_node;  // owns the document, leads to the node
};

/// An element of a document, with its attributes.
class LOG4VRK_EXPORT VRKIDOM_Element : public VRKIDOM_Node {
 public:
  VRKIDOM_Element() = default;
  /// Null when `node` is not an element.
  explicit VRKIDOM_Element(const VRKIDOM_Node& node);

  I18NString getTagName() const { return getNodeName(); }
  /// Empty when there is no such attribute.
  I18NString getAttribute(const I18NString& name) const;
  /// Raises VRKThrowable when `name` is no XML name.
  void setAttribute(const I18NString& name, const I18NString& value);
};

/// A document, which lives as long as anything that leads to it.
class LOG4VRK_EXPORT VRKIDOM_Document : public VRKIDOM_Node {
 public:
  VRKIDOM_Element getDocumentElement() const;
  /// The name that the document was read by; empty when it did not come from a file.
  I18NString getFileName() const;
  /// All elements of that name below the document, in document order. "*" stands for every name.
  VRKIDOM_NodeList getElementsByTagName(const I18NString& name) const;
  /// An element that is not yet part of the tree. Raises VRKThrowable when `name` is no XML name.
  VRKIDOM_Element createElement(const I18NString& name);
};

/// Nodes in order, as they were when the list was made: unlike the lists of the DOM standard it does not follow later
/// changes, and item() takes the same time for every index.
///
/// Thread safety: as VRKIDOM_Node.
class LOG4VRK_EXPORT VRKIDOM_NodeList {
 public:
  long getLength() const { return static_cast<long>(m_nodes.size()); }
  /// Null when `index` is out of range.
  VRKIDOM_Node item(long index) const;

 private:
  friend struct VRKIDOM_Access;

  std::shared_ptr<VRKIDOM_Data> m_owner;
  std::vector<VRKIDOM_Data*> m_nodes;
};

/// The attributes of an element by name.
///
/// Thread safety: as VRKIDOM_Node.
class LOG4VRK_EXPORT VRKIDOM_NamedNodeMap {
 public:
  bool isNull() const { return !m_element; }
  long getLength() const;
  /// In the order of the document. Null when `index` is out of range.
  VRKIDOM_Node item(long index) const;
  /// Null when there is no such attribute.
  VRKIDOM_Node getNamedItem(const I18NString& name) const;

 private:
  friend struct VRKIDOM_Access;

  std::shared_ptr<VRKIDOM_Data> m_element;  // owns the document
};

/// Reads documents from local files. Nothing outside the file is ever read: external DTDs and entities are taken as
/// empty, and inclusions are plain elements. Documents are not validated, and namespaces mean nothing: an undeclared
/// prefix is part of a name. What is larger than 16 MB, nested more than 256 deep, or grows without measure by its own
/// entities, is refused.
///
/// Thread safety: not thread-safe; parsers of their own may work at once.
class LOG4VRK_EXPORT VRKIDOM_Parser {
 public:
  /// Off by default. When on, the external DTD is looked for and still found empty.
  void setLoadExternalDTD(int flag) { m_loadExternalDTD = flag != 0; }

  /// `utf8Path` is the name of a regular file, never a URL. No part of a faulty document is returned. Raises
  /// VRKThrowable with the text "file:line:column: message", or "file: message" when the failure has no position: also
  /// when the XML module, tovlog4vrk-xml.so, cannot be loaded. The first parse loads it, for good.
  VRKIDOM_Document parse(const char* utf8Path) const;

 private:
  bool m_loadExternalDTD = false;
};

/// Makes documents from nothing.
///
/// Thread safety: any thread. A program that initialises Xerces itself must do so before or after the first
/// VRKIDOM_Parser::parse(), not at the same time.
class LOG4VRK_EXPORT VRKIDOM_DOMImplementation {
 public:
  // Nothing has to be initialised, and nothing ends: handles stay valid.
  static void initialize() {}
  static void terminate() {}

  static VRKIDOM_DOMImplementation getImplementation();
  /// A document without a root element.
  VRKIDOM_Document createDocument() const;
};
