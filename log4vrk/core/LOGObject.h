// The root of every value that can be logged, rendered or stored.

#pragma once

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// A value with a type name and a text. Type names are compared as text to tell classes apart; a derived class sets its
/// own name in its constructor. A message class with state of its own overrides clone(), because events keep a clone;
/// its toString() is what is logged unless a renderer is registered for its type name.
///
/// Thread safety: as the standard containers.
class LOG4VRK_EXPORT LOGObject {
 public:
  LOGObject() = default;
  explicit LOGObject(const I18NString& value) : m_value(value) {}
  LOGObject(const LOGObject&) = default;
  LOGObject& operator=(const LOGObject&) = default;
  virtual ~LOGObject();

  /// Equal when type name and text are.
  virtual bool operator==(const LOGObject& other) const;
  virtual bool operator!=(const LOGObject& other) const;
  virtual const I18NString& toString() const;
  /// A new copy that the caller owns.
  virtual LOGObject* clone() const;

  const I18NString& instanceOf() const { return m_typeName; }
  void instance(const I18NString& name) { m_typeName = name; }

 private:
  I18NString m_typeName;
  I18NString m_value;
};
