// Says what is wrong with configuration documents. See log4vrk-check --help.

#include <unistd.h>

#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "log4vrk/config/LOG4VRKConfigurator.h"
#include "log4vrk/config/LOGDocumentCheck.h"
#include "log4vrk/core/LOGLevel.h"

namespace {

constexpr int CLEAN = 0, FINDINGS = 1, FAILED = 2;

constexpr char HELP[] =
    R"(usage: log4vrk-check [--strict] [--no-env] [--connect] [--set NAME=VALUE]
                     [--format text|json]
                     [--explain LOGGER LEVEL] [--dump] [--sample] FILE...

Says what is wrong with configuration documents of log4vrk, and changes nothing.

  --strict                warnings count as errors in the exit status
  --no-env                only look at the documents, not at directories, disks,
                          libraries and hosts
  --connect               connect to the log servers that the documents name
  --set NAME=VALUE        what the program sets for ${NAME}; others are those of the
                          environment
  --format text|json      how findings are written
  --explain LOGGER LEVEL  what becomes of an event of that logger at that level
  --dump                  all loggers and appenders, with defaults filled in
  --sample                what each appender would write of an event
  --help                  this text

Relative file names are seen from the working directory, as by the program. Libraries
are looked for where the system does, and in LD_LIBRARY_PATH.

Exit status: 0 no errors, 1 errors, 2 the documents could not be looked at.
)";

struct Options {
  bool strict = false, json = false, dump = false, sample = false, colours = false;
  LOGDocumentCheck::Settings settings;
  std::string explained;  // empty: nothing
  const LOGLevel* level = nullptr;
  std::vector<std::string> files;
};

struct UsageError {
  std::string text;
};

std::string_view severityName(LOGFinding::Severity severity) {
  return severity == LOGFinding::FAULT ? "error" : severity == LOGFinding::WARNING ? "warning" : "note";
}

Options parse(const std::vector<std::string>& arguments) {
  Options options;
  bool onlyFiles = false;
  std::size_t next = 0;
  const auto value = [&](const std::string& option) {
    if (next == arguments.size()) throw UsageError{option + " needs a value"};
    return arguments[next++];
  };
  while (next < arguments.size()) {
    const std::string& argument = arguments[next++];
    if (onlyFiles || argument.rfind('-', 0) != 0) {
      options.files.push_back(argument);
    } else if (argument == "--") {
      onlyFiles = true;
    } else if (argument == "--strict") {
      options.strict = true;
    } else if (argument == "--no-env") {
      options.settings.environment = false;
    } else if (argument == "--connect") {
      options.settings.connect = true;
    } else if (argument == "--set") {
      const std::string variable = value(argument);
      const std::size_t equals = variable.find('=');
      if (equals == 0 || equals == variable.npos) throw UsageError{"--set needs NAME=VALUE"};
      LOG4VRKConfigurator::setVariable(I18NString(variable.substr(0, equals)), I18NString(variable.substr(equals + 1)));
    } else if (argument == "--format") {
      const std::string format = value(argument);
      if (format != "text" && format != "json") throw UsageError{"--format is text or json"};
      options.json = format == "json";
    } else if (argument == "--explain") {
      options.explained = value(argument);
      const std::string level = value(argument);
      options.level = LOGLevel::toLevel(I18NString(level), nullptr);
      if (options.level == nullptr) throw UsageError{"there is no level " + level};
    } else if (argument == "--dump") {
      options.dump = true;
    } else if (argument == "--sample") {
      options.sample = true;
    } else {
      throw UsageError{"unknown option " + argument};
    }
  }
  if (options.files.empty()) throw UsageError{"no file is given"};
  const bool reports = options.dump || options.sample || options.level != nullptr;
  if (options.json && reports) throw UsageError{"--explain, --dump and --sample write text only"};
  options.colours = !options.json && ::isatty(STDOUT_FILENO) != 0;
  return options;
}

