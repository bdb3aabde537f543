#include "log4vrk/core/LOGFilter.h"

#include "log4vrk/platform/VRKThrowable.h"

LOGFilter::LOGFilter() { instance("LOGFilter"); }

LOGFilter::LOGFilter(const LOGFilter& other) : LOGOptionHandler(other), LOGObject(other), m_next(other.getNext()) {}

LOGFilter::~LOGFilter() = default;

LOGFilter* LOGFilter::clone() const {
  VRKAssertError::raise("VRK_ASSERT_NAMED(FALSE, \"Can't clone an abstract object.\");", VRK_HERE);
}
