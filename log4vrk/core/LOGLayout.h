// What turns an event into the text that an appender writes.

#pragma once

#include "log4vrk/core/LOGMutex.h"
#include "log4vrk/core/LOGObject.h"
#include "log4vrk/core/LOGOptionHandler.h"
#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

class LOGLoggingEvent;
struct LOGLayoutInternals;

/// The interface of all layouts, and the simple layout: the message and a line feed.
///
/// A layout of your own overrides format(): it builds its text in what takeSpare() gives and returns setResult(text).
///
/// Thread safety: whoever calls an operation that returns a text holds the layout's lock (a LOGGuard) until the text
/// has been used; appenders do, so that one layout may serve several of them.
/// Ownership: each such text is the one result of the layout, valid until the next such call.
/// Errors: an event that cannot be rendered gives an empty line; see format().
class LOG4VRK_EXPORT LOGLayout : public LOGOptionHandler, public LOGObject, public LOGMutex {
 public:
  LOGLayout();
  LOGLayout(const LOGLayout& other);
  LOGLayout& operator=(const LOGLayout&) = delete;
  ~LOGLayout() override;

  void activateOptions() override;
  /// The text for the event, line end included. Null gives the empty text. The library's own errors end in the internal
  /// log, and the line goes on; any other is written there too and raised.
  virtual I18NString& format(LOGLoggingEvent* event);
  virtual I18NString& getContentType();
  /// What an output begins and ends with.
  virtual I18NString& getHeader();
  virtual I18NString& getFooter();
  /// Not 0 when throwables are left to the appender.
  virtual int ignoresThrowable();
  /// Always raises VRKAssertError: layouts are not copied while they are in use.
  LOGLayout* clone() const override;

 protected:
  /// An empty text with the room of an earlier one, to build in.
  I18NString takeSpare();
  /// Makes `text` the result. A format() that was called while `text` was built has not disturbed it.
  I18NString& setResult(I18NString&& text);

  const I18NString& lineSeparator() const { return m_lineSeparator; }

 private:
  friend struct LOGLayoutInternals;

  const LOGLayoutInternals* m_internals = nullptr;  // of the class that made the layout
  I18NString m_result;
  I18NString m_lineSeparator;
  I18NString m_spare;
  I18NUtf8Buffer m_utf8;  // m_result in UTF-8, for appenders
};