std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      result += '\\';
      result += c;
    } else if (static_cast<unsigned char>(c) < ' ') {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
      result += escaped;
    } else {
      result += c;
    }
  }
  return result + '"';
}

void writeJson(const std::string& file, const LOGFinding& finding, bool& isFirst) {
  std::cout << (isFirst ? "\n" : ",\n") << "  {\"file\": " << quoted(file) << ", \"line\": " << finding.line
            << ", \"column\": " << finding.column << ", \"severity\": \"" << severityName(finding.severity)
            << "\", \"name\": " << quoted(finding.name) << ", \"where\": " << quoted(finding.where)
            << ", \"text\": " << quoted(finding.text) << ", \"effect\": " << quoted(finding.effect)
            << ", \"suggestion\": " << quoted(finding.suggestion) << "}";
  isFirst = false;
}

// A finding is a line, whatever line feeds the document has in its values.
void writeText(const std::string& file, const LOGFinding& finding, bool colours) {
  std::string line = file + ':';
  if (finding.line > 0) line += std::to_string(finding.line) + ':' + std::to_string(finding.column) + ':';
  const char* const colour = finding.severity == LOGFinding::FAULT     ? "\033[1;31m"
                             : finding.severity == LOGFinding::WARNING ? "\033[1;35m"
                                                                       : "\033[1;36m";
  std::cout << line << ' ' << (colours ? colour : "") << severityName(finding.severity) << (colours ? "\033[0m" : "");
  line = ": ";
  for (const std::string* part : {&finding.where, &finding.text}) {
    if (!part->empty()) line += *part + ": ";
  }
  line += finding.effect;
  if (!finding.suggestion.empty()) line += " (did you mean \"" + finding.suggestion + "\"?)";
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < ' ') c = ' ';
  }
  std::cout << line << " [" << finding.name << "]\n";
}

std::string counted(long count, const char* what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

int run(const Options& options) {
  long errors = 0, warnings = 0, notes = 0;
  bool isFirst = true, isUnreadable = false;
  if (options.json) std::cout << "[";
  for (const std::string& file : options.files) {
    const LOGDocumentCheck check{I18NString(file), options.settings};
    for (const LOGFinding& finding : check.findings()) {
      // A file that is not there is no finding about a document.
      if (finding.name == "unreadable" && ::access(file.c_str(), R_OK) != 0) isUnreadable = true;
      options.json ? writeJson(file, finding, isFirst) : writeText(file, finding, options.colours);
    }
    errors += check.count(LOGFinding::FAULT);
    warnings += check.count(LOGFinding::WARNING) - check.count(LOGFinding::FAULT);
    notes += check.count(LOGFinding::NOTE) - check.count(LOGFinding::WARNING);
    if (options.level != nullptr) std::cout << check.explain(options.explained, *options.level);
    if (options.dump) std::cout << check.dump();
    if (options.sample) std::cout << check.sample();
  }
  if (options.json) {
    std::cout << (isFirst ? "]\n" : "\n]\n");
  } else {
    std::cout << counted(static_cast<long>(options.files.size()), "document") << ": " << counted(errors, "error")
              << ", " << counted(warnings, "warning") << ", " << counted(notes, "note") << "\n";
  }
  std::cout << std::flush;
  if (!std::cout || isUnreadable) return FAILED;
  return errors > 0 || (options.strict && warnings > 0) ? FINDINGS : CLEAN;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  try {
    for (const std::string& argument : arguments) {
      if (argument == "--") break;
      if (argument != "--help") continue;
      std::cout << HELP << std::flush;
      return std::cout ? CLEAN : FAILED;
    }
    return run(parse(arguments));
  } catch (const UsageError& error) {
    std::cerr << "log4vrk-check: " << error.text << "; see log4vrk-check --help\n";
  } catch (const std::exception& error) {
    std::cerr << "log4vrk-check: " << error.what() << "\n";
  }
  return FAILED;
}
