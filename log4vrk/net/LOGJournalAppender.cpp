#include "log4vrk/net/LOGJournalAppender.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "log4vrk/core/LOGLayout.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGSourceLocation.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGEventFields.h"
#include "log4vrk/core/internal/LOGLayoutInternals.h"
#include "log4vrk/core/internal/LOGSeverity.h"
#include "log4vrk/core/internal/LOGTaking.h"
#include "log4vrk/platform/internal/VRKErrorText.h"
#include "log4vrk/platform/internal/VRKProcess.h"

namespace {

// What the entry has besides what programs add.
constexpr std::string_view OWN_NAMES[] = {"MESSAGE",   "PRIORITY",  "LEVEL",    "SYSLOG_IDENTIFIER",
                                          "LOGGER",    "THREAD",    "CONTEXT",  "THROWABLE",
                                          "CODE_FILE", "CODE_LINE", "CODE_FUNC"};

// As the journal takes names: up to 64 capitals, digits and underscores, a capital first. Others it drops.
std::string nameOf(std::string_view name) {
  constexpr std::size_t LONGEST = 64;
  const auto isCapital = [](char c) { return c >= 'A' && c <= 'Z'; };
  std::string result(name.substr(0, LONGEST));
  for (char& c : result) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    if (!isCapital(c) && (c < '0' || c > '9')) c = '_';
  }
  const bool isOwn = std::find(std::begin(OWN_NAMES), std::end(OWN_NAMES), result) != std::end(OWN_NAMES);
  if (isOwn || result.empty() || !isCapital(result[0])) result.insert(0, "FIELD_");
  return result.substr(0, LONGEST);
}

}  // namespace

LOGJournalAppender::LOGJournalAppender() : m_identifier(VRKProcess::programName()), m_path(DEFAULT_SOCKET) {
  instance("LOGJournalAppender");
}

LOGJournalAppender::LOGJournalAppender(LOGLayout* layout) : LOGJournalAppender() { setLayout(layout); }

LOGJournalAppender::~LOGJournalAppender() = default;

void LOGJournalAppender::setIdentifier(const I18NString& identifier) {
  const LOGGuard guard(*this);
  if (!identifier.isEmpty()) m_identifier = identifier.toUtf8();
}

I18NString LOGJournalAppender::getIdentifier() const {
  const LOGGuard guard(*this);
  return I18NString(m_identifier);
}

void LOGJournalAppender::setSocket(const I18NString& path) {
  const LOGGuard guard(*this);
  if (!path.isEmpty()) m_path = path.toUtf8();
}

I18NString LOGJournalAppender::getSocket() const {
  const LOGGuard guard(*this);
  return I18NString(m_path);
}

void LOGJournalAppender::append(LOGLoggingEvent* event) {
  makeEntry(*event);
  const int error = m_socket.send(m_path, m_entry);
  if (m_entry.capacity() > LOGLayoutInternals::MOST_KEPT) m_entry = std::string();
  if (error == 0) return;
  LOGTaking::refuse();
  LOGLogLog::error("LOGJournalAppender::append -- the event is lost: " + I18NString(m_path) + ": " +
                   vrkErrorText(error) + " [" + error + "]");
}

void LOGJournalAppender::makeEntry(LOGLoggingEvent& event) {
  m_entry.clear();
  addMessage(event);
  if (const LOGLevel* const level = event.getLevel()) {
    addNumber("PRIORITY", logSeverity(*level));
    addField("LEVEL", level->toString().toUtf8());
  }
  addField("SYSLOG_IDENTIFIER", m_identifier);
  addField("LOGGER", event.getLoggerNameUtf8());
  m_text.clear();
  event.appendThreadName(m_text);
  addField("THREAD", m_text.view());
  if (const I18NString& context = event.getNDC(); !context.isEmpty()) addField("CONTEXT", context.toUtf8());
  if (const I18NString& error = event.getThrowableStrRep(); !error.isEmpty()) addField("THROWABLE", error.toUtf8());
  addPlace(event);
  const LOGEventFields fields(event);
  const auto add = [this](const LOGFields::Field& field) VRK_NO_THREAD_SAFETY_ANALYSIS {
    m_text.clear();
    field.appendValue(m_text);
    addField(nameOf(field.name), m_text.view());
  };
  fields.eachOfContext(add);
  fields.eachOwn(add);
}

void LOGJournalAppender::addMessage(LOGLoggingEvent& event) {
  LOGLayout* const layout = getLayout();
  if (layout == nullptr) {
    addField("MESSAGE", event.renderUtf8(m_text));
    return;
  }
  const VRKThreadGuard guard(layout->criticalSection());
  std::string_view text = LOGLayoutInternals::formatUtf8(*layout, &event);
  if (!text.empty() && text.back() == '\n') text.remove_suffix(1);
  addField("MESSAGE", text);
}

void LOGJournalAppender::addPlace(const LOGLoggingEvent& event) {
  const LOGSourceLocation* const place = event.getSourceLocation();
  if (place == nullptr) return;
  addField("CODE_FILE", place->file);
  addNumber("CODE_LINE", place->line);
  addField("CODE_FUNC", place->function);
}

void LOGJournalAppender::addNumber(std::string_view name, long value) { addField(name, std::to_string(value)); }

// A value of one line stands behind its name; any other begins with its length, as 64 bits from the lowest byte on.
void LOGJournalAppender::addField(std::string_view name, std::string_view value) {
  m_entry.append(name);
  if (value.find('\n') == value.npos) {
    m_entry += '=';
  } else {
    m_entry += '\n';
    for (int shift = 0; shift < 64; shift += 8) {
      m_entry += static_cast<char>(static_cast<std::uint64_t>(value.size()) >> shift);
    }
  }
  m_entry.append(value);
  m_entry += '\n';
}

void LOGJournalAppender::close() {
  if (getClosed() == 1) return;
  logContain("LOGJournalAppender::close -- unable to lock mutex", [&] {
    const LOGGuard guard(*this);
    setClosed(1);
    m_socket.close();
  });
}
