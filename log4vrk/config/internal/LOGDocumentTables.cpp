#include "log4vrk/config/internal/LOGDocumentTables.h"

#include <algorithm>
#include <cstdlib>

#include "log4vrk/appenders/LOGAsyncAppender.h"
#include "log4vrk/appenders/LOGColorConsoleAppender.h"
#include "log4vrk/appenders/LOGConsoleAppender.h"
#include "log4vrk/appenders/LOGDenyAllFilter.h"
#include "log4vrk/appenders/LOGDurableAsyncAppender.h"
#include "log4vrk/appenders/LOGFallbackAppender.h"
#include "log4vrk/appenders/LOGLevelMatchFilter.h"
#include "log4vrk/appenders/LOGLevelRangeFilter.h"
#include "log4vrk/appenders/LOGRateLimitFilter.h"
#include "log4vrk/appenders/LOGRollingFileAppender.h"
#include "log4vrk/appenders/LOGStringMatchFilter.h"
#include "log4vrk/appenders/LOGTimeRollingFileAppender.h"
#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/layouts/LOGHTMLLayout.h"
#include "log4vrk/layouts/LOGJSONLayout.h"
#include "log4vrk/layouts/LOGPatternLayout.h"
#include "log4vrk/layouts/LOGTTCCLayout.h"
#include "log4vrk/layouts/LOGXMLLayout.h"
#include "log4vrk/net/LOGJournalAppender.h"
#include "log4vrk/net/LOGLocalUDPAppender.h"
#include "log4vrk/net/LOGSyslogAppender.h"
#include "log4vrk/net/LOGTCPSocketAppender.h"
#include "log4vrk/platform/I18NLocale.h"
#include "log4vrk/platform/VRKThrowable.h"

namespace {

template <typename Base, typename Made>
std::unique_ptr<Base> make() {
  return std::unique_ptr<Base>(vrkNew<Made>(VRK_HERE));
}

// Of the class that the target's class name has been compared with.
template <typename Class>
Class& as(LOGObject& target) {
  return static_cast<Class&>(target);
}

int boolean(const I18NString& value) { return LOGDocumentTables::asBoolean(value); }
long integer(const I18NString& value) { return LOGDocumentTables::asInteger(value); }

void setFile(LOGObject& target, const I18NString& value) { as<LOGFileAppender>(target).setFile(value); }
template <void (LOGTimeRollingFileAppender::*SET)(const I18NString&)>
void setRolling(LOGObject& target, const I18NString& value) {
  (as<LOGTimeRollingFileAppender>(target).*SET)(value);
}
void setAppend(LOGObject& target, const I18NString& value) { as<LOGFileAppender>(target).setAppend(boolean(value)); }

constexpr char FILE_EFFECT[] = "the file to write to, which is created; its directory is not";
constexpr char APPEND_EFFECT[] = "false empties the file whenever the appender is made";
constexpr char LOCATION_EFFECT[] = "prints the place of the log call";
constexpr char COLOR_EFFECT[] = "the colour of the level";

template <LOGLevel* const* level>
void setColor(LOGObject& target, const I18NString& value) {
  as<LOGColorConsoleAppender>(target).setColor(**level, value);
}

}  // namespace

