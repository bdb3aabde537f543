// Small documents and what a check finds in them, for the tests that hold the check against the library.

#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vrktest {

/// The body of a document, in which `~` is the test's folder and these stand for what most documents need:
///   $F a file, $L a layout, $A a good appender "a" with both, $R a root that has it, $W a whole appender "a" around
///   what follows up to $E, of the class FileAppender, $N a name of 1001 characters
///   $X(name=class) the beginning of an appender, $P(name=value) a parameter, $O(name) a reference to an appender
/// A body that begins with ^ is the whole document. Where there are `values`, separated by |, it is a body for each,
/// which @ stands for. Expected are the findings in order, E for an error, W for a warning and N for a note in front.
struct CheckedDocument {
  const char* findings;
  const char* body;
  const char* values = "";
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
      {'X', "<appender name='1' class='2'>"},
      {'P', "<param name='1' value='2'/>"},
      {'O', "<appender-ref ref='1'/>"},
  };
  std::string text;
  for (std::size_t i = 0; i < body.size(); ++i) {
    std::string piece(body.substr(i, 1));
    if (piece == "$" && i + 1 < body.size()) {
      const char letter = body[++i];
      for (const auto& [name, meaning] : SHORT) {
        if (name == letter) piece = meaning;
      }
      if (letter == 'N') piece = std::string(1001, 'n');
      if (std::string_view("XPO").find(letter) != std::string_view::npos) {
        const std::string_view parts = body.substr(i + 2, body.find(')', i) - i - 2);
        i += parts.size() + 2;
        piece.replace(piece.find('1'), 1, parts.substr(0, parts.find('=')));
        if (letter != 'O') piece.replace(piece.rfind('2'), 1, parts.substr(parts.find('=') + 1));
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
    {"", "^<log4j:configuration @>$A$R</log4j:configuration>",
     "xmlns:log4j='urn:x' threshold='ALL'|threshold='null' debug='null'|debug='true' threshold='info'"},
    {"", "$A<root><level value='warn'/>$O(a)</root>"},
    {"", "$A<logger name='x'><level value='INFO'/>$O(a)</logger>"},
    {"", "$A$R<logger name='x.y'><level value='inherited'/></logger><logger name='x' additivity='True'/>"},
    {"", "$A$R<logger name='x'><level value='OFF'/></logger>"},
    {"", "$A@<logger name='x' additivity='false'>$O(a)</logger>", "|$R"},
    {"", "$W$F$L$P(Append=TRUE)$E$R"},
    {"", "$W$F<layout class='PatternLayout'/>$E$R"},
    {"", "$W$F<layout class='com.x.PatternLayout'>$P(conversionpattern=%d{%H}{UTC} %-5p %m%n)</layout>$E$R"},
    {"", "$W$F<layout class='TTCCLayout'>$P(dateformat=ISO8601)$P(TimeZone=Asia/Tokyo)</layout>$E$R"},
    {"", "$W$F$L<filter class='LevelRangeFilter'>$P(LevelMin=WARN)</filter>$E$R"},
    {"", "$W$F$L<filter class='@</filter><filter class='DenyAllFilter'/>$E$R",
     "StringMatchFilter'>$P(StringToMatch=x)|LevelMatchFilter'>$P(LevelToMatch=error)"},
    {"", "$X(a=RollingFileAppender)$F$L$P(MaxBackupIndex=3)$P(MaximumFileSize=1000000)$E$R"},
    {"", "$X(a=org.x.ConsoleAppender)$L$E$R"},
    {"", "$A$X(b=ConsoleAppender)$L$E<logger name='x'>$O(b)</logger>$R"},
    // The document.
    {"E unreadable", "^@", "|<a><b></a>|<log4j:configuration><root>"},
    {"E unknown-root", "^<log4j:config>$A$R</log4j:config>"},
    {"W old-root", "^<configuration>$A$R</configuration>"},
    {"N doctype", "^<!DOCTYPE log4j:configuration SYSTEM 'x.dtd'><log4j:configuration>$A$R</log4j:configuration>"},
    {"W debug-value", "^<log4j:configuration debug='false'>$A$R</log4j:configuration>"},
    {"W old-debug", "^<log4j:configuration configDebug='false'>$A$R</log4j:configuration>"},
    {"E threshold-unknown", "^<log4j:configuration threshold='@'>$A$R</log4j:configuration>", "WARNING| INFO"},
    {"W attribute-unknown", "^<log4j:configuration Threshold='INFO'>$A$R</log4j:configuration>"},
    {"W threshold-above-level",
     "^<log4j:configuration threshold='WARN'>$A<root><level value='INFO'/>$O(a)</root></log4j:configuration>"},
    {"W appender-silent", "^<log4j:configuration threshold='OFF'>$A$R</log4j:configuration>"},
    {"E element-unknown", "$A$R<@/>", "loger name='x'|appenders"},
    {"E element-unknown", "$A<root><Level value='INFO'/>$O(a)</root>"},
    {"E element-unknown", "$W$F$L<@/>$E$R", "params name='Append' value='false'|filters"},
    {"E element-misplaced", "$A$R@", "<layout class='SimpleLayout'/>|$O(a)|<level value='INFO'/>"},
    {"E element-misplaced", "$A<root>$O(a)<logger name='x'/></root>"},
    {"E element-misplaced", "$W$F$L<level value='INFO'/>$E$R"},
    {"E element-misplaced", "$A<root><appender-ref ref='a'>$P(a=b)</appender-ref></root>"},
    {"W appender-misplaced", "<root>$O(a)$A</root>"},
    {"W attribute-unknown", "$A<root additivity='false'>$O(a)</root>"},
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
    {"W logger-named-like-root", "$A$R<logger name='@'/>", "ro|root"},
    {"E logger-without-factory", "$A$R<logger name='x' class='Own'/>"},
    {"N old-name", "$A$R<category name='x'/>"},
    {"N old-name", "$A$R<logger name='x'><priority value='INFO'/></logger>"},
    {"W additivity-value", "$A$R<logger name='x' additivity='@'/>", "no|0| false"},
    {"W level-unknown", "$A<root><level value='WARNING'/>$O(a)</root>"},
    {"W level-unknown", "$A$R<logger name='x'><level @/></logger>",
     "value=''||value='INFO '|value='Inherited'|value='null'"},
    {"W level-class", "$A$R<logger name='x'><level value='INFO' class='XLevel'/></logger>"},
    {"E root-inherited", "$A<root><level value='inherited'/>$O(a)</root>"},
    {"W level-twice", "$A$R<logger name='x'><level value='INFO'/><level value='WARN'/></logger>"},
    {"W param-ignored", "$A<root>$P(Threshold=INFO)$O(a)</root>"},
    {"W param-ignored", "$A$R<logger name='x'>$P(x=y)</logger>"},
    {"E appender-missing", "$A<root>$O(a)$O(A)</root>"},
    {"W events-go-nowhere E appender-missing W appender-unused", "<root>$O(aa)</root>$A"},
    {"E appender-missing", "$A$R<logger name='x'><appender-ref/></logger>"},
    {"W appender-ref-twice", "$A<root>$O(a)$O(a)</root>"},
    {"W logger-twice", "$A$R<logger name='x'/><logger name='x'/>"},
    {"W root-twice", "$A<root/><root>$O(a)</root>"},
    {"W event-twice", "$A$R<logger name='x@'>$O(a)</logger>", "|'/><logger name='x.y.z"},
    {"W events-go-nowhere", "@", "<root/>|<logger name='x'/>|$A$R<logger name='x' additivity='false'/>"},
    // Appenders.
    {"W appender-unused", "$A$R$X(b=ConsoleAppender)$L$E"},
    {"W appender-name-twice", "$A$X(a=ConsoleAppender)$L$E$R"},
    {"W appender-without-name", "<appender class='ConsoleAppender'>$L$E<root>$O()</root>"},
    {"E appender-class-unknown W events-go-nowhere", "<appender name='a' @>$F$L$E$R",
     "class='LOGFileAppender'|class='fileAppender'|class='FileAppender.'|class='DailyRollingFileAppender'|"},
    {"E appender-class-unknown", "$A$R<appender name='b' class='NoSuch'/>"},
    {"E file-missing", "$W@$L$E$R", "|$P(File=)"},
    {"E file-missing W param-twice", "$W$F$P(File=)$L$E$R"},
    {"E file-missing W param-case", "$W$P(file=~/a.log)$L$E$R"},
    {"N file-relative", "$W$P(File=a.log)$L$E$R"},
    {"E directory-missing", "$W$P(File=~/no/a.log)$L$E$R"},
    {"E file-is-directory", "$W$P(File=~)$L$E$R"},
    {"W file-shared", "$A$X(b=FileAppender)$P(File=~@/a.log)$L$E<root>$O(a)$O(b)</root>", "|/./work/.."},
    {"N one-backup W file-is-backup",
     "$X(a=RollingFileAppender)$F$L$E$X(b=FileAppender)$P(File=~/a.log.1)$L$E<root>$O(a)$O(b)</root>"},
    {"N one-backup", "$X(a=RollingFileAppender)$F$L$E$X(b=FileAppender)$P(File=~/a.log.2)$L$E<root>$O(a)$O(b)</root>"},
    {"N file-emptied", "$W$F$L$P(Append=False)$E$R"},
    {"W boolean-value", "$W$F$L$P(Append=@)$E$R", "no|0"},
    {"W param-twice", "$W$F$L$P(Append=true)$P(Append=true)$E$R"},
    {"W param-empty", "$W$F$L<param name='Append'@/>$E$R", "| value=''"},
    {"W param-ignored", "$W$F$L<param @value='true'/>$E$R",
     "|name='Threshold' |name='ImmediateFlush' |name='BufferedIO' "},
    {"W param-case", "$W$F$L$P(append=true)$E$R"},
    {"W param-ignored", "$X(a=ConsoleAppender)$L$P(Target=System.err)$E$R"},
    {"N one-backup W param-ignored", "$X(a=RollingFileAppender)$F$L$P(MaxFileSize=1MB)$E$R"},
    {"N one-backup E file-size", "$X(a=RollingFileAppender)$F$L$P(MaximumFileSize=@)$E$R", "1MB|0|big"},
    {"N one-backup W number-value", "$X(a=RollingFileAppender)$F$L$P(MaximumFileSize=1000000 bytes)$E$R"},
    {"W no-backups", "$X(a=RollingFileAppender)$F$L$P(MaxBackupIndex=@)$E$R", "0|x"},
    {"W disk-too-small W many-backups", "$X(a=RollingFileAppender)$F$L$P(MaxBackupIndex=100000000)$E$R"},
    {"", "$X(a=TimeRollingFileAppender)$F$L$P(MaxHistory=7)$P(Interval=15 Minutes)$P(MaximumFileSize=10 MB)$E$R"},
    {"N history-unlimited", "$X(a=TimeRollingFileAppender)$F$L$P(DatePattern=.%Y-%m-%dT%H)$E$R"},
    {"W rolling-value", "$X(a=TimeRollingFileAppender)$F$L$P(MaxHistory=7)<param name='@'/>$E$R",
     "Interval' value='hourly|MaximumFileSize' value='10 megabytes|MaximumFileSize' value='10|MaxAge' value='a month|"
     "MaxTotalSize' value='1.5GB|Compress' value='gzip9"},
    {"W disk-too-small", "$X(a=TimeRollingFileAppender)$F$L$P(MaxTotalSize=4000000 GB)$E$R"},
    {"W number-value", "$X(a=TimeRollingFileAppender)$F$L$P(MaxHistory=7 files)$E$R"},
    {"W time-zone-unknown", "$X(a=TimeRollingFileAppender)$F$L$P(MaxHistory=7)$P(TimeZone=Mars)$E$R"},
    {"W date-pattern", "$X(a=TimeRollingFileAppender)$F$L$P(MaxHistory=7)<param name='DatePattern' value='@'/>$E$R",
     ".%m-%d|.%F/log"},
    {"W date-pattern", "$X(a=TimeRollingFileAppender)$F$L$P(MaxHistory=7)$P(Interval=hour)$P(DatePattern=.%F)$E$R"},
    {"E layout-missing", "$W$F$E$R"},
    {"E layout-missing", "<appender name='a' class='ConsoleAppender'/>$R"},
    {"N syslog-severity E layout-missing", "$X(a=SyslogAppender)$P(Host=127.0.0.1)$E$R"},
    {"N syslog-severity N syslog-line-end W facility-unknown",
     "$X(a=SyslogAppender)$L$P(Host=127.0.0.1)$P(Facility=local9)$E$R"},
    {"N syslog-severity N syslog-hosts N syslog-severity N syslog-line-end N syslog-hosts",
     "$X(a=SyslogAppender)$P(Host=127.0.0.1)<layout class='PatternLayout'>$P(ConversionPattern=%m)</layout>$E"
     "$X(b=SyslogAppender)$L$P(Host=127.0.0.2)$E<root>$O(a)$O(b)</root>"},
    {"W layout-twice", "$W$F$L<layout class='TTCCLayout'/>$E$R"},
    {"W layout-class-unknown", "$W$F<layout @/>$E$R", "|class='LOGPatternLayout'"},
    {"W layout-class-unknown W param-ignored",
     "$W$F<layout class='Patternlayout'>$P(ConversionPattern=%m%n)</layout>$E$R"},
    {"E pattern-item", "$W$F<layout class='PatternLayout'>$P(ConversionPattern=@)</layout>$E$R", "%y%n|%m%n%"},
    {"W pattern-without-line-end", "$W$F<layout class='PatternLayout'>$P(ConversionPattern=%m%%n)</layout>$E$R"},
    {"W time-zone-unknown", "$W$F<layout class='TTCCLayout'>$P(TimeZone=Europe/Brlin)</layout>$E$R"},
    {"W param-ignored", "$W$F<layout class='TTCCLayout'>$P(ContextPrinting=true)</layout>$E$R"},
    {"",
     "$W$F<layout class='JSONLayout'>$P(preset=ECS)<param name='Names' value='time=ts, level=l'/>$P(TimeFormat=millis)"
     "$P(Fields=time message)</layout>$E$R"},
    {"E json-setting E json-setting E json-setting E json-setting W time-zone-unknown",
     "$W$F<layout class='JSONLayout'>$P(Preset=xml)<param name='Names' value='tme=t'/>$P(TimeFormat=ms)"
     "$P(Fields=time,mesage)$P(TimeZone=Nil)</layout>$E$R"},
    {"W boolean-value", "$W$F<layout class='PatternLayout'>$P(ConversionPattern=%e%n)$P(SafeText=no)</layout>$E$R"},
    {"N xml-fragments", "$W$F<layout class='XMLLayout'/>$E$R"},
    {"N html-rows N location-unknown", "$W$F<layout class='HTMLLayout'>$P(LocationInfo=true)</layout>$E$R"},
    {"E filter-class-unknown W param-ignored",
     "$W$F$L<filter class='LOGLevelRangeFilter'>$P(LevelMin=INFO)</filter>$E$R"},
    {"W filter-without-effect", "$W$F$L<filter class='LevelRangeFilter'/>$E$R"},
    {"W filter-without-effect W param-ignored",
     "$W$F$L<filter class='StringMatchFilter'>$P(AcceptOnMatch=true)</filter>$E$R"},
    {"W filter-level-unknown", "$W$F$L<filter class='LevelRangeFilter'>@</filter>$E$R",
     "$P(LevelMin=NOTICE)|$P(LevelMax=WARNING)"},
    {"W filter-level-unknown", "$W$F$L<filter class='LevelMatchFilter'>$P(LevelToMatch=NULL)</filter>$E$R"},
    {"E filters-deny-all", "$W$F$L<filter class='DenyAllFilter'/>$E$R"},
    {"E filters-deny-all", "$W$F$L<filter class='LevelRangeFilter'>$P(LevelMin=ERROR)$P(LevelMax=INFO)</filter>$E$R"},
    {"E filters-deny-all",
     "$W$F$L<filter class='LevelRangeFilter'>$P(LevelMax=INFO)</filter>$E<root><level value='WARN'/>$O(a)</root>"},
    {"W appender-silent", "$A<root><level value='OFF'/>$O(a)</root>"},
    {"W error-handler-class", "$W$F$L<errorHandler class='OnlyOnceErrorHandler'/>$E$R"},
    {"N error-handler-unused N error-handler-unused W error-handler-twice",
     "$W$F$L<errorHandler class='LOGOnlyOnceErrorHandler'/><errorHandler class='LOGOnlyOnceErrorHandler'/>$E$R"},
    {"N error-handler-unused W backup-unused W appender-silent",
     "$W$F$L<errorHandler class='LOGOnlyOnceErrorHandler'>$O(b)</errorHandler>$E$X(b=ConsoleAppender)$L$E$R"},
    {"N error-handler-unused E appender-missing",
     "$W$F$L<errorHandler class='LOGOnlyOnceErrorHandler'>$O(b)</errorHandler>$E$R"},
    {"N error-handler-unused E appender-ring",
     "$W$F$L<errorHandler class='LOGOnlyOnceErrorHandler'>$O(a)</errorHandler>$E$R"},
    {"E appender-ref-refused", "$W$F$L$O(b)$E$R"},
    // Queues.
    {"N queue-needs-shutdown", "$A$X(q=AsyncAppender)$O(a)$E<root>$O(q)</root>"},
    {"E queue-without-appender", "<appender name='a' class='AsyncAppender'/>$R"},
    {"N queue-needs-shutdown E appender-missing", "$X(a=AsyncAppender)$O(b)$E$R"},
    {"N queue-needs-shutdown E appender-ring", "$X(a=AsyncAppender)$O(a)$E$R"},
    {"N queue-needs-shutdown N queue-needs-shutdown E appender-ring",
     "$X(a=AsyncAppender)$O(b)$E$X(b=AsyncAppender)$O(a)$E$R"},
    {"N queue-needs-shutdown E queue-size", "$A$X(q=AsyncAppender)$P(BufferSize=0)$O(a)$E<root>$O(q)</root>"},
    {"N queue-needs-shutdown W number-value", "$A$X(q=AsyncAppender)$P(BufferSize=1k)$O(a)$E<root>$O(q)</root>"},
    {"N queue-needs-shutdown W layout-unused", "$A$X(q=AsyncAppender)$O(a)$L$E<root>$O(q)</root>"},
    {"W queue-hides-thread N queue-needs-shutdown",
     "$W$F<layout class='TTCCLayout'/>$E$X(q=AsyncAppender)$O(a)$E<root>$O(q)</root>"},
    {"W queue-hides-thread N queue-needs-shutdown",
     "$W$F<layout class='JSONLayout'/>$E$X(q=AsyncAppender)$O(a)$E<root>$O(q)</root>"},
    {"N queue-needs-shutdown",
     "$W$F<layout class='JSONLayout'>$P(Fields=time message)</layout>$E$X(q=AsyncAppender)$O(a)$E<root>$O(q)</root>"},
    {"N queue-needs-shutdown",
     "$W$F<layout class='TTCCLayout'/>$E$X(q=AsyncAppender)$O(a)$P(LocationInfo=true)$E<root>$O(q)</root>"},
    {"N queue-needs-shutdown W event-twice", "$A$X(q=AsyncAppender)$O(a)$E<root>$O(q)$O(a)</root>"},
    // Variables.
    {"",
     "^<log4j:configuration substitute='true'>$X(a=FileAppender)$P(File=~/${LOG4VRK_NONE:-a}.log)$L$E"
     "<root><level value='$${LOG4VRK_NONE:-info}'/>$O(a)</root></log4j:configuration>"},
    {"E file-missing E variable-value",
     "^<log4j:configuration substitute='TRUE'>$X(a=FileAppender)$P(File=@)$L$E$R</log4j:configuration>",
     "${LOG4VRK_NONE}|${|${A:-${PATH}}|${A B}|${}"},
    {"E variable-value",
     "^<log4j:configuration substitute='true'>$A<root><level value='$${LOG4VRK_NONE}'/>$O(a)</root>"
     "</log4j:configuration>"},
    {"W substitute-value", "^<log4j:configuration substitute='yes'>$A$R</log4j:configuration>"},
    {"N variables-off",
     "$W$F<layout class='PatternLayout'>"
     "$P(ConversionPattern=${PATH}%n)</layout>$E$R"},
    // Falling back.
    {"E fallback-without-appender", "<appender name='a' class='FallbackAppender'/>$R"},
    {"W fallback-alone E appender-missing", "$X(a=FallbackAppender)$O(b)$E$R"},
    {"E appender-ring", "$A$X(q=FallbackAppender)$O(a)$O(q)$E<root>$O(q)</root>"},
    {"N queue-needs-shutdown W fallback-takes-all W event-twice",
     "$A$X(q=AsyncAppender)$O(a)$E$X(f=FallbackAppender)$O(q)$O(a)$E<root>$O(f)</root>"},
    {"W fallback-takes-all",
     "$A$X(s=TCPSocketAppender)$P(RemoteHost=localhost)$E$X(f=FallbackAppender)$O(s)$O(a)$E<root>$O(f)</root>"},
    {"W number-value",
     "$A$X(b=ConsoleAppender)$L$E$X(f=FallbackAppender)$P(RetryDelay=0)$O(a)$O(b)$E<root>$O(f)</root>"},
    {"W layout-unused", "$A$X(b=ConsoleAppender)$L$E$X(f=FallbackAppender)$O(a)$O(b)$L$E<root>$O(f)</root>"},
    // The network.
    {"W datagrams-without-renderer E port-range", "$X(a=LocalUDPAppender)$P(Port=70000)$E$R"},
    {"W datagrams-without-renderer", "<appender name='a' class='LogLocalUDPAppender'/>$R"},
    {"W datagrams-without-renderer W param-case", "$X(a=LocalUDPAppender)$P(port=1)$E$R"},
    {"W datagrams-without-renderer W layout-unused", "$X(a=LocalUDPAppender)$L$E$R"},
    {"E host-missing", "<appender name='a' class='TCPSocketAppender'/>$R"},
    {"E host-missing W param-empty", "$X(a=TCPSocketAppender)$P(RemoteHost=)$E$R"},
    {"E port-range", "$X(a=TCPSocketAppender)$P(remotehost=127.0.0.1)$P(PORT=0)$E$R"},
    {"W boolean-value W number-value",
     "$X(a=TCPSocketAppender)$P(RemoteHost=127.0.0.1)$P(Secure=no)$P(ReconnectionDelay=1s)$E$R"},
    // The console in colours.
    {"", "$X(a=ColorConsoleAppender)$L@$E$R",
     "$P(Target=ERR)$P(Colors=Never)$P(Prefix=SD-Daemon)|$P(WarnColor=Bold bright-red)$P(InfoColor=38;5;208)"},
    {"W value-unknown", "$X(a=ColorConsoleAppender)$L@$E$R",
     "$P(Target=stderr)|$P(Colors=yes)|$P(Prefix=syslog)|$P(FatalColor=bold,red)|$P(DebugColor=bright-dim)"},
    {"E layout-missing W param-case", "$X(a=ColorConsoleAppender)$P(colors=auto)$E$R"},
    // The journal.
    {"W journal-missing W param-case W param-empty",
     "$X(a=JournalAppender)$P(Socket=~/s)$P(identifier=x)$P(Identifier=)$E$R"},
    {"W journal-missing W socket-path", "$X(a=JournalAppender)$L$P(Socket=journal/socket)$E$R"},
    {"W journal-missing E socket-path", "$X(a=JournalAppender)<param name='Socket' value='/$N'/>$E$R"},
    // Rates.
    {"", "$W$F$L<filter class='RateLimitFilter'>$P(MaxEvents=1)$P(Seconds=60)$P(Level=info)</filter>$E$R"},
    {"W filter-without-effect", "$W$F$L<filter class='RateLimitFilter'>@</filter>$E$R",
     "|$P(Seconds=5)|$P(MaxEvents=many)|$P(MaxEvents=-1)|$P(MaxEvents=5)$P(Seconds=0)"},
    {"W number-value W filter-level-unknown",
     "$W$F$L<filter class='RateLimitFilter'>$P(MaxEvents=5k)$P(Level=trace)</filter>$E$R"},
    {"W pattern-without-line-end",
     "$X(a=ColorConsoleAppender)<layout class='PatternLayout'>$P(ConversionPattern=%m)</layout>$E$R"},
};

/// The findings and the text of every document of the table.
inline std::vector<std::pair<std::string, std::string>> checkedDocuments(const std::string& folder) {
  std::vector<std::pair<std::string, std::string>> all;
  for (const auto& [findings, body, values] : CHECKED_DOCUMENTS) {
    for (std::string_view rest(values);; rest.remove_prefix(rest.find('|') + 1)) {
      std::string one(body);
      if (const std::size_t at = one.find('@'); at != one.npos) one.replace(at, 1, rest.substr(0, rest.find('|')));
      all.emplace_back(findings, expand(one, folder));
      if (rest.find('|') == rest.npos) break;
    }
  }
  return all;
}

}  // namespace vrktest
