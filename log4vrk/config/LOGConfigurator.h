// The interface of configurators.

#pragma once

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

class LOGLoggerRepository;

class LOG4VRK_EXPORT LOGConfigurator {
 public:
  static const I18NString& m_INHERITED;  // "inherited"

  virtual ~LOGConfigurator();

  /// 1 when the file was read and applied, else 0.
  virtual int doConfigure(const I18NString& fileName, LOGLoggerRepository* repository) = 0;
};