const std::vector<LOGDocumentTables::Parameter>& LOGDocumentTables::parameters() {
  static const auto& table = vrkImmortal<std::vector<Parameter>>(std::initializer_list<Parameter>{
      {"LOGLevelRangeFilter", "LevelMax", EXACT, LEVEL, "", "denies events of higher levels",
       [](LOGObject& t, const I18NString& v) { as<LOGLevelRangeFilter>(t).setLevelMax(LOGLevel::toLevel(v)); }},
      {"LOGLevelRangeFilter", "LevelMin", EXACT, LEVEL, "", "denies events of lower levels",
       [](LOGObject& t, const I18NString& v) { as<LOGLevelRangeFilter>(t).setLevelMin(LOGLevel::toLevel(v)); }},
      {"LOGLevelMatchFilter", "LevelToMatch", EXACT, LEVEL, "", "accepts events of this level",
       [](LOGObject& t, const I18NString& v) { as<LOGLevelMatchFilter>(t).setLevelToMatch(v); }},
      {"LOGStringMatchFilter", "StringToMatch", EXACT, TEXT, "", "accepts messages that contain the text",
       [](LOGObject& t, const I18NString& v) { as<LOGStringMatchFilter>(t).setStringToMatch(v); }},
      {"LOGAsyncAppender", "BufferSize", EXACT, NUMBER, "128", "events that the queue holds; logging waits when full",
       [](LOGObject& t, const I18NString& v) { as<LOGAsyncAppender>(t).setBufferSize(static_cast<int>(integer(v))); }},
      {"LOGAsyncAppender", "LocationInfo", EXACT, BOOLEAN, "false",
       "takes the name and the context of the thread that logs along",
       [](LOGObject& t, const I18NString& v) { as<LOGAsyncAppender>(t).setLocationInfo(boolean(v)); }},
      {"LOGDurableAsyncAppender", "BufferSize", EXACT, NUMBER, "8192",
       "slots of 192 bytes that the queue has; logging waits when they are full",
       [](LOGObject& t, const I18NString& v) {
         as<LOGDurableAsyncAppender>(t).setBufferSize(static_cast<int>(integer(v)));
       }},
      {"LOGDurableAsyncAppender", "Name", EXACT, TEXT, "",
       "by which the next start finds what this one has left; the appender's name unless given",
       [](LOGObject& t, const I18NString& v) { as<LOGDurableAsyncAppender>(t).setQueueName(v); }},
      {"LOGDurableAsyncAppender", "Directory", EXACT, TEXT, "", "where the file of the queue is",
       [](LOGObject& t, const I18NString& v) { as<LOGDurableAsyncAppender>(t).setDirectory(v); }},
      {"LOGFileAppender", "Append", EXACT, BOOLEAN, "true", APPEND_EFFECT, &setAppend},
      {"LOGFileAppender", "File", EXACT, TEXT, "", FILE_EFFECT, &setFile},
      {"LOGRollingFileAppender", "Append", EXACT, BOOLEAN, "true", APPEND_EFFECT, &setAppend},
      {"LOGRollingFileAppender", "File", EXACT, TEXT, "", FILE_EFFECT, &setFile},
      {"LOGRollingFileAppender", "MaxBackupIndex", EXACT, NUMBER, "1", "older files that are kept",
       [](LOGObject& t, const I18NString& v) { as<LOGRollingFileAppender>(t).setMaxBackupIndex(integer(v)); }},
      {"LOGRollingFileAppender", "MaximumFileSize", EXACT, NUMBER, "10485760",
       "bytes after which the file is rolled over, without a suffix",
       [](LOGObject& t, const I18NString& v) { as<LOGRollingFileAppender>(t).setMaximumFileSize(integer(v)); }},
      {"LOGTimeRollingFileAppender", "Append", EXACT, BOOLEAN, "true", APPEND_EFFECT, &setAppend},
      {"LOGTimeRollingFileAppender", "File", EXACT, TEXT, "", FILE_EFFECT, &setFile},
      {"LOGTimeRollingFileAppender", "Interval", EXACT, TEXT, "day",
       "how long a file is for: minute, hour, day or week, or a number of them; unless given, as DatePattern tells",
       &setRolling<&LOGTimeRollingFileAppender::setInterval>},
      {"LOGTimeRollingFileAppender", "DatePattern", EXACT, TEXT, "",
       "what strftime adds to the name of a finished file; by the interval unless given",
       &setRolling<&LOGTimeRollingFileAppender::setDatePattern>},
      {"LOGTimeRollingFileAppender", "TimeZone", EXACT, TEXT, "",
       "where days and hours begin; the process's own unless given",
       &setRolling<&LOGTimeRollingFileAppender::setTimeZone>},
      {"LOGTimeRollingFileAppender", "MaximumFileSize", EXACT, TEXT, "0",
       "bytes, kB, MB or GB after which the file is rolled over before its time; 0 is no limit",
       &setRolling<&LOGTimeRollingFileAppender::setMaximumFileSize>},
      {"LOGTimeRollingFileAppender", "MaxHistory", EXACT, NUMBER, "0", "finished files that are kept; 0 is no limit",
       [](LOGObject& t, const I18NString& v) { as<LOGTimeRollingFileAppender>(t).setMaxHistory(integer(v)); }},
      {"LOGTimeRollingFileAppender", "MaxAge", EXACT, TEXT, "0",
       "how long finished files are kept, such as 30 days; 0 is no limit",
       &setRolling<&LOGTimeRollingFileAppender::setMaxAge>},
      {"LOGTimeRollingFileAppender", "MaxTotalSize", EXACT, TEXT, "0",
       "bytes, kB, MB or GB that all finished files may take; 0 is no limit",
       &setRolling<&LOGTimeRollingFileAppender::setMaxTotalSize>},
      {"LOGTimeRollingFileAppender", "Compress", EXACT, TEXT, "none", "zlib or zstd: how finished files are compressed",
       &setRolling<&LOGTimeRollingFileAppender::setCompress>},
      {"LOGTimeRollingFileAppender", "BufferedIO", EXACT, BOOLEAN, "false", "collects lines and writes them together",
       [](LOGObject& t, const I18NString& v) { as<LOGTimeRollingFileAppender>(t).setBufferedIO(boolean(v)); }},
      {"LOGTimeRollingFileAppender", "Link", EXACT, TEXT, "",
       "a symbolic link to the file that is made when it is opened", &setRolling<&LOGTimeRollingFileAppender::setLink>},
      {"LOGSyslogAppender", "Host", EXACT, TEXT, "localhost", "the machine of the daemon",
       [](LOGObject& t, const I18NString& v) { as<LOGSyslogAppender>(t).setSyslogHost(v); }},
      {"LOGSyslogAppender", "Facility", EXACT, TEXT, "user", "the facility of every message, in any case",
       [](LOGObject& t, const I18NString& v) { as<LOGSyslogAppender>(t).setFacility(v); }},
      {"LOGLocalUDPAppender", "Port", EXACT, NUMBER, "9362", "where the receiver on this machine listens",
       [](LOGObject& t, const I18NString& v) { as<LOGLocalUDPAppender>(t).setPort(integer(v)); }},
      {"LOGTCPSocketAppender", "RemoteHost", ANY_CASE, TEXT, "", "the log server; without one nothing is sent",
       [](LOGObject& t, const I18NString& v) { as<LOGTCPSocketAppender>(t).setRemoteHost(v); }},
      {"LOGTCPSocketAppender", "Port", ANY_CASE, NUMBER, "2514", "where the log server listens",
       [](LOGObject& t, const I18NString& v) { as<LOGTCPSocketAppender>(t).setPort(integer(v)); }},
      {"LOGTCPSocketAppender", "LocationInfo", ANY_CASE, BOOLEAN, "false", "sends the place of the log call along",
       [](LOGObject& t, const I18NString& v) { as<LOGTCPSocketAppender>(t).setLocationInfo(boolean(v)); }},
      {"LOGTCPSocketAppender", "Secure", ANY_CASE, BOOLEAN, "false", "connects by TLS",
       [](LOGObject& t, const I18NString& v) { as<LOGTCPSocketAppender>(t).setSecure(boolean(v)); }},
      {"LOGTCPSocketAppender", "ReconnectionDelay", ANY_CASE, NUMBER, "30000",
       "the longest time between two attempts to connect, in milliseconds",
       [](LOGObject& t, const I18NString& v) { as<LOGTCPSocketAppender>(t).setReconnectionDelay(integer(v)); }},
      {"LOGTTCCLayout", "DateFormat", ANY_CASE, TEXT, "RELATIVE", "the format of the date",
       [](LOGObject& t, const I18NString& v) { as<LOGTTCCLayout>(t).setDateFormat(v); }},
      {"LOGTTCCLayout", "TimeZone", ANY_CASE, TEXT, "", "the time zone of the date; the process's own unless given",
       [](LOGObject& t, const I18NString& v) { as<LOGTTCCLayout>(t).setOption(LOGDateLayout::TIMEZONE_OPTION, v); }},
      {"LOGPatternLayout", "ConversionPattern", ANY_CASE, TEXT, "%r [%t] %p %c %x - %m%n", "how a line looks",
       [](LOGObject& t, const I18NString& v) { as<LOGPatternLayout>(t).setConversionPattern(v); }},
      {"LOGPatternLayout", "SafeText", ANY_CASE, BOOLEAN, "false",
       "control characters and their like are escaped, so that an event is one line",
       [](LOGObject& t, const I18NString& v) { as<LOGPatternLayout>(t).setSafeText(boolean(v) != 0); }},
      {"LOGJSONLayout", "Preset", ANY_CASE, TEXT, "plain",
       "the names of the parts: plain, ecs (Elastic Common Schema) or gcp (Google Cloud Logging)",
       [](LOGObject& t, const I18NString& v) { as<LOGJSONLayout>(t).setPreset(v); }},
      {"LOGJSONLayout", "TimeFormat", ANY_CASE, TEXT, "iso", "iso, epoch (seconds) or millis",
       [](LOGObject& t, const I18NString& v) { as<LOGJSONLayout>(t).setTimeFormat(v); }},
      {"LOGJSONLayout", "TimeZone", ANY_CASE, TEXT, "",
       "the time zone of the time; the process's own unless given, UTC in the presets ecs and gcp",
       [](LOGObject& t, const I18NString& v) { as<LOGJSONLayout>(t).setTimeZone(v); }},
      {"LOGJSONLayout", "Fields", ANY_CASE, TEXT, "",
       "what is written of time, level, logger, thread, process, message, nested, context, fields, place and error; "
       "all unless given",
       [](LOGObject& t, const I18NString& v) { as<LOGJSONLayout>(t).setFields(v); }},
      {"LOGJSONLayout", "Names", ANY_CASE, TEXT, "", "other names than the preset's: time=ts, message=msg",
       [](LOGObject& t, const I18NString& v) { as<LOGJSONLayout>(t).setNames(v); }},
      {"LOGXMLLayout", "LocationInfo", EXACT, BOOLEAN, "false", LOCATION_EFFECT,
       [](LOGObject& t, const I18NString& v) { as<LOGXMLLayout>(t).setOption(LOGXMLLayout::LOCATION_INFO_OPTION, v); }},
      {"LOGHTMLLayout", "Title", EXACT, TEXT, "Log4J Log Messages", "the title of the page",
       [](LOGObject& t, const I18NString& v) { as<LOGHTMLLayout>(t).setTitle(v); }},
      {"LOGHTMLLayout", "LocationInfo", EXACT, BOOLEAN, "false", LOCATION_EFFECT,
       [](LOGObject& t, const I18NString& v) { as<LOGHTMLLayout>(t).setLocationInfo(boolean(v)); }},
      {"LOGColorConsoleAppender", "Target", EXACT, TEXT, "out", "the stream: out or err",
       [](LOGObject& t, const I18NString& v) { as<LOGColorConsoleAppender>(t).setTarget(v); }, "out|err"},
      {"LOGColorConsoleAppender", "Colors", EXACT, TEXT, "auto", "auto: on a terminal that wants them; always; never",
       [](LOGObject& t, const I18NString& v) { as<LOGColorConsoleAppender>(t).setColors(v); }, "auto|always|never"},
      {"LOGColorConsoleAppender", "Prefix", EXACT, TEXT, "none",
       "sd-daemon: each line begins with its severity for the journal",
       [](LOGObject& t, const I18NString& v) { as<LOGColorConsoleAppender>(t).setPrefix(v); }, "none|sd-daemon"},
      {"LOGColorConsoleAppender", "DebugColor", EXACT, TEXT, "dim", COLOR_EFFECT, &setColor<&LOGLevel::DEBUG_OBJ>, "",
       &LOGColorConsoleAppender::isColor},
      {"LOGColorConsoleAppender", "InfoColor", EXACT, TEXT, "none", COLOR_EFFECT, &setColor<&LOGLevel::INFO_OBJ>, "",
       &LOGColorConsoleAppender::isColor},
      {"LOGColorConsoleAppender", "WarnColor", EXACT, TEXT, "yellow", COLOR_EFFECT, &setColor<&LOGLevel::WARN_OBJ>, "",
       &LOGColorConsoleAppender::isColor},
      {"LOGColorConsoleAppender", "ErrorColor", EXACT, TEXT, "red", COLOR_EFFECT, &setColor<&LOGLevel::ERROR_OBJ>, "",
       &LOGColorConsoleAppender::isColor},
      {"LOGColorConsoleAppender", "FatalColor", EXACT, TEXT, "bold red", COLOR_EFFECT, &setColor<&LOGLevel::FATAL_OBJ>,
       "", &LOGColorConsoleAppender::isColor},
      {"LOGFallbackAppender", "RetryDelay", EXACT, NUMBER, "10000",
       "milliseconds until an appender that did not take an event is tried again",
       [](LOGObject& t, const I18NString& v) { as<LOGFallbackAppender>(t).setRetryDelay(integer(v)); }},
      {"LOGRateLimitFilter", "MaxEvents", EXACT, NUMBER, "0", "events that pass in a period; with 0 all do",
       [](LOGObject& t, const I18NString& v) { as<LOGRateLimitFilter>(t).setMaxEvents(integer(v)); }},
      {"LOGRateLimitFilter", "Seconds", EXACT, NUMBER, "1", "how long a period is",
       [](LOGObject& t, const I18NString& v) { as<LOGRateLimitFilter>(t).setSeconds(integer(v)); }},
      {"LOGRateLimitFilter", "Level", EXACT, LEVEL, "", "events of higher levels pass and are not counted",
       [](LOGObject& t, const I18NString& v) { as<LOGRateLimitFilter>(t).setLevel(LOGLevel::toLevel(v)); }},
      {"LOGJournalAppender", "Identifier", EXACT, TEXT, "", "what the journal calls the program; its name unless given",
       [](LOGObject& t, const I18NString& v) { as<LOGJournalAppender>(t).setIdentifier(v); }},
      {"LOGJournalAppender", "Socket", EXACT, TEXT, LOGJournalAppender::DEFAULT_SOCKET,
       "the path of the journal's socket",
       [](LOGObject& t, const I18NString& v) { as<LOGJournalAppender>(t).setSocket(v); }},
  });
  return table;
}

