// The appender that writes to the system's journal.

#pragma once

#include <string>
#include <string_view>

#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/platform/internal/I18NUtf8Buffer.h"
#include "log4vrk/platform/internal/VRKJournalSocket.h"

/// Sends each event as one entry with fields to the socket of the journal on this machine. The text is that of the
/// layout without the line feed at its end, or the message alone when there is no layout. An entry of any size arrives
/// whole or not at all.
///
/// Thread safety: any thread.
/// Errors: an event that the journal does not take is lost with one line in the internal log. A journal that is slow is
/// waited for, for two seconds; from then on nothing is waited for until it takes an event again.
class LOG4VRK_EXPORT LOGJournalAppender : public LOGAppenderSkeleton {
 public:
  static constexpr char DEFAULT_SOCKET[] = "/run/systemd/journal/socket";

  LOGJournalAppender();
  explicit LOGJournalAppender(LOGLayout* layout);
  LOGJournalAppender(const LOGJournalAppender&) = delete;
  LOGJournalAppender& operator=(const LOGJournalAppender&) = delete;
  ~LOGJournalAppender() override;

  /// What the journal calls the program; its name unless given. Empty changes nothing.
  void setIdentifier(const I18NString& identifier);
  I18NString getIdentifier() const;
  /// The path of the journal's socket, which a journal of another namespace has elsewhere. Empty changes nothing.
  void setSocket(const I18NString& path);
  I18NString getSocket() const;

  void append(LOGLoggingEvent* event) override VRK_REQUIRES(m_critSection);
  /// Closes for good. May be repeated.
  void close() override;

 private:
  LOG4VRK_HIDDEN void addField(std::string_view name, std::string_view value) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void addNumber(std::string_view name, long value) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void makeEntry(LOGLoggingEvent& event) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void addMessage(LOGLoggingEvent& event) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void addPlace(const LOGLoggingEvent& event) VRK_REQUIRES(m_critSection);

  std::string m_identifier VRK_GUARDED_BY(m_critSection);
  std::string m_path VRK_GUARDED_BY(m_critSection);
  std::string m_entry VRK_GUARDED_BY(m_critSection);  // a member to keep its memory
  I18NUtf8Buffer m_text VRK_GUARDED_BY(m_critSection);
  VRKJournalSocket m_socket VRK_GUARDED_BY(m_critSection);
};
