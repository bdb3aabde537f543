// What the system's error numbers mean.

#pragma once

#include <cstring>

/// In English whatever the locale, so that a text can be looked up, and is valid UTF-8. Never null; not to be freed.
inline const char* vrkErrorText(int error) {
  const char* const text = ::strerrordesc_np(error);
  return text != nullptr ? text : "unknown error";
}
