// An appender, a layout and a filter of a program's own, beside what its document configures.
//
//   cinema <cinema.xml>

#include <deque>
#include <iostream>
#include <string>

#include "examples/extending/Booking.h"
#include "log4vrk/log4vrk.h"

namespace {

// Keeps the last lines, and prints them when something goes wrong: what came before an error is often worth more than
// the error. append() runs under the appender's lock, so that it needs none of its own. The base has asked the
// threshold and the filters by then.
class FlightRecorder : public LOGAppenderSkeleton {
 public:
  FlightRecorder(const char* name, std::size_t lines) : m_lines(lines) {
    setName(name);  // an appender that equals one that is there is not attached
    instance("FlightRecorder");
  }

  void append(LOGLoggingEvent* event) override {
    m_last.push_back(lineOf(*event));
    if (m_last.size() > m_lines) m_last.pop_front();
    if (!event->getLevel()->isGreaterOrEqual(LOGLevel::ERROR_OBJ)) return;
    for (const std::string& line : m_last) std::cout << getName().toUtf8() << ": " << line;
    std::cout << std::flush;
    m_last.clear();
  }

  // May be called twice. Afterwards the base turns events away.
  void close() override {
    const LOGGuard guard(*this);
    m_last.clear();
    setClosed(1);
  }

 private:
  std::string lineOf(LOGLoggingEvent& event) const {
    LOGLayout* const layout = getLayout();
    if (layout == nullptr) return event.getLoggerNameUtf8() + " - " + event.getRenderedMessageUtf8() + "\n";
    const LOGGuard guard(*layout);  // until its text has been copied
    return layout->format(&event).toUtf8();
  }

  const std::size_t m_lines;
  std::deque<std::string> m_last;
};

// Names with values. A layout builds its text in what takeSpare() gives, and returns what setResult() makes of it.
class PairsLayout : public LOGLayout {
 public:
  PairsLayout() { instance("PairsLayout"); }

  I18NString& format(LOGLoggingEvent* event) override {
    I18NString text = takeSpare();
    if (event == nullptr) return setResult(std::move(text));
    text += "level=";
    text += event->getLevel()->toString();
    text += " hall=";
    text += event->getField("hall").c_str();
    text += " message=\"";
    text += event->getRenderedMessageUtf8().c_str();
    text += '"';
    text += lineSeparator();
    return setResult(std::move(text));
  }
};

// Passes on to the next filter what was logged for one hall, and drops everything else.
class HallFilter : public LOGFilter {
 public:
  explicit HallFilter(std::string hall) : m_hall(std::move(hall)) { instance("HallFilter"); }

  int decide(LOGLoggingEvent* event) override { return event->getField("hall") == m_hall ? m_NEUTRAL : m_DENY; }

 private:
  const std::string m_hall;
};

void runTheCinema() {
  auto& desk = dynamic_cast<BookingLogger&>(*LOGManager::getLogger("cinema.desk"));
  LOGLogger* const projector = LOGManager::getLogger("cinema.projector");
  desk.booked("Metropolis", 2);
  for (const int hall : {1, 2}) {
    LOG4VRK_CONTEXT("hall", hall);
    LOG4VRK_DEBUG(projector, "lamp on");
    if (hall == 2) LOG4VRK_ERROR(projector, "film torn");
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: cinema <cinema.xml>\n";
    return 2;
  }
  const std::string program(argv[0]);
  VRKConfigurationFactory::getInstance().addLibraryDirectory(program.substr(0, program.rfind('/')).c_str());
  if (LOG4VRKConfigurator::initialize(argv[1]) != 1) {
    std::cerr << LOG4VRKConfigurator::getProblems().toUtf8() << "cinema: " << argv[1] << " was not applied\n";
    return 1;
  }

  // The program's own, so that they have to live until shutdown() has returned.
  PairsLayout layout;
  HallFilter filter("2");
  FlightRecorder everything("everything", 3);
  FlightRecorder hall2("hall 2", 10);
  hall2.setLayout(&layout);
  hall2.addFilter(&filter);
  LOGLogger* const cinema = LOGManager::getLogger("cinema");
  cinema->addAppender(&everything);
  cinema->addAppender(&hall2);

  runTheCinema();
  LOG4VRKConfigurator::shutdown();
  cinema->removeAllAppenders();  // as they go with this block
}
