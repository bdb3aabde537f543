// Events as XML elements.

#pragma once

#include "log4vrk/core/LOGLayout.h"
#include "log4vrk/platform/VRKList.h"

/// One "log4j:event" element and an empty line for each event; lines end in CR LF. There is no root element and no
/// declaration of the prefix: a reader puts <log xmlns:log4j="...">, the output and </log> together.
///
/// Texts are written as they are. One that holds the end of a CDATA section or a control character, or a double quote
/// in the name of a logger or thread, makes the output ill-formed from there on.
///
/// Thread safety: as LOGLayout; options may be set while other threads log.
/// Errors: what the message raises while it is rendered goes to the caller.
class LOG4VRK_EXPORT LOGXMLLayout : public LOGLayout {
 public:
  static const I18NString& LOCATION_INFO_OPTION;  // "LocationInfo"

  LOGXMLLayout();
  ~LOGXMLLayout() override;

  void activateOptions() override;
  /// Null gives the empty text.
  I18NString& format(LOGLoggingEvent* event) override;
  int ignoresThrowable() override;

  /// "LocationInfo" (exactly) with "true" or "false" (in any case). Everything else is ignored.
  void setOption(const I18NString& option, const I18NString& value);
  /// Anything but 0: every event has a "log4j:locationInfo" element.
  void setLocationInfo(int on);
  int getLocationInfo() const;
  /// A new list that the caller owns. Its one entry is not the option's name, but "m_LOCATION_INFO_OPTION".
  VRKList<I18NString>* getOptionStrings() const;

 private:
  int m_locationInfo VRK_GUARDED_BY(m_critSection) = 0;
};
