#include "log4vrk/layouts/internal/LOGJSONForm.h"

#include <algorithm>
#include <iterator>

#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/layouts/internal/LOGEscape.h"
#include "log4vrk/platform/I18NLocale.h"

namespace {

using Settings = LOGJSONSettings;

// In the order of LOGJSONPart: how the part is called in settings, and in each preset.
struct Names {
  const char *part, *of[3];
};
constexpr Names NAMES[LOGJSON_PARTS] = {
    {"time", {"time", "@timestamp", "time"}},
    {"level", {"level", "log.level", "severity"}},
    {"logger", {"logger", "log.logger", "logger"}},
    {"thread", {"thread", "process.thread.name", "thread"}},
    {"process", {"pid", "process.pid", "pid"}},
    {"message", {"message", "message", "message"}},
    {"nested", {"nested", "nested", "nested"}},
    {"context", {"context", "labels", "logging.googleapis.com/labels"}},
    {"fields", {"", "", ""}},
    {"place", {"", "", "logging.googleapis.com/sourceLocation"}},
    {"error", {"error", "error.stack_trace", "stack_trace"}},
    {"file", {"file", "log.origin.file.name", ""}},
    {"line", {"line", "log.origin.file.line", ""}},
    {"function", {"function", "log.origin.function", ""}},
    {"", {"", "ecs.version", ""}},
    {"", {"", "error.message", ""}},
};

// The first three of a schema's lines are where its readers look for them.
const std::vector<LOGJSONPart> ORDERS[] = {
    {LOGJSON_TIME, LOGJSON_LEVEL, LOGJSON_LOGGER, LOGJSON_THREAD, LOGJSON_PROCESS, LOGJSON_MESSAGE, LOGJSON_NESTED,
     LOGJSON_CONTEXT, LOGJSON_FIELDS, LOGJSON_PLACE, LOGJSON_ERROR},
    {LOGJSON_TIME, LOGJSON_LEVEL, LOGJSON_MESSAGE, LOGJSON_VERSION, LOGJSON_LOGGER, LOGJSON_THREAD, LOGJSON_PROCESS,
     LOGJSON_NESTED, LOGJSON_PLACE, LOGJSON_CONTEXT, LOGJSON_FIELDS, LOGJSON_ERROR},
    {LOGJSON_TIME, LOGJSON_LEVEL, LOGJSON_MESSAGE, LOGJSON_LOGGER, LOGJSON_THREAD, LOGJSON_PROCESS, LOGJSON_NESTED,
     LOGJSON_PLACE, LOGJSON_CONTEXT, LOGJSON_FIELDS, LOGJSON_ERROR},
};

void report(const char* operation, const std::string& value, const char* known) {
  LOGLogLog::error("LOGJSONLayout::" + I18NString(operation) + " -- [" + I18NString(std::string_view(value)) +
                   "] is not understood. Known are " + known + ".");
}

// Which of `known` the text is, in any case; as many as there are when it is none.
template <std::size_t count>
std::size_t indexOf(const I18NString& text, const char* const (&known)[count]) {
  std::size_t index = 0;
  while (index < count && !vrkEqualIgnoringCase(text, known[index])) ++index;
  return index;
}

// What is between commas and blanks.
std::vector<std::string> wordsOf(const I18NString& list) {
  const std::string text = list.toUtf8();
  std::vector<std::string> words;
  for (std::size_t begin = 0; (begin = text.find_first_not_of(", \t\n", begin)) != text.npos;) {
    const std::size_t end = std::min(text.find_first_of(", \t\n", begin), text.size());
    words.push_back(text.substr(begin, end - begin));
    begin = end;
  }
  return words;
}

LOGJSONPart partOf(std::string_view word, LOGJSONPart end) {
  for (int part = 0; part < end; ++part) {
    if (!word.empty() && vrkEqualIgnoringCase(I18NString(word), NAMES[part].part))
      return static_cast<LOGJSONPart>(part);
  }
  return LOGJSON_PARTS;
}

std::size_t underscoresOf(std::string_view name) {
  std::size_t count = 0;
  while (count < name.size() && name[count] == '_') ++count;
  return count;
}

}  // namespace

