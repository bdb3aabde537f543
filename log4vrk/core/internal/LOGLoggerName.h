// The name of a logger, in both encodings.

#pragma once

#include <string>

#include "log4vrk/platform/I18NString.h"

/// Shared by a logger and the copies of its events, which may outlive it. Immutable.
struct LOGLoggerName {
  explicit LOGLoggerName(const I18NString& name) : text(name), utf8(name.toUtf8()) {}

  const I18NString text;
  const std::string utf8;
};
