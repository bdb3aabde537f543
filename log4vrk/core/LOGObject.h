// The root of every value that can be logged, rendered or stored.

#pragma once

#include <type_traits>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// A value with a type name and a text. The library tells classes apart by their type names, so the constructor of a
/// derived class sets its own with instance().
///
/// A message class that has members of its own overrides clone(), because an event keeps a clone of its message. What
/// is logged is its toString(), or what the renderer for its type name makes of it.
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

  /// Equal when both type name and text are.
  /// @{
  virtual bool operator==(const LOGObject& other) const;
  virtual bool operator!=(const LOGObject& other) const;
  /// @}
  /// For classes that override the members: `a` decides. Without these C++20 would also try `b == a`, and find that as
  /// good.
  template <typename A, typename B, typename = IfBothAreObjects<A, B>>
  friend bool operator==(const A& a, const B& b) {
    return a.operator==(b);
  }
  /// The opposite, for the same reason.
  template <typename A, typename B, typename = IfBothAreObjects<A, B>>
  friend bool operator!=(const A& a, const B& b) {
    return a.operator!=(b);
  }
  /// The text. Log calls ask for it while they hold locks of the library. It may log; such log calls are put off.
  virtual const I18NString& toString() const;
  /// A new copy that the caller owns.
  virtual LOGObject* clone() const;

  const I18NString& instanceOf() const { return m_typeName; }
  void instance(const I18NString& name) { m_typeName = name; }

 private:
  I18NString m_typeName;
  I18NString m_value;
};
