// The names that documents are written with: elements, attributes, classes and parameters.

#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/core/LOGFilter.h"
#include "log4vrk/core/LOGLayout.h"
#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// What the configurator understands. It is read by this, and documents are checked and described by this.
///
/// Thread safety: constant.
class LOGDocumentTables {
 public:
  enum Type { BOOLEAN, NUMBER, LEVEL, TEXT };
  enum NameMatch { EXACT, ANY_CASE };

  /// One that a class takes.
  struct Parameter {
    const char* className;  // of the object, with the prefix
    const char* name;
    NameMatch match;
    Type type;
    const char* defaultValue;  // as it would be written; empty: there is none
    const char* effect;        // for people
    void (*set)(LOGObject& target, const I18NString& value);
    const char* values = "";                           // all that there are, with | between them; in any case
    bool (*takes)(const I18NString& value) = nullptr;  // where they are too many to name; null: any
  };

  /// One that may be named in a document.
  template <typename Base>
  struct Class {
    const char* name;  // with the prefix
    std::unique_ptr<Base> (*make)();
  };

  /// What may stand where.
  struct Element {
    std::string name;
    std::vector<std::string> attributes;
    std::vector<std::string> children;
  };

  LOG4VRK_EXPORT_FOR_TESTS static const std::vector<Parameter>& parameters();
  /// Null when the class does not take it: then it is ignored.
  LOG4VRK_EXPORT_FOR_TESTS static const Parameter* findParameter(const I18NString& className, const I18NString& name);
  /// Whether a parameter without a value counts.
  static bool mayBeEmpty(const I18NString& parameterName) { return parameterName == "File"; }

  LOG4VRK_EXPORT_FOR_TESTS static const std::vector<Element>& elements();
  /// Null for an element that means nothing anywhere.
  static const Element* findElement(std::string_view name);

  static const std::vector<Class<LOGAppenderSkeleton>>& appenders();
  static const std::vector<Class<LOGLayout>>& layouts();
  static const std::vector<Class<LOGFilter>>& filters();
  /// Null when there is none of that name.
  template <typename Base>
  static const Class<Base>* findClass(const std::vector<Class<Base>>& classes, const I18NString& name) {
    for (const Class<Base>& each : classes) {
      if (name == each.name) return &each;
    }
    return nullptr;
  }

  // The class that the text of a class attribute stands for.
  static I18NString appenderClass(const I18NString& attribute);
  static I18NString layoutClass(const I18NString& attribute);
  static I18NString filterClass(const I18NString& attribute) { return layoutClass(attribute); }

  /// Any other class of layout gives a plain one, which is also what LOGSimpleLayout stands for.
  static std::unique_ptr<LOGLayout> makeLayout(const I18NString& className);
  /// Any other class of filter denies everything.
  static std::unique_ptr<LOGFilter> makeFilter(const I18NString& className);

  static const std::vector<std::string>& levelNames();

  // Everything but "false" is true, and what is no number is 0: existing documents rely on both.
  static int asBoolean(const I18NString& value);
  static long asInteger(const I18NString& value);

  // The only class of error handler besides the one that every other name gives.
  static constexpr char ERROR_HANDLER[] = "LOGOnlyOnceErrorHandler";

  // Loggers with longer names are refused.
  static constexpr std::size_t LONGEST_LOGGER_NAME = 1000;
};