void LOGJSONSettings::setPreset(const I18NString& name) {
  const std::size_t index = indexOf(name, {"plain", "ecs", "gcp"});
  if (index == 3) return report("setPreset", name.toUtf8(), "plain, ecs and gcp");
  preset = static_cast<Preset>(index);
}

void LOGJSONSettings::setTimeFormat(const I18NString& name) {
  const std::size_t index = indexOf(name, {"iso", "epoch", "millis"});
  if (index == 3) return report("setTimeFormat", name.toUtf8(), "iso, epoch and millis");
  timeFormat = static_cast<TimeFormat>(index);
}

void LOGJSONSettings::setParts(const I18NString& list) {
  unsigned chosen = 0;
  for (const std::string& word : wordsOf(list)) {
    const LOGJSONPart part = partOf(word, LOGJSON_FILE);
    if (part == LOGJSON_PARTS) {
      report("setFields", word,
             "time, level, logger, thread, process, message, nested, context, fields, place and error");
    } else {
      chosen |= 1U << part;
    }
  }
  if (chosen != 0) parts = chosen;
}

void LOGJSONSettings::setNames(const I18NString& list) {
  for (const std::string& word : wordsOf(list)) {
    const std::size_t equals = std::min(word.find('='), word.size());
    const LOGJSONPart part = partOf(std::string_view(word).substr(0, equals), LOGJSON_VERSION);
    if (part == LOGJSON_PARTS || part == LOGJSON_FIELDS || equals + 1 >= word.size()) {
      report("setNames", word,
             "time=, level=, logger=, thread=, process=, message=, nested=, context=, place=, error=, "
             "file=, line= and function=, each with a name behind");
    } else {
      names[static_cast<std::size_t>(part)] = word.substr(equals + 1);
    }
  }
}

LOGJSONForm::LOGJSONForm(const LOGJSONSettings& settings_) : settings(settings_) {
  for (const LOGJSONPart part : ORDERS[settings.preset]) {
    if (part <= LOGJSON_ERROR && (settings.parts >> part & 1) == 0) continue;
    order.push_back(part);
    takeName(part);
    if (part == LOGJSON_PLACE && keys[part].empty()) {
      for (const LOGJSONPart each : {LOGJSON_FILE, LOGJSON_LINE, LOGJSON_FUNCTION}) takeName(each);
    }
    if (part == LOGJSON_ERROR) takeName(LOGJSON_SUMMARY);
  }
}

void LOGJSONForm::takeName(LOGJSONPart part) {
  const char* const usual = NAMES[part].of[settings.preset];
  if (*usual == '\0') return;
  std::string name = settings.names[part].empty() ? usual : settings.names[part];
  const std::size_t underscores = underscoresOf(name);
  const auto isSame = [&](const Taken& taken) {
    return taken.underscores == underscores && name.compare(underscores, name.npos, taken.bare) == 0;
  };
  if (std::any_of(m_taken.begin(), m_taken.end(), isSame)) {
    report("setNames", name, "as many names as there are parts; this one gets underscores in front");
    name.insert(0, underscoresFor(name), '_');
  }
  I18NUtf8Buffer key;
  key.appendChecked(",\"");
  LOGEscape::appendJson(key, name);
  key.appendChecked("\":");
  keys[part] = key.view();
  m_taken.push_back({name.substr(underscoresOf(name)), underscoresOf(name)});
}

// More than any of the layout's names has that is the same behind its underscores. So a field gets a name that none of
// them has, and two fields never get the same.
std::size_t LOGJSONForm::underscoresFor(std::string_view name) const {
  name.remove_prefix(underscoresOf(name));
  std::size_t needed = 0;
  for (const Taken& taken : m_taken) {
    if (name.size() == taken.bare.size() && name == taken.bare) needed = std::max(needed, taken.underscores + 1);
  }
  return needed;
}