const LOGDocumentTables::Parameter* LOGDocumentTables::findParameter(const I18NString& className,
                                                                     const I18NString& name) {
  for (const Parameter& each : parameters()) {
    if (className != each.className) continue;
    if (each.match == EXACT ? name == each.name : vrkEqualIgnoringCase(name, each.name)) return &each;
  }
  return nullptr;
}

const std::vector<LOGDocumentTables::Element>& LOGDocumentTables::elements() {
  static const std::vector<Element>& table = []() -> const std::vector<Element>& {
    using Reader = LOGDOMConfigurator;
    const auto word = [](const I18NString& text) { return text.toUtf8(); };
    const auto name = word(Reader::LOG4VRK_NAME_ATTR), className = word(Reader::CLASS_ATTR),
               value = word(Reader::VALUE_ATTR), ref = word(Reader::REF_ATTR), param = word(Reader::PARAM_TAG),
               appender = word(Reader::APPENDER_TAG), appenderRef = word(Reader::APPENDER_REF_TAG),
               layout = word(Reader::LAYOUT_TAG), filter = word(Reader::FILTER_TAG),
               errorHandler = word(Reader::ERROR_HANDLER_TAG), level = word(Reader::LEVEL_TAG),
               priority = word(Reader::PRIORITY_TAG), logger = word(Reader::LOGGER), category = word(Reader::CATEGORY),
               root = word(Reader::ROOT_TAG), renderer = word(Reader::RENDERER_TAG),
               factory = word(Reader::CATEGORY_FACTORY_TAG), loggerRef = word(Reader::LOGGER_REF),
               rootRef = word(Reader::ROOT_REF);
    const std::vector<std::string> ofConfiguration{word(Reader::THRESHOLD_ATTR), word(Reader::INTERNAL_DEBUG_ATTR),
                                                   word(Reader::CONFIG_DEBUG_ATTR), word(Reader::SUBSTITUTE_ATTR)};
    const std::vector<std::string> inConfiguration{factory, renderer, appender, logger, category, root};
    const std::vector<std::string> ofLogger{name, className, word(Reader::ADDITIVITY_ATTR)};
    const std::vector<std::string> inLogger{level, priority, appenderRef, param};
    return vrkImmortal<std::vector<Element>>(std::initializer_list<Element>{
        {word(Reader::CONFIGURATION_TAG), ofConfiguration, inConfiguration},
        {word(Reader::OLD_CONFIGURATION_TAG), ofConfiguration, inConfiguration},
        {factory, {className}, {param}},
        {renderer, {word(Reader::RENDERED_CLASS_ATTR), word(Reader::RENDERING_CLASS_ATTR)}, {}},
        {appender, {name, className}, {param, layout, filter, errorHandler, appenderRef}},
        {layout, {className}, {param}},
        {filter, {className}, {param}},
        {errorHandler, {className}, {param, appenderRef, loggerRef, rootRef}},
        {logger, ofLogger, inLogger},
        {category, ofLogger, inLogger},
        {root, {}, inLogger},
        {level, {value, className}, {}},
        {priority, {value, className}, {}},
        {param, {name, value}, {}},
        {appenderRef, {ref}, {}},
        {loggerRef, {ref}, {}},
        {rootRef, {}, {}},
    });
  }();
  return table;
}

