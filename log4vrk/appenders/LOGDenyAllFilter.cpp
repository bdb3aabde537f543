#include "log4vrk/appenders/LOGDenyAllFilter.h"

#include "log4vrk/platform/VRKThrowable.h"

LOGDenyAllFilter::LOGDenyAllFilter() { instance("LOGDenyAllFilter"); }
LOGDenyAllFilter::~LOGDenyAllFilter() = default;

int LOGDenyAllFilter::decide(LOGLoggingEvent*) { return m_DENY; }

LOGDenyAllFilter* LOGDenyAllFilter::clone() const { return vrkNew<LOGDenyAllFilter>(VRK_HERE, *this); }

VRKList<I18NString>* LOGDenyAllFilter::getOptionStrings() const { return vrkNew<VRKList<I18NString>>(VRK_HERE); }
