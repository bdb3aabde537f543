// Which parameters of the document set what.

#include <cstdlib>

#include "log4vrk/appenders/LOGAsyncAppender.h"
#include "log4vrk/appenders/LOGDurableAsyncAppender.h"
#include "log4vrk/appenders/LOGFileAppender.h"
#include "log4vrk/appenders/LOGLevelMatchFilter.h"
#include "log4vrk/appenders/LOGLevelRangeFilter.h"
#include "log4vrk/appenders/LOGRollingFileAppender.h"
#include "log4vrk/appenders/LOGStringMatchFilter.h"
#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/config/internal/LOGDOMChildren.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/internal/LOGProblems.h"
#include "log4vrk/layouts/LOGHTMLLayout.h"
#include "log4vrk/layouts/LOGPatternLayout.h"
#include "log4vrk/layouts/LOGTTCCLayout.h"
#include "log4vrk/layouts/LOGXMLLayout.h"
#include "log4vrk/net/LOGLocalUDPAppender.h"
#include "log4vrk/net/LOGSyslogAppender.h"
#include "log4vrk/net/LOGTCPSocketAppender.h"
#include "log4vrk/platform/I18NLocale.h"

namespace {

using Setter = void (*)(LOGObject& target, const I18NString& value);

enum NameMatch { EXACT, ANY_CASE };

struct Option {
  const char* className;
  const char* name;
  NameMatch match;
  Setter set;
};

// Everything but "false" is true, and what is no number is 0: existing documents rely on both.
int asBoolean(const I18NString& value) { return vrkEqualIgnoringCase(value, "false") ? 0 : 1; }

long asInteger(const I18NString& value) { return std::strtol(value.c_str(), nullptr, 10); }

// Of the class that the target's class name has been compared with.
template <typename Class>
Class& as(LOGObject& target) {
  return static_cast<Class&>(target);
}

void setFile(LOGObject& target, const I18NString& value) { as<LOGFileAppender>(target).setFile(value); }
void setAppend(LOGObject& target, const I18NString& value) { as<LOGFileAppender>(target).setAppend(asBoolean(value)); }

const Option OPTIONS[] = {
    {"LOGLevelRangeFilter", "LevelMax", EXACT,
     [](LOGObject& t, const I18NString& v) { as<LOGLevelRangeFilter>(t).setLevelMax(LOGLevel::toLevel(v)); }},
    {"LOGLevelRangeFilter", "LevelMin", EXACT,
     [](LOGObject& t, const I18NString& v) { as<LOGLevelRangeFilter>(t).setLevelMin(LOGLevel::toLevel(v)); }},
    {"LOGLevelMatchFilter", "LevelToMatch", EXACT,
     [](LOGObject& t, const I18NString& v) { as<LOGLevelMatchFilter>(t).setLevelToMatch(v); }},
    {"LOGStringMatchFilter", "StringToMatch", EXACT,
     [](LOGObject& t, const I18NString& v) { as<LOGStringMatchFilter>(t).setStringToMatch(v); }},
    {"LOGAsyncAppender", "BufferSize", EXACT,
     [](LOGObject& t, const I18NString& v) { as<LOGAsyncAppender>(t).setBufferSize(static_cast<int>(asInteger(v))); }},
    {"LOGAsyncAppender", "LocationInfo", EXACT,
     [](LOGObject& t, const I18NString& v) { as<LOGAsyncAppender>(t).setLocationInfo(asBoolean(v)); }},
    {"LOGDurableAsyncAppender", "BufferSize", EXACT,
     [](LOGObject& t, const I18NString& v) {
       as<LOGDurableAsyncAppender>(t).setBufferSize(static_cast<int>(asInteger(v)));
     }},
    {"LOGDurableAsyncAppender", "Name", EXACT,
     [](LOGObject& t, const I18NString& v) { as<LOGDurableAsyncAppender>(t).setQueueName(v); }},
    {"LOGDurableAsyncAppender", "Directory", EXACT,
     [](LOGObject& t, const I18NString& v) { as<LOGDurableAsyncAppender>(t).setDirectory(v); }},
    {"LOGFileAppender", "Append", EXACT, &setAppend},
    {"LOGFileAppender", "File", EXACT, &setFile},
    {"LOGRollingFileAppender", "Append", EXACT, &setAppend},
    {"LOGRollingFileAppender", "File", EXACT, &setFile},
    {"LOGRollingFileAppender", "MaxBackupIndex", EXACT,
     [](LOGObject& t, const I18NString& v) { as<LOGRollingFileAppender>(t).setMaxBackupIndex(asInteger(v)); }},
    {"LOGRollingFileAppender", "MaximumFileSize", EXACT,
     [](LOGObject& t, const I18NString& v) { as<LOGRollingFileAppender>(t).setMaximumFileSize(asInteger(v)); }},
    {"LOGSyslogAppender", "Host", EXACT,
     [](LOGObject& t, const I18NString& v) { as<LOGSyslogAppender>(t).setSyslogHost(v); }},
    {"LOGSyslogAppender", "Facility", EXACT,
     [](LOGObject& t, const I18NString& v) { as<LOGSyslogAppender>(t).setFacility(v); }},
    {"LOGLocalUDPAppender", "Port", EXACT,
     [](LOGObject& t, const I18NString& v) { as<LOGLocalUDPAppender>(t).setPort(asInteger(v)); }},
    {"LOGTCPSocketAppender", "RemoteHost", ANY_CASE,
     [](LOGObject& t, const I18NString& v) { as<LOGTCPSocketAppender>(t).setRemoteHost(v); }},
    {"LOGTCPSocketAppender", "Port", ANY_CASE,
     [](LOGObject& t, const I18NString& v) { as<LOGTCPSocketAppender>(t).setPort(asInteger(v)); }},
    {"LOGTCPSocketAppender", "LocationInfo", ANY_CASE,
     [](LOGObject& t, const I18NString& v) { as<LOGTCPSocketAppender>(t).setLocationInfo(asBoolean(v)); }},
    {"LOGTCPSocketAppender", "Secure", ANY_CASE,
     [](LOGObject& t, const I18NString& v) { as<LOGTCPSocketAppender>(t).setSecure(asBoolean(v)); }},
    {"LOGTCPSocketAppender", "ReconnectionDelay", ANY_CASE,
     [](LOGObject& t, const I18NString& v) { as<LOGTCPSocketAppender>(t).setReconnectionDelay(asInteger(v)); }},
    {"LOGTTCCLayout", "DateFormat", ANY_CASE,
     [](LOGObject& t, const I18NString& v) { as<LOGTTCCLayout>(t).setDateFormat(v); }},
    {"LOGTTCCLayout", "TimeZone", ANY_CASE,
     [](LOGObject& t, const I18NString& v) { as<LOGTTCCLayout>(t).setOption(LOGDateLayout::TIMEZONE_OPTION, v); }},
    {"LOGPatternLayout", "ConversionPattern", ANY_CASE,
     [](LOGObject& t, const I18NString& v) { as<LOGPatternLayout>(t).setConversionPattern(v); }},
    {"LOGXMLLayout", "LocationInfo", EXACT,
     [](LOGObject& t, const I18NString& v) { as<LOGXMLLayout>(t).setOption(LOGXMLLayout::LOCATION_INFO_OPTION, v); }},
    {"LOGHTMLLayout", "Title", EXACT, [](LOGObject& t, const I18NString& v) { as<LOGHTMLLayout>(t).setTitle(v); }},
    {"LOGHTMLLayout", "LocationInfo", EXACT,
     [](LOGObject& t, const I18NString& v) { as<LOGHTMLLayout>(t).setLocationInfo(asBoolean(v)); }},
};

bool matches(const Option& option, const I18NString& className, const I18NString& name) {
  if (className != option.className) return false;
  return option.match == EXACT ? name == option.name : vrkEqualIgnoringCase(name, option.name);
}

}  // namespace

void LOGDOMConfigurator::setParameter(const VRKIDOM_Element& element, LOGObject& target) {
  const I18NString name = element.getAttribute(LOG4VRK_NAME_ATTR);
  const I18NString value = element.getAttribute(VALUE_ATTR);
  const LOGProblems::Place place(element.getLineNumber(), "param", name, true);
  // An empty value is as good as none, except that it takes an appender its file.
  if (value.isEmpty() && name != "File") return;
  for (const Option& option : OPTIONS) {
    if (!matches(option, target.instanceOf(), name)) continue;
    option.set(target, value);
    return;
  }
}

void LOGDOMConfigurator::setParameters(const VRKIDOM_Element& parent, LOGObject& target) {
  for (const VRKIDOM_Element& child : logChildElements(parent)) {
    if (child.getTagName() == PARAM_TAG) setParameter(child, target);
  }
}