const LOGDocumentTables::Element* LOGDocumentTables::findElement(std::string_view name) {
  const auto& all = elements();
  const auto found = std::find_if(all.begin(), all.end(), [&](const Element& each) { return each.name == name; });
  return found != all.end() ? &*found : nullptr;
}

const std::vector<LOGDocumentTables::Class<LOGAppenderSkeleton>>& LOGDocumentTables::appenders() {
  using Entry = Class<LOGAppenderSkeleton>;
  static const auto& table = vrkImmortal<std::vector<Entry>>(std::initializer_list<Entry>{
      {"LOGAsyncAppender", &make<LOGAppenderSkeleton, LOGAsyncAppender>},
      {"LOGDurableAsyncAppender", &make<LOGAppenderSkeleton, LOGDurableAsyncAppender>},
      {"LOGFileAppender", &make<LOGAppenderSkeleton, LOGFileAppender>},
      {"LOGRollingFileAppender", &make<LOGAppenderSkeleton, LOGRollingFileAppender>},
      {"LOGTimeRollingFileAppender", &make<LOGAppenderSkeleton, LOGTimeRollingFileAppender>},
      {"LOGConsoleAppender", &make<LOGAppenderSkeleton, LOGConsoleAppender>},
      {"LOGTCPSocketAppender", &make<LOGAppenderSkeleton, LOGTCPSocketAppender>},
      {"LOGSyslogAppender", &make<LOGAppenderSkeleton, LOGSyslogAppender>},
      {"LOGLocalUDPAppender", &make<LOGAppenderSkeleton, LOGLocalUDPAppender>},
      {"LOGColorConsoleAppender", &make<LOGAppenderSkeleton, LOGColorConsoleAppender>},
      {"LOGJournalAppender", &make<LOGAppenderSkeleton, LOGJournalAppender>},
      {"LOGFallbackAppender", &make<LOGAppenderSkeleton, LOGFallbackAppender>},
  });
  return table;
}

