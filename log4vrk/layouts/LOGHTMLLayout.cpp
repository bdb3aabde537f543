#include "log4vrk/layouts/LOGHTMLLayout.h"

#include <memory>
#include <utility>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/layouts/LOGDate.h"
#include "log4vrk/platform/VRKThrowable.h"

namespace {

void appendEscaped(I18NString& out, const I18NString& text) {
  for (const char16_t unit : text.view()) {
    if (unit == u'<') {
      out += "&lt;";
    } else if (unit == u'>') {
      out += "&gt;";
    } else {
      out += unit;
    }
  }
}

// `kind` is "thread" or "category" and ends the tool tip. The name in the tool tip is not escaped: meant so, existing
// pages have it as it is.
void appendNameCell(I18NString& text, const I18NString& name, const char* kind) {
  text += "<td title=\"";
  text += name;
  text += ' ';
  text += kind;
  text += "\">";
  appendEscaped(text, name);
  text += "</td>\n";
}

// A level named DEBUG is green whatever its rank. The strong levels begin with WARN, whose rank is 30000.
void appendLevelCell(I18NString& text, const LOGLevel& level) {
  const I18NString& name = level.toString();
  text += "<td title=\"Level\">";
  if (name == "DEBUG") {
    text += "<font color=\"#339933\">";
    text += name;
    text += "</font>";
  } else if (level.toInt() > 29999) {
    text += "<font color=\"#993300\"><strong>";
    text += name;
    text += "</strong></font>";
  } else {
    text += name;
  }
  text += "</td>\n";
}

void appendLocationCell(I18NString& text, const LOGLocationInfo& location) {
  text += "<td>";
  appendEscaped(text, location.getFileName());
  text += ':';
  text += location.getLineNumber();
  text += "</td>\n";
}

void appendMessageCell(I18NString& text, LOGLoggingEvent& event) {
  text += "<td title=\"Message\">";
  const std::unique_ptr<const I18NString> message(event.getRenderedMessage());
  if (message != nullptr) {
    appendEscaped(text, *message);
  } else {
    LOGLogLog::debug("LOGHTMLLayout::format ---- getRenderedMessage returned NULL\n");
  }
  text += "</td>\n";
}

}  // namespace

const I18NString& LOGHTMLLayout::TITLE_OPTION = vrkImmortal<I18NString>("Title");
const I18NString& LOGHTMLLayout::LOCATION_INFO_OPTION = vrkImmortal<I18NString>("LocationInfo");

LOGHTMLLayout::LOGHTMLLayout() : m_title("Log4J Log Messages") { instance("LOGHTMLLayout"); }

LOGHTMLLayout::~LOGHTMLLayout() = default;

void LOGHTMLLayout::activateOptions() {}

// Not analysed, like getHeader(): the caller holds the lock, which the analysis cannot see through a virtual call.
I18NString& LOGHTMLLayout::format(LOGLoggingEvent* event) VRK_NO_THREAD_SAFETY_ANALYSIS {
  I18NString text = takeSpare();
  if (event == nullptr) return setResult(std::move(text));
  const LOGLevel* logLevel = event->getLevel();
  VRK_ASSERT(logLevel);

  text += "\n<tr>\n<td>";
  text += event->getTimeStamp() - LOGLoggingEvent::getStartTime();
  text += "</td>\n";
  appendNameCell(text, event->getThreadName(), "thread");
  appendLevelCell(text, *logLevel);
  appendNameCell(text, event->getLoggerName(), "category");
  if (m_locationInfo != 0) {
    if (const LOGLocationInfo* location = event->getLocationInformation()) appendLocationCell(text, *location);
  }
  appendMessageCell(text, *event);
  text += "</tr>\n";

  // Six columns wide, with the location column and without it: meant so.
  if (const I18NString& context = event->getNDC(); !context.isEmpty()) {
    text += "<tr><td bgcolor=\"#EEEEEE\" style=\"font-size : xx-small;\" colspan=\"6\"";
    text += " title=\"Nested Diagnostic Context\">NDC: ";
    appendEscaped(text, context);
    text += "</td></tr>\n";
  }
  if (const I18NString& throwable = event->getThrowableStrRep(); !throwable.isEmpty()) {
    text += "<tr><td bgcolor=\"#993300\" style=\"color:White; font-size : xx-small;\" colspan=\"6\">";
    appendThrowableAsHTML(throwable, text);
    text += "</td></tr>\n";
  }
  return setResult(std::move(text));
}

I18NString& LOGHTMLLayout::getContentType() { return setResult("text/html"); }

I18NString& LOGHTMLLayout::getHeader() VRK_NO_THREAD_SAFETY_ANALYSIS {
  m_page =
      "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\" \"http://www.w3.org/TR/html4/loose.dtd\">\n"
      "<html>\n"
      "<head>\n"
      "<title>";
  m_page += m_title;  // not escaped: meant so, like the tool tips
  m_page +=
      "</title>\n"
      "<style type=\"text/css\">\n"
      "<!--\n"
      "body, table {font-family: arial,sans-serif; font-size: x-small;}\n"
      "th {background: #336699; color: #FFFFFF; text-align: left;}\n"
      "-->\n"
      "</style>\n"
      "</head>\n"
      "<body bgcolor=\"#FFFFFF\" topmargin=\"6\" leftmargin=\"6\">\n"
      "<hr size=\"1\" noshade>\n"
      "Log session start time ";
  m_page += LOGDate().toString();
  m_page +=
      "<br>\n"
      "<br>\n"
      "<table cellspacing=\"0\" cellpadding=\"4\" border=\"1\" bordercolor=\"#224466\" width=\"100%\">\n"
      "<tr>\n"
      "<th>Time</th>\n"
      "<th>Thread</th>\n"
      "<th>Level</th>\n"
      "<th>Category</th>\n";
  if (m_locationInfo != 0) m_page += "<th>File:Line</th>\n";
  m_page +=
      "<th>Message</th>\n"
      "</tr>\n";
  return m_page;
}

I18NString& LOGHTMLLayout::getFooter() {
  m_page = "</table>\n<br>\n</body></html>";
  return m_page;
}

int LOGHTMLLayout::ignoresThrowable() { return 0; }

void LOGHTMLLayout::setLocationInfo(int on) {
  const LOGGuard guard(*this);
  m_locationInfo = on;
}

int LOGHTMLLayout::getLocationInfo() const {
  const LOGGuard guard(*this);
  return m_locationInfo;
}

void LOGHTMLLayout::setTitle(const I18NString& title) {
  const LOGGuard guard(*this);
  m_title = title;
}

I18NString LOGHTMLLayout::getTitle() const {
  const LOGGuard guard(*this);
  return m_title;
}

I18NString& LOGHTMLLayout::escapeHTMLTags(const I18NString& text) {
  // The const is cast away on purpose: callers rely on getting an empty text back as the same object.
  if (text.isEmpty()) return const_cast<I18NString&>(text);
  I18NString escaped;  // not built in the page buffer, which `text` may be
  appendEscaped(escaped, text);
  m_page = std::move(escaped);
  return m_page;
}

// Empty on purpose: existing pages show that there was a throwable, but not its text.
void LOGHTMLLayout::appendThrowableAsHTML(const I18NString& /*throwableText*/, I18NString& /*out*/) {}
