// Small documents and what a check finds in them, for the tests that hold the check against the library.

#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace vrktest {

/// The body of a document, in which `~` is the test's folder and these stand for what most documents need:
///   $F a file, $L a layout, $A a good appender "a" with both, $R a root that has it, $W a whole appender "a" around
///   what follows up to $E, of the class FileAppender, $N a name of 1001 characters
/// A body that begins with ^ is the whole document. Expected are the findings in order, E for an error, W for a warning
/// and N for a note in front.
struct CheckedDocument {
  const char* findings;
  const char* body;
};

inline std::string expand(std::string_view body, const std::string& folder) {
  const std::pair<char, const char*> SHORT[] = {
      {'A',
       "<appender name='a' class='FileAppender'><param name='File' value='~/a.log'/>"
       "<layout class='SimpleLayout'/></appender>"},
      {'F', "<param name='File' value='~/a.log'/>"},
      {'L', "<layout class='SimpleLayout'/>"},
      {'R', "<root><appender-ref ref='a'/></root>"},
      {'W', "<appender name='a' class='FileAppender'>"},
      {'E', "</appender>"},
  };
  std::string text;
  for (std::size_t i = 0; i < body.size(); ++i) {
    std::string_view piece = body.substr(i, 1);
    if (body[i] == '$' && i + 1 < body.size()) {
      ++i;
      for (const auto& [letter, meaning] : SHORT) {
        if (letter == body[i]) piece = meaning;
      }
      if (body[i] == 'N') {
        text.append(1001, 'n');
        continue;
      }
    }
    for (const char c : piece) c == '~' ? text += folder : text += c;
  }
  return text.rfind('^', 0) == 0 ? text.substr(1) : "<log4j:configuration>" + text + "</log4j:configuration>";
}