const std::vector<LOGDocumentTables::Class<LOGLayout>>& LOGDocumentTables::layouts() {
  using Entry = Class<LOGLayout>;
  static const auto& table = vrkImmortal<std::vector<Entry>>(std::initializer_list<Entry>{
      {"LOGSimpleLayout", &make<LOGLayout, LOGLayout>},
      {"LOGTTCCLayout", &make<LOGLayout, LOGTTCCLayout>},
      {"LOGPatternLayout", &make<LOGLayout, LOGPatternLayout>},
      {"LOGXMLLayout", &make<LOGLayout, LOGXMLLayout>},
      {"LOGHTMLLayout", &make<LOGLayout, LOGHTMLLayout>},
      {"LOGJSONLayout", &make<LOGLayout, LOGJSONLayout>},
  });
  return table;
}

const std::vector<LOGDocumentTables::Class<LOGFilter>>& LOGDocumentTables::filters() {
  using Entry = Class<LOGFilter>;
  static const auto& table = vrkImmortal<std::vector<Entry>>(std::initializer_list<Entry>{
      {"LOGLevelRangeFilter", &make<LOGFilter, LOGLevelRangeFilter>},
      {"LOGLevelMatchFilter", &make<LOGFilter, LOGLevelMatchFilter>},
      {"LOGStringMatchFilter", &make<LOGFilter, LOGStringMatchFilter>},
      {"LOGDenyAllFilter", &make<LOGFilter, LOGDenyAllFilter>},
      {"LOGRateLimitFilter", &make<LOGFilter, LOGRateLimitFilter>},
  });
  return table;
}

