// The log as a page for a browser.

#pragma once

#include "log4vrk/core/LOGLayout.h"

/// A table with a row for each event, and one more each for a nested context and a throwable. The appenders of this
/// library write rows only: a program that wants the whole page writes header and footer itself. The page does not name
/// its character encoding; whoever serves it says which one it was written in.
///
/// In what the cells show, "<" and ">" are escaped and nothing else is. The page's title and the names in tool tips are
/// written as they are: keep text from outside the program out of titles and names of threads and loggers.
///
/// Thread safety: as LOGLayout, escapeHTMLTags() included; options may be set while other threads log.
/// Ownership: header, footer and escaped text share one page buffer, apart from the result of the other operations.
/// Errors: an event without a level raises VRKAssertError; what rendering its message raises goes to the caller.
class LOG4VRK_EXPORT LOGHTMLLayout : public LOGLayout {
 public:
  static const I18NString& TITLE_OPTION;          // "Title"
  static const I18NString& LOCATION_INFO_OPTION;  // "LocationInfo"

  LOGHTMLLayout();
  ~LOGHTMLLayout() override;

  void activateOptions() override;
  /// Null gives the empty text. The time cell holds whole seconds since the library was loaded.
  I18NString& format(LOGLoggingEvent* event) override;
  I18NString& getContentType() override;
  /// With the moment of the call as the start of the session.
  I18NString& getHeader() override;
  I18NString& getFooter() override;
  int ignoresThrowable() override;

  /// Anything but 0: a column "File:Line".
  void setLocationInfo(int on);
  int getLocationInfo() const;
  void setTitle(const I18NString& title);
  I18NString getTitle() const;

  /// The page buffer with the escaped text; `text` itself when it is empty, and the page buffer stays as it was.
  I18NString& escapeHTMLTags(const I18NString& text);
  /// Adds nothing: the row of a throwable is empty.
  void appendThrowableAsHTML(const I18NString& throwableText, I18NString& out);

 private:
  int m_locationInfo VRK_GUARDED_BY(m_critSection) = 0;
  I18NString m_title VRK_GUARDED_BY(m_critSection);
  I18NString m_page;
};