inline constexpr CheckedDocument CHECKED_DOCUMENTS[] = {
    // Nothing to say.
    {"", "$A$R"},
    {"", "<!-- c --><?pi?>$A$R"},
    {"", "^<log4j:configuration xmlns:log4j='urn:x' threshold='ALL'>$A$R</log4j:configuration>"},
    {"", "^<log4j:configuration threshold='null' debug='null'>$A$R</log4j:configuration>"},
    {"", "^<log4j:configuration debug='true' threshold='info'>$A$R</log4j:configuration>"},
    {"", "$A<root><level value='warn'/><appender-ref ref='a'/></root>"},
    {"", "$A<logger name='x'><level value='INFO'/><appender-ref ref='a'/></logger>"},
    {"", "$A$R<logger name='x.y'><level value='inherited'/></logger><logger name='x' additivity='True'/>"},
    {"", "$A$R<logger name='x'><level value='OFF'/></logger>"},
    {"", "$A<logger name='x' additivity='false'><appender-ref ref='a'/></logger>"},
    {"", "$W$F$L<param name='Append' value='TRUE'/>$E$R"},
    {"", "$W$F<layout class='PatternLayout'/>$E$R"},
    {"",
     "$W$F<layout class='com.x.PatternLayout'><param name='conversionpattern' value='%d{%H}{UTC} %-5p %m%n'/>"
     "</layout>$E$R"},
    {"",
     "$W$F<layout class='TTCCLayout'><param name='dateformat' value='ISO8601'/>"
     "<param name='TimeZone' value='Asia/Tokyo'/></layout>$E$R"},
    {"", "$W$F$L<filter class='LevelRangeFilter'><param name='LevelMin' value='WARN'/></filter>$E$R"},
    {"",
     "$W$F$L<filter class='StringMatchFilter'><param name='StringToMatch' value='x'/></filter>"
     "<filter class='DenyAllFilter'/>$E$R"},
    {"",
     "$W$F$L<filter class='LevelMatchFilter'><param name='LevelToMatch' value='error'/></filter>"
     "<filter class='DenyAllFilter'/>$E$R"},
    {"",
     "<appender name='a' class='RollingFileAppender'>$F$L<param name='MaxBackupIndex' value='3'/>"
     "<param name='MaximumFileSize' value='1000000'/>$E$R"},
    {"", "<appender name='a' class='org.x.ConsoleAppender'>$L$E$R"},
    {"", "$A<appender name='b' class='ConsoleAppender'>$L$E<logger name='x'><appender-ref ref='b'/></logger>$R"},
    // The document.
    {"E unreadable", "^"},
    {"E unreadable", "^<a><b></a>"},
    {"E unreadable", "^<log4j:configuration><root>"},
    {"E unknown-root", "^<log4j:config>$A$R</log4j:config>"},
    {"E unknown-root", "^<Configuration/>"},
    {"W old-root", "^<configuration>$A$R</configuration>"},
    {"N doctype", "^<!DOCTYPE log4j:configuration SYSTEM 'x.dtd'><log4j:configuration>$A$R</log4j:configuration>"},
    {"W debug-value", "^<log4j:configuration debug='false'>$A$R</log4j:configuration>"},
    {"W old-debug", "^<log4j:configuration configDebug='false'>$A$R</log4j:configuration>"},
    {"E threshold-unknown", "^<log4j:configuration threshold='WARNING'>$A$R</log4j:configuration>"},
    {"E threshold-unknown", "^<log4j:configuration threshold=' INFO'>$A$R</log4j:configuration>"},
    {"W attribute-unknown", "^<log4j:configuration Threshold='INFO'>$A$R</log4j:configuration>"},
    {"W threshold-above-level",
     "^<log4j:configuration threshold='WARN'>$A<root><level value='INFO'/>"
     "<appender-ref ref='a'/></root></log4j:configuration>"},
    {"W appender-silent", "^<log4j:configuration threshold='OFF'>$A$R</log4j:configuration>"},
    {"E element-unknown", "$A$R<loger name='x'/>"},
    {"E element-unknown", "$A$R<appenders/>"},
    {"E element-unknown", "$A<root><Level value='INFO'/><appender-ref ref='a'/></root>"},
    {"E element-unknown", "$W$F$L<params name='Append' value='false'/>$E$R"},
    {"E element-unknown", "$W$F$L<filters/>$E$R"},
    {"E element-misplaced", "$A$R<layout class='SimpleLayout'/>"},
    {"E element-misplaced", "$A$R<appender-ref ref='a'/>"},
    {"E element-misplaced", "$A$R<level value='INFO'/>"},
    {"E element-misplaced", "$A<root><appender-ref ref='a'/><logger name='x'/></root>"},
    {"E element-misplaced", "$W$F$L<level value='INFO'/>$E$R"},
    {"E element-misplaced", "$A<root><appender-ref ref='a'><param name='a' value='b'/></appender-ref></root>"},
    {"W appender-misplaced", "<root><appender-ref ref='a'/>$A</root>"},
    {"W attribute-unknown", "$A<root additivity='false'><appender-ref ref='a'/></root>"},
    {"W attribute-unknown", "$A<root><level value='INFO' level='x'/><appender-ref ref='a'/></root>"},
    {"W attribute-unknown", "<appender name='a' class='FileAppender' threshold='INFO'>$F$L$E$R"},
    // Factories and renderers.
    {"E factory-without-class", "$A$R<categoryFactory/>"},
    {"E factory-library", "$A$R<categoryFactory class='com.x.NoSuchFactory'/>"},
    {"E factory-library W factory-twice E factory-library",
     "$A$R<categoryFactory class='NoSuchA'/><categoryFactory class='NoSuchB'/>"},
    {"E renderer-without-class E renderer-without-class", "$A$R<renderer/>"},
    {"E renderer-without-class E renderer-library", "$A$R<renderer renderingClass='NoSuch'/>"},
    {"E renderer-library", "$A$R<renderer renderingClass='a.NoSuch' renderedClass='X'/>"},
    // Loggers.
    {"W logger-without-name", "$A$R<logger/>"},
    {"E logger-name-too-long", "$A$R<logger name='$N'/>"},
    {"W logger-named-like-root", "$A$R<logger name='ro'/>"},
    {"W logger-named-like-root", "$A$R<logger name='root'/>"},
    {"E logger-without-factory", "$A$R<logger name='x' class='Own'/>"},
    {"N old-name", "$A$R<category name='x'/>"},
    {"N old-name", "$A$R<logger name='x'><priority value='INFO'/></logger>"},
    {"W additivity-value", "$A$R<logger name='x' additivity='no'/>"},
    {"W additivity-value", "$A$R<logger name='x' additivity='0'/>"},
    {"W additivity-value", "$A$R<logger name='x' additivity=' false'/>"},
    {"W level-unknown", "$A<root><level value='WARNING'/><appender-ref ref='a'/></root>"},
    {"W level-unknown", "$A$R<logger name='x'><level value=''/></logger>"},
    {"W level-unknown", "$A$R<logger name='x'><level/></logger>"},
    {"W level-unknown", "$A$R<logger name='x'><level value='INFO '/></logger>"},
    {"W level-unknown", "$A$R<logger name='x'><level value='Inherited'/></logger>"},
    {"W level-unknown", "$A$R<logger name='x'><level value='null'/></logger>"},
    {"W level-class", "$A$R<logger name='x'><level value='INFO' class='XLevel'/></logger>"},
    {"E root-inherited", "$A<root><level value='inherited'/><appender-ref ref='a'/></root>"},
    {"W level-twice", "$A$R<logger name='x'><level value='INFO'/><level value='WARN'/></logger>"},
    {"W param-ignored", "$A<root><param name='Threshold' value='INFO'/><appender-ref ref='a'/></root>"},
    {"W param-ignored", "$A$R<logger name='x'><param name='x' value='y'/></logger>"},
    {"E appender-missing", "$A<root><appender-ref ref='a'/><appender-ref ref='A'/></root>"},
    {"W events-go-nowhere E appender-missing W appender-unused", "<root><appender-ref ref='aa'/></root>$A"},
    {"E appender-missing", "$A$R<logger name='x'><appender-ref/></logger>"},
    {"W appender-ref-twice", "$A<root><appender-ref ref='a'/><appender-ref ref='a'/></root>"},
    {"W logger-twice", "$A$R<logger name='x'/><logger name='x'/>"},
    {"W root-twice", "$A<root/><root><appender-ref ref='a'/></root>"},
    {"W event-twice", "$A$R<logger name='x'><appender-ref ref='a'/></logger>"},
    {"W event-twice", "$A$R<logger name='x'/><logger name='x.y.z'><appender-ref ref='a'/></logger>"},
    {"", "$A$R<logger name='x' additivity='false'><appender-ref ref='a'/></logger>"},
    {"W events-go-nowhere", "<root/>"},
    {"W events-go-nowhere", "<logger name='x'/>"},
    {"W events-go-nowhere", "$A$R<logger name='x' additivity='false'/>"},
    // Appenders.
    {"W appender-unused", "$A$R<appender name='b' class='ConsoleAppender'>$L$E"},
    {"W appender-name-twice", "$A<appender name='a' class='ConsoleAppender'>$L$E$R"},
    {"W appender-without-name", "<appender class='ConsoleAppender'>$L$E<root><appender-ref ref=''/></root>"},
    {"E appender-class-unknown W events-go-nowhere", "<appender name='a' class='LOGFileAppender'>$F$L$E$R"},
    {"E appender-class-unknown W events-go-nowhere", "<appender name='a' class='fileAppender'>$F$L$E$R"},
    {"E appender-class-unknown W events-go-nowhere", "<appender name='a' class='FileAppender.'>$F$L$E$R"},
    {"E appender-class-unknown W events-go-nowhere", "<appender name='a' class='DailyRollingFileAppender'>$F$L$E$R"},
    {"E appender-class-unknown W events-go-nowhere", "<appender name='a'>$F$L$E$R"},
    {"E appender-class-unknown", "$A$R<appender name='b' class='NoSuch'/>"},
    {"E file-missing", "$W$L$E$R"},
    {"E file-missing", "$W<param name='File' value=''/>$L$E$R"},
    {"E file-missing W param-twice", "$W$F<param name='File' value=''/>$L$E$R"},
    {"E file-missing W param-case", "$W<param name='file' value='~/a.log'/>$L$E$R"},
    {"N file-relative", "$W<param name='File' value='a.log'/>$L$E$R"},
    {"E directory-missing", "$W<param name='File' value='~/no/a.log'/>$L$E$R"},
    {"E file-is-directory", "$W<param name='File' value='~'/>$L$E$R"},
    {"W file-shared",
     "$A<appender name='b' class='FileAppender'>$F$L$E<root><appender-ref ref='a'/>"
     "<appender-ref ref='b'/></root>"},
    {"W file-shared",
     "$A<appender name='b' class='FileAppender'><param name='File' value='~/./work/../a.log'/>$L$E"
     "<root><appender-ref ref='a'/><appender-ref ref='b'/></root>"},
    {"N one-backup W file-is-backup",
     "<appender name='a' class='RollingFileAppender'>$F$L$E<appender name='b' class='FileAppender'>"
     "<param name='File' value='~/a.log.1'/>$L$E<root><appender-ref ref='a'/><appender-ref ref='b'/></root>"},
    {"N one-backup",
     "<appender name='a' class='RollingFileAppender'>$F$L$E<appender name='b' class='FileAppender'>"
     "<param name='File' value='~/a.log.2'/>$L$E<root><appender-ref ref='a'/><appender-ref ref='b'/>"
     "</root>"},
    {"N file-emptied", "$W$F$L<param name='Append' value='False'/>$E$R"},
    {"W boolean-value", "$W$F$L<param name='Append' value='no'/>$E$R"},
    {"W boolean-value", "$W$F$L<param name='Append' value='0'/>$E$R"},
    {"W param-twice", "$W$F$L<param name='Append' value='true'/><param name='Append' value='true'/>$E$R"},
    {"W param-empty", "$W$F$L<param name='Append' value=''/>$E$R"},
    {"W param-empty", "$W$F$L<param name='Append'/>$E$R"},
    {"W param-ignored", "$W$F$L<param name='Threshold' value='INFO'/>$E$R"},
    {"W param-ignored", "$W$F$L<param name='ImmediateFlush' value='true'/>$E$R"},
    {"W param-ignored", "$W$F$L<param name='BufferedIO' value='true'/>$E$R"},
    {"W param-ignored", "$W$F$L<param value='true'/>$E$R"},
    {"W param-case", "$W$F$L<param name='append' value='true'/>$E$R"},
    {"W param-ignored", "<appender name='a' class='ConsoleAppender'>$L<param name='Target' value='System.err'/>$E$R"},
    {"N one-backup W param-ignored",
     "<appender name='a' class='RollingFileAppender'>$F$L<param name='MaxFileSize' value='1MB'/>$E$R"},
    {"N one-backup E file-size",
     "<appender name='a' class='RollingFileAppender'>$F$L<param name='MaximumFileSize' value='1MB'/>$E$R"},
    {"N one-backup E file-size",
     "<appender name='a' class='RollingFileAppender'>$F$L<param name='MaximumFileSize' value='0'/>$E$R"},
    {"N one-backup E file-size",
     "<appender name='a' class='RollingFileAppender'>$F$L<param name='MaximumFileSize' value='big'/>$E$R"},
    {"N one-backup W number-value",
     "<appender name='a' class='RollingFileAppender'>$F$L<param name='MaximumFileSize' value='1000000 bytes'/>$E$R"},
    {"W no-backups", "<appender name='a' class='RollingFileAppender'>$F$L<param name='MaxBackupIndex' value='0'/>$E$R"},
    {"W no-backups", "<appender name='a' class='RollingFileAppender'>$F$L<param name='MaxBackupIndex' value='x'/>$E$R"},
    {"W disk-too-small W many-backups",
     "<appender name='a' class='RollingFileAppender'>$F$L"
     "<param name='MaxBackupIndex' value='100000000'/>$E$R"},
    {"",
     "<appender name='a' class='TimeRollingFileAppender'>$F$L"
     "<param name='MaxHistory' value='7'/><param name='Interval' value='15 Minutes'/><param name='MaximumFileSize' "
     "value='10 MB'/>$E$R"},
    {"N history-unlimited",
     "<appender name='a' class='TimeRollingFileAppender'>$F$L"
     "<param name='DatePattern' value='.%Y-%m-%dT%H'/>$E$R"},
    {"W rolling-value",
     "<appender name='a' class='TimeRollingFileAppender'>$F$L"
     "<param name='MaxHistory' value='7'/><param name='Interval' value='hourly'/>$E$R"},
    {"W rolling-value",
     "<appender name='a' class='TimeRollingFileAppender'>$F$L"
     "<param name='MaxHistory' value='7'/><param name='MaximumFileSize' value='10 megabytes'/>$E$R"},
    {"W rolling-value",
     "<appender name='a' class='TimeRollingFileAppender'>$F$L"
     "<param name='MaxHistory' value='7'/><param name='MaximumFileSize' value='10'/>$E$R"},
    {"W rolling-value",
     "<appender name='a' class='TimeRollingFileAppender'>$F$L"
     "<param name='MaxHistory' value='7'/><param name='MaxAge' value='a month'/>$E$R"},
    {"W rolling-value",
     "<appender name='a' class='TimeRollingFileAppender'>$F$L"
     "<param name='MaxHistory' value='7'/><param name='MaxTotalSize' value='1.5GB'/>$E$R"},
    {"W rolling-value",
     "<appender name='a' class='TimeRollingFileAppender'>$F$L"
     "<param name='MaxHistory' value='7'/><param name='Compress' value='gzip9'/>$E$R"},
    {"W disk-too-small",
     "<appender name='a' class='TimeRollingFileAppender'>$F$L<param name='MaxTotalSize' value='4000000 GB'/>$E$R"},
    {"W number-value",
     "<appender name='a' class='TimeRollingFileAppender'>$F$L"
     "<param name='MaxHistory' value='7 files'/>$E$R"},
    {"W time-zone-unknown",
     "<appender name='a' class='TimeRollingFileAppender'>$F$L"
     "<param name='MaxHistory' value='7'/><param name='TimeZone' value='Mars'/>$E$R"},
    {"W date-pattern",
     "<appender name='a' class='TimeRollingFileAppender'>$F$L"
     "<param name='MaxHistory' value='7'/><param name='DatePattern' value='.%m-%d'/>$E$R"},
    {"W date-pattern",
     "<appender name='a' class='TimeRollingFileAppender'>$F$L"
     "<param name='MaxHistory' value='7'/><param name='DatePattern' value='.%F/log'/>$E$R"},
    {"W date-pattern",
     "<appender name='a' class='TimeRollingFileAppender'>$F$L"
     "<param name='MaxHistory' value='7'/><param name='Interval' value='hour'/><param name='DatePattern' "
     "value='.%F'/>$E$R"},
    {"E layout-missing", "$W$F$E$R"},
    {"E layout-missing", "<appender name='a' class='ConsoleAppender'/>$R"},
    {"N syslog-severity E layout-missing",
     "<appender name='a' class='SyslogAppender'>"
     "<param name='Host' value='127.0.0.1'/>$E$R"},
    {"N syslog-severity N syslog-line-end W facility-unknown",
     "<appender name='a' class='SyslogAppender'>$L"
     "<param name='Host' value='127.0.0.1'/>"
     "<param name='Facility' value='local9'/>$E$R"},
    {"N syslog-severity N syslog-hosts N syslog-severity N syslog-line-end N syslog-hosts",
     "<appender name='a' class='SyslogAppender'><param name='Host' value='127.0.0.1'/><layout class='PatternLayout'>"
     "<param name='ConversionPattern' value='%m'/></layout>$E<appender name='b' class='SyslogAppender'>$L"
     "<param name='Host' value='127.0.0.2'/>$E<root><appender-ref ref='a'/><appender-ref ref='b'/></root>"},
    {"W layout-twice", "$W$F$L<layout class='TTCCLayout'/>$E$R"},
    {"W layout-class-unknown", "$W$F<layout class='LOGPatternLayout'/>$E$R"},
    {"W layout-class-unknown W param-ignored",
     "$W$F<layout class='Patternlayout'><param name='ConversionPattern' "
     "value='%m%n'/></layout>$E$R"},
    {"W layout-class-unknown", "$W$F<layout/>$E$R"},
    {"E pattern-item", "$W$F<layout class='PatternLayout'><param name='ConversionPattern' value='%y%n'/></layout>$E$R"},
    {"E pattern-item",
     "$W$F<layout class='PatternLayout'><param name='ConversionPattern' value='%m%n%'/></layout>$E$R"},
    {"W pattern-without-line-end",
     "$W$F<layout class='PatternLayout'><param name='ConversionPattern' value='%m%%n'/></layout>$E$R"},
    {"W time-zone-unknown",
     "$W$F<layout class='TTCCLayout'><param name='TimeZone' value='Europe/Brlin'/></layout>$E$R"},
    {"W param-ignored", "$W$F<layout class='TTCCLayout'><param name='ContextPrinting' value='true'/></layout>$E$R"},
    {"N xml-fragments", "$W$F<layout class='XMLLayout'/>$E$R"},
    {"N html-rows N location-unknown",
     "$W$F<layout class='HTMLLayout'><param name='LocationInfo' value='true'/></layout>$E$R"},
    {"E filter-class-unknown", "$W$F$L<filter class='LOGLevelRangeFilter'/>$E$R"},
    {"E filter-class-unknown W param-ignored",
     "$W$F$L<filter class='LevelFilter'><param name='LevelMin' value='INFO'/></filter>$E$R"},
    {"W filter-without-effect", "$W$F$L<filter class='LevelRangeFilter'/>$E$R"},
    {"W filter-without-effect W param-ignored",
     "$W$F$L<filter class='StringMatchFilter'><param name='AcceptOnMatch' value='true'/></filter>$E$R"},
    {"W filter-level-unknown",
     "$W$F$L<filter class='LevelRangeFilter'><param name='LevelMin' value='NOTICE'/></filter>$E$R"},
    {"W filter-level-unknown",
     "$W$F$L<filter class='LevelRangeFilter'><param name='LevelMax' value='WARNING'/></filter>$E$R"},
    {"W filter-level-unknown",
     "$W$F$L<filter class='LevelMatchFilter'><param name='LevelToMatch' value='NULL'/></filter>$E$R"},
    {"E filters-deny-all", "$W$F$L<filter class='DenyAllFilter'/>$E$R"},
    {"E filters-deny-all",
     "$W$F$L<filter class='LevelRangeFilter'><param name='LevelMin' value='ERROR'/>"
     "<param name='LevelMax' value='INFO'/></filter>$E$R"},
    {"E filters-deny-all",
     "$W$F$L<filter class='LevelRangeFilter'><param name='LevelMax' value='INFO'/></filter>$E"
     "<root><level value='WARN'/><appender-ref ref='a'/></root>"},
    {"W appender-silent", "$A<root><level value='OFF'/><appender-ref ref='a'/></root>"},
    {"W error-handler-class", "$W$F$L<errorHandler class='OnlyOnceErrorHandler'/>$E$R"},
    {"N error-handler-unused", "$W$F$L<errorHandler class='LOGOnlyOnceErrorHandler'/>$E$R"},
    {"N error-handler-unused N error-handler-unused W error-handler-twice",
     "$W$F$L<errorHandler class='LOGOnlyOnceErrorHandler'/><errorHandler class='LOGOnlyOnceErrorHandler'/>$E$R"},
    {"N error-handler-unused W backup-unused W appender-silent",
     "$W$F$L<errorHandler class='LOGOnlyOnceErrorHandler'><appender-ref ref='b'/></errorHandler>$E"
     "<appender name='b' class='ConsoleAppender'>$L$E$R"},
    {"N error-handler-unused E appender-missing",
     "$W$F$L<errorHandler class='LOGOnlyOnceErrorHandler'><appender-ref ref='b'/></errorHandler>$E$R"},
    {"N error-handler-unused E appender-ring",
     "$W$F$L<errorHandler class='LOGOnlyOnceErrorHandler'><appender-ref ref='a'/></errorHandler>$E$R"},
    {"E appender-ref-refused", "$W$F$L<appender-ref ref='b'/>$E$R"},
    // Queues.
    {"N queue-needs-shutdown",
     "$A<appender name='q' class='AsyncAppender'><appender-ref ref='a'/>$E"
     "<root><appender-ref ref='q'/></root>"},
    {"E queue-without-appender", "<appender name='a' class='AsyncAppender'/>$R"},
    {"N queue-needs-shutdown E appender-missing",
     "<appender name='a' class='AsyncAppender'><appender-ref ref='b'/>$E$R"},
    {"N queue-needs-shutdown E appender-ring", "<appender name='a' class='AsyncAppender'><appender-ref ref='a'/>$E$R"},
    {"N queue-needs-shutdown N queue-needs-shutdown E appender-ring",
     "<appender name='a' class='AsyncAppender'><appender-ref ref='b'/>$E"
     "<appender name='b' class='AsyncAppender'><appender-ref ref='a'/>$E$R"},
    {"N queue-needs-shutdown E queue-size",
     "$A<appender name='q' class='AsyncAppender'><param name='BufferSize' value='0'/><appender-ref ref='a'/>$E"
     "<root><appender-ref ref='q'/></root>"},
    {"N queue-needs-shutdown W number-value",
     "$A<appender name='q' class='AsyncAppender'><param name='BufferSize' value='1k'/><appender-ref ref='a'/>$E"
     "<root><appender-ref ref='q'/></root>"},
    {"N queue-needs-shutdown W layout-unused",
     "$A<appender name='q' class='AsyncAppender'><appender-ref ref='a'/>$L$E<root><appender-ref ref='q'/></root>"},
    {"W queue-hides-thread N queue-needs-shutdown",
     "$W$F<layout class='TTCCLayout'/>$E<appender name='q' class='AsyncAppender'><appender-ref ref='a'/>$E"
     "<root><appender-ref ref='q'/></root>"},
    {"N queue-needs-shutdown",
     "$W$F<layout class='TTCCLayout'/>$E<appender name='q' class='AsyncAppender'><appender-ref ref='a'/>"
     "<param name='LocationInfo' value='true'/>$E<root><appender-ref ref='q'/></root>"},
    {"N queue-needs-shutdown W event-twice",
     "$A<appender name='q' class='AsyncAppender'><appender-ref ref='a'/>$E<root><appender-ref ref='q'/>"
     "<appender-ref ref='a'/></root>"},
    // The network.
    {"W datagrams-without-renderer E port-range",
     "<appender name='a' class='LocalUDPAppender'><param name='Port' value='70000'/>$E$R"},
    {"W datagrams-without-renderer", "<appender name='a' class='LogLocalUDPAppender'/>$R"},
    {"W datagrams-without-renderer W param-case",
     "<appender name='a' class='LocalUDPAppender'><param name='port' value='1'/>$E$R"},
    {"W datagrams-without-renderer W layout-unused", "<appender name='a' class='LocalUDPAppender'>$L$E$R"},
    {"E host-missing", "<appender name='a' class='TCPSocketAppender'/>$R"},
    {"E host-missing W param-empty",
     "<appender name='a' class='TCPSocketAppender'><param name='RemoteHost' value=''/>$E$R"},
    {"E port-range",
     "<appender name='a' class='TCPSocketAppender'><param name='remotehost' value='127.0.0.1'/>"
     "<param name='PORT' value='0'/>$E$R"},
    {"W boolean-value W number-value",
     "<appender name='a' class='TCPSocketAppender'><param name='RemoteHost' value='127.0.0.1'/>"
     "<param name='Secure' value='no'/><param name='ReconnectionDelay' value='1s'/>$E$R"},
};

}  // namespace vrktest