std::unique_ptr<LOGLayout> LOGDocumentTables::makeLayout(const I18NString& className) {
  const Class<LOGLayout>* const known = findClass(layouts(), className);
  return known != nullptr ? known->make() : make<LOGLayout, LOGLayout>();
}

std::unique_ptr<LOGFilter> LOGDocumentTables::makeFilter(const I18NString& className) {
  const Class<LOGFilter>* const known = findClass(filters(), className);
  return known != nullptr ? known->make() : make<LOGFilter, LOGDenyAllFilter>();
}

// Documents name appenders without the prefix; a name written with it gets it a second time, and is unknown. Meant so.
I18NString LOGDocumentTables::appenderClass(const I18NString& attribute) {
  const I18NString name = LOGDOMConfigurator::subst(attribute);
  if (name == "LogLocalUDPAppender") return "LOGLocalUDPAppender";
  if (name == "LogTCPSocketAppender") return "LOGTCPSocketAppender";
  return "LOG" + name;
}

I18NString LOGDocumentTables::layoutClass(const I18NString& attribute) {
  return "LOG" + LOGDOMConfigurator::subst(attribute);
}

const std::vector<std::string>& LOGDocumentTables::levelNames() {
  static const auto& names = vrkImmortal<std::vector<std::string>>(
      std::initializer_list<std::string>{"ALL", "DEBUG", "INFO", "WARN", "ERROR", "FATAL", "OFF"});
  return names;
}

int LOGDocumentTables::asBoolean(const I18NString& value) { return vrkEqualIgnoringCase(value, "false") ? 0 : 1; }

long LOGDocumentTables::asInteger(const I18NString& value) { return std::strtol(value.c_str(), nullptr, 10); }
