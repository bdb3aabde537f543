// The error of a file that is no document.

#pragma once

#include "log4vrk/platform/VRKThrowable.h"

/// A VRKThrowable, and described as one, that knows where in the document the fault is.
class VRKDocumentError : public VRKThrowable {
 public:
  /// `line` and `column` count from 1 and are 0 when the fault has no place.
  VRKDocumentError(const I18NString& text, long line, long column, const char* source, int sourceLine)
      : VRKThrowable(text, source, sourceLine), m_line(line), m_column(column) {}

  long lineInDocument() const noexcept { return m_line; }
  long columnInDocument() const noexcept { return m_column; }

 private:
  long m_line;
  long m_column;
};
