// What LOGJSONLayout writes, made ready once when it is set.

#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "log4vrk/layouts/LOGTimeZone.h"
#include "log4vrk/platform/I18NString.h"

/// What a name can be for. Those up to ERROR can be left out.
enum LOGJSONPart {
  LOGJSON_TIME,
  LOGJSON_LEVEL,
  LOGJSON_LOGGER,
  LOGJSON_THREAD,
  LOGJSON_PROCESS,
  LOGJSON_MESSAGE,
  LOGJSON_NESTED,
  LOGJSON_CONTEXT,
  LOGJSON_FIELDS,
  LOGJSON_PLACE,
  LOGJSON_ERROR,
  LOGJSON_FILE,
  LOGJSON_LINE,
  LOGJSON_FUNCTION,
  LOGJSON_VERSION,  // of the schema
  LOGJSON_SUMMARY,  // the first line of an error
  LOGJSON_PARTS
};

/// The settings of a layout. Each function reports what it does not understand, and leaves that as it was.
///
/// Thread safety: as a plain struct.
struct LOGJSONSettings {
  enum Preset { PLAIN, ECS, GCP };
  enum TimeFormat { ISO, EPOCH, MILLIS };

  void setPreset(const I18NString& name);
  void setTimeFormat(const I18NString& name);
  void setParts(const I18NString& list);
  void setNames(const I18NString& list);

  Preset preset = PLAIN;
  TimeFormat timeFormat = ISO;
  LOGTimeZone zone;
  bool hasZone = false;
  unsigned parts = (1U << (LOGJSON_ERROR + 1)) - 1;  // a bit for each
  std::array<std::string, LOGJSON_PARTS> names;      // empty: that of the preset
};

/// Thread safety: immutable.
struct LOGJSONForm {
  explicit LOGJSONForm(const LOGJSONSettings& settings_);

  bool isUtc() const { return !settings.hasZone && settings.preset != LOGJSONSettings::PLAIN; }
  /// How many underscores a field of this name needs in front, so that it is none of the layout's own.
  std::size_t underscoresFor(std::string_view name) const;

  const LOGJSONSettings settings;
  std::vector<LOGJSONPart> order;
  /// A comma, the name in quotes, a colon; empty for what has no name of its own.
  std::array<std::string, LOGJSON_PARTS> keys;

 private:
  void takeName(LOGJSONPart part);

  struct Taken {
    std::string bare;  // without the underscores in front
    std::size_t underscores;
  };
  std::vector<Taken> m_taken;  // the names at the outermost level
};
