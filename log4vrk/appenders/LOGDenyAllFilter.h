// The filter that ends a chain.

#pragma once

#include "log4vrk/core/LOGFilter.h"
#include "log4vrk/platform/VRKList.h"

/// Drops every event that no filter before it has accepted. Without it such events are written.
///
/// Thread safety: without state of its own; see LOGFilter.
class LOG4VRK_EXPORT LOGDenyAllFilter : public LOGFilter {
 public:
  LOGDenyAllFilter();
  ~LOGDenyAllFilter() override;

  int decide(LOGLoggingEvent* event) override;
  LOGDenyAllFilter* clone() const override;

  /// Ignores everything: there are no options.
  void setOption(const I18NString&, const I18NString&) {}
  /// An empty list, new and owned by the caller.
  VRKList<I18NString>* getOptionStrings() const;
};
