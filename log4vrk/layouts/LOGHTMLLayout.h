// The layout that writes the log as a page for a browser.

#pragma once

#include "log4vrk/core/LOGLayout.h"

/// Writes one table row for each event. An event with a nested context gets a second row, and one with a throwable
/// another. The appenders of this library write the rows only: a program that wants a whole page writes getHeader()
/// before them and getFooter() after them. The page does not name its character encoding. Appenders write UTF-8, so
/// whoever serves the page has to say so.
///
/// In the text of the cells "<" and ">" are escaped, and nothing else is. The page's title and the names in tool tips
/// are not escaped at all: do not put text from outside the program into titles or names of threads and loggers.
///
/// Thread safety: as LOGLayout, escapeHTMLTags() included. Options may be set while other threads log.
/// Ownership: header, footer and escaped text share one page buffer. format() and getContentType() have another.
/// Errors: an event without a level raises VRKAssertError. What the message raises while it is rendered is not caught.
class LOG4VRK_EXPORT LOGHTMLLayout : public LOGLayout {
 public:
  static const I18NString& TITLE_OPTION;          // "Title"
  static const I18NString& LOCATION_INFO_OPTION;  // "LocationInfo"

  LOGHTMLLayout();
  ~LOGHTMLLayout() override;

  void activateOptions() override;
  /// The rows of one event, or the empty text for null. The time cell holds whole seconds since the library was loaded.
  I18NString& format(LOGLoggingEvent* event) override;
  I18NString& getContentType() override;
  /// The page up to the first row. It names the moment of the call as the start of the session.
  I18NString& getHeader() override;
  I18NString& getFooter() override;
  int ignoresThrowable() override;

  /// Anything but 0 adds a column "File:Line". Set it before getHeader(), which names the columns.
  void setLocationInfo(int on);
  int getLocationInfo() const;
  void setTitle(const I18NString& title);
  I18NString getTitle() const;

  /// Returns the page buffer with the escaped text. An empty text is returned itself and leaves the page buffer alone.
  I18NString& escapeHTMLTags(const I18NString& text);
  /// Adds nothing, on purpose: the row of a throwable is empty.
  void appendThrowableAsHTML(const I18NString& throwableText, I18NString& out);

 private:
  int m_locationInfo VRK_GUARDED_BY(m_critSection) = 0;
  I18NString m_title VRK_GUARDED_BY(m_critSection);
  I18NString m_page;
};
