// The layout that writes events as XML elements.

#pragma once

#include "log4vrk/core/LOGLayout.h"
#include "log4vrk/platform/VRKList.h"

/// Writes one "log4j:event" element and an empty line for each event. Lines end in CR LF on every system. There is no
/// root element, and the prefix is not declared: a reader puts <log xmlns:log4j="..."> in front of the output and
/// </log> behind it.
///
/// Nothing is escaped. The output is ill-formed from the first text on that holds "]]>" or a control character that XML
/// forbids, and from the first name of a logger or thread that holds a double quote, "<" or "&".
///
/// Thread safety: as LOGLayout. Options may be set while other threads log.
/// Errors: what the message raises while it is rendered is not caught.
class LOG4VRK_EXPORT LOGXMLLayout : public LOGLayout {
 public:
  static const I18NString& LOCATION_INFO_OPTION;  // "LocationInfo"

  LOGXMLLayout();
  ~LOGXMLLayout() override;

  void activateOptions() override;
  /// The element of one event, or the empty text for null.
  I18NString& format(LOGLoggingEvent* event) override;
  int ignoresThrowable() override;

  /// Takes "LocationInfo", exactly so, with "true" or "false" in any case. Everything else is ignored.
  void setOption(const I18NString& option, const I18NString& value);
  /// Anything but 0 gives every event a "log4j:locationInfo" element.
  void setLocationInfo(int on);
  int getLocationInfo() const;
  /// A new list that the caller owns. On purpose its one entry is "m_LOCATION_INFO_OPTION", not the option's name.
  VRKList<I18NString>* getOptionStrings() const;

 private:
  int m_locationInfo VRK_GUARDED_BY(m_critSection) = 0;
};
