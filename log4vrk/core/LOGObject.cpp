#include "log4vrk/core/LOGObject.h"

#include "log4vrk/platform/VRKThrowable.h"

LOGObject::~LOGObject() = default;

bool LOGObject::operator==(const LOGObject& other) const {
  return m_typeName == other.m_typeName && m_value == other.m_value;
}

bool LOGObject::operator!=(const LOGObject& other) const { return !(*this == other); }

const I18NString& LOGObject::toString() const { return m_value; }

LOGObject* LOGObject::clone() const { return vrkNew<LOGObject>(VRK_HERE, *this); }
