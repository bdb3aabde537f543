// The root of every value that can be logged, rendered or stored.

#pragma once

#include <type_traits>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// A value with a type name and a text. Type names are compared as text to tell classes apart; a derived class sets its
/// own name in its constructor. A message class with state of its own overrides clone(), because events keep a clone;
/// its toString() is what is logged unless a renderer is registered for its type name.
///
/// Thread safety: as the standard containers.
class LOG4VRK_EXPORT LOGObject {
  template <typename A, typename B>
  using IfBothAreObjects = std::enable_if_t<std::is_base_of_v<LOGObject, A> && std::is_base_of_v<LOGObject, B>>;

 public:
  LOGObject() = default;
  explicit LOGObject(const I18NString& value) : m_value(value) {}
  LOGObject(const LOGObject&) = default;
  LOGObject& operator=(const LOGObject&) = default;
  virtual ~LOGObject();

  /// Equal when type name and text are.
  virtual bool operator==(const LOGObject& other) const;
  virtual bool operator!=(const LOGObject& other) const;
  // Of classes that override the former: what `a` says, and not `b` with the sides changed, which C++20 finds as good.
  template <typename A, typename B, typename = IfBothAreObjects<A, B>>
  friend bool operator==(const A& a, const B& b) {
    return a.operator==(b);
  }
  template <typename A, typename B, typename = IfBothAreObjects<A, B>>
  friend bool operator!=(const A& a, const B& b) {
    return a.operator!=(b);
  }
  virtual const I18NString& toString() const;
  /// A new copy that the caller owns.
  virtual LOGObject* clone() const;

  const I18NString& instanceOf() const { return m_typeName; }
  void instance(const I18NString& name) { m_typeName = name; }

 private:
  I18NString m_typeName;
  I18NString m_value;
};
