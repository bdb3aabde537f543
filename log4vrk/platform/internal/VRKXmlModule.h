// What the library and its XML module, tovlog4vrk-xml.so, say to each other.

#pragma once

#include <cstddef>
#include <string_view>

/// For the library's own use. Receives a document as it is read, in document order, with all entities resolved. What it
/// raises ends the reading and reaches the caller of the module.
class VRKXmlSink {
 public:
  struct Attribute {
    std::u16string_view name;
    std::u16string_view value;
  };

  VRKXmlSink() = default;
  VRKXmlSink(const VRKXmlSink&) = delete;
  VRKXmlSink& operator=(const VRKXmlSink&) = delete;

  /// Where the document says something; counted from 1, columns in UTF-16 units.
  struct Position {
    long line = 0;
    long column = 0;
  };

  /// `start` is the place of the start tag's first character; for one that an entity brings along, a place in that
  /// entity or behind it. The attributes include those that the document declares a default for.
  virtual void startElement(std::u16string_view name, const Attribute* attributes, std::size_t count,
                            Position start) = 0;
  virtual void endElement() = 0;
  /// A run of characters: more of the same text may follow.
  virtual void characters(std::u16string_view text) = 0;
  /// Anything else; `type` is a DOM node type.
  virtual void node(short type, std::u16string_view name, std::u16string_view value) = 0;
  /// The document cannot be read. `line` is 0 when the failure has no position.
  [[noreturn]] virtual void fail(std::u16string_view message, unsigned long long line, unsigned long long column) = 0;

 protected:
  ~VRKXmlSink() = default;
};

constexpr char VRK_XML_MODULE[] = "tovlog4vrk-xml.so";

/// The module's one function, by this name: it changes whenever anything above does. Reads one document. Raises what
/// the sink raises, and std::bad_alloc. Thread safety: any thread.
constexpr char VRK_XML_PARSE[] = "vrkXmlParse2";
using VRKXmlParse = void (*)(const char* bytes, std::size_t size, bool loadExternalDTD, VRKXmlSink& sink);
