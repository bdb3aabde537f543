#include "log4vrk/net/LOGSyslogQuietWriter.h"

#include "log4vrk/core/LOGErrorHandler.h"
#include "log4vrk/core/internal/LOGTaking.h"
#include "log4vrk/net/LOGSyslogWriter.h"
#include "log4vrk/platform/VRKThrowable.h"

LOGSyslogQuietWriter::LOGSyslogQuietWriter(LOGSyslogWriter* writer, int facility, LOGErrorHandler* errorHandler)
    : LOGQuietWriter(writer, errorHandler) {
  setFacility(facility);
}

LOGSyslogQuietWriter::~LOGSyslogQuietWriter() = default;

void LOGSyslogQuietWriter::write(const I18NString& text) {
  try {
    m_line.clear();
    m_line += '<';
    m_line += m_facility;
    m_line += '>';
    m_line += text;
    LOGQuietWriter::write(m_line);
  } catch (const std::exception& error) {
    reportFailure(error.what());
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    reportFailure("unknown error");
  }
}

// The priority of the ASCII line is written here, once, instead of for each event.
void LOGSyslogQuietWriter::setFacility(int facility) {
  m_facility = facility;
  m_asciiLine.clear();
  m_asciiLine.appendChecked("<");
  m_asciiLine.append(static_cast<long long>(m_facility));
  m_asciiLine.appendChecked(">");
  m_prioritySize = m_asciiLine.size();
}

std::string_view LOGSyslogQuietWriter::asciiDatagram(std::string_view text) {
  m_asciiLine.cutTo(m_prioritySize);
  return m_asciiLine.appendIfAscii(text) ? m_asciiLine.view() : std::string_view();
}

void LOGSyslogQuietWriter::reportFailure(const char* description) {
  LOGTaking::refuse();
  if (getErrorHandler() == nullptr) return;
  try {
    getErrorHandler()->error(description);
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    // There is nobody to tell that the handler failed.
  }
}
