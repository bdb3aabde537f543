#include "log4vrk/testing/LOGCapture.h"

#include <condition_variable>
#include <mutex>
#include <utility>

#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGManager.h"
#include "log4vrk/core/LOGSourceLocation.h"
#include "log4vrk/core/internal/LOGAppenderBundle.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGEventFields.h"

namespace {

LOGCapturedEvent valuesOf(LOGLoggingEvent& event) {
  LOGCapturedEvent values;
  if (const LOGLevel* const level = event.getLevel()) {
    values.level = level->toString().toUtf8();
    values.rank = level->toInt();
  }
  values.logger = event.getLoggerNameUtf8();
  values.message = event.getRenderedMessageUtf8();
  values.thread = event.getThreadName().toUtf8();
  values.nested = event.getNDC().toUtf8();
  const auto addTo = [](std::map<std::string, std::string>& all) {
    return [&all](const LOGFields::Field& field) {
      I18NUtf8Buffer text;
      field.appendValue(text);
      all[std::string(field.name)] = text.view();
    };
  };
  const LOGEventFields fields(event);
  fields.eachOfContext(addTo(values.context));
  fields.eachOwn(addTo(values.fields));
  values.throwable = event.getThrowableStrRep().toUtf8();
  if (const LOGSourceLocation* const place = event.getSourceLocation()) {
    values.file = place->file;
    values.function = place->function;
    values.line = place->line;
  }
  values.seconds = event.getTimeStamp();
  values.nanoseconds = event.getTimeStampNanos();
  return values;
}

}  // namespace

struct LOGCapture::Store {
  void add(LOGCapturedEvent&& event) {
    const std::lock_guard<std::mutex> lock(mutex);
    events.push_back(std::move(event));
    changed.notify_all();
  }

  std::mutex mutex;  // of the events; nothing else is locked while it is held
  std::condition_variable changed;
  std::vector<LOGCapturedEvent> events;
};

// Lists of appenders share it, so that it outlives a capture that ends while another thread delivers, or inside a log
// call. It is never closed, because a test may look at what comes after a shutdown.
class LOGCapture::Appender : public LOGAppenderSkeleton {
 public:
  explicit Appender(std::shared_ptr<Store> store) : m_store(std::move(store)) { instance("LOGCapture"); }

  void append(LOGLoggingEvent* event) override {
    constexpr const char* FAILED = "LOGCapture::append -- an event is left out";
    logContainAll({FAILED, FAILED, FAILED}, [&] { m_store->add(valuesOf(*event)); });
  }

  // Several captures may be on one logger, and are told apart.
  bool operator==(const LOGObject& other) const override { return this == &other; }
  bool operator!=(const LOGObject& other) const override { return this != &other; }

 private:
  const std::shared_ptr<Store> m_store;
};

LOGCapture::LOGCapture(const I18NString& loggerName) : LOGCapture(loggerName, LOGCaptureOptions()) {}

LOGCapture::LOGCapture(const I18NString& loggerName, const LOGCaptureOptions& options)
    : LOGCapture(*LOGManager::getLogger(loggerName), options) {}

LOGCapture::LOGCapture(LOGAppenderAttachable& queue)
    : m_store(std::make_shared<Store>()),
      m_bundle(LOGAppenderBundle::make(std::make_unique<Appender>(m_store))),
      m_place(queue) {
  m_place.addAppender(m_bundle->appender());
}

LOGCapture::LOGCapture(LOGLogger& logger, const LOGCaptureOptions& options)
    : LOGCapture(static_cast<LOGAppenderAttachable&>(logger)) {
  m_logger = &logger;
  m_additivityBefore = logger.getAdditivity();
  if (options.ancestors == LOGCaptureOptions::LEFT_OUT) {
    logger.setAdditivity(0);
    m_hasChangedAdditivity = true;
  }
  if (options.level != nullptr) {
    m_levelBefore = logger.getLevel();
    // The name tells it from an equal level that a document sets meanwhile.
    LOGLevel level(options.level->toInt(), (options.level->toString().toUtf8() + " (captured)").c_str(),
                   options.level->getSyslogEquivalent());
    logger.setLevel(&level);
    m_levelMeanwhile = logger.getLevel();
  }
}

LOGCapture::~LOGCapture() {
  constexpr const char* FAILED = "LOGCapture -- what it has changed could not be given back";
  logContainAll({FAILED, FAILED, FAILED}, [&] {
    if (m_levelMeanwhile != nullptr && m_logger->getLevel() == m_levelMeanwhile) m_logger->setLevel(m_levelBefore);
    // A document that has removed the capture has set the additivity, too.
    if (m_hasChangedAdditivity && isAttached()) m_logger->setAdditivity(m_additivityBefore);
    m_place.removeAppender(m_bundle->appender());
  });
}

std::vector<LOGCapturedEvent> LOGCapture::events() const {
  const std::lock_guard<std::mutex> lock(m_store->mutex);
  return m_store->events;
}

void LOGCapture::clear() {
  const std::lock_guard<std::mutex> lock(m_store->mutex);
  m_store->events.clear();
}

bool LOGCapture::waitFor(std::size_t count, std::chrono::milliseconds limit) const {
  std::unique_lock<std::mutex> lock(m_store->mutex);
  return m_store->changed.wait_for(lock, limit, [&] { return m_store->events.size() >= count; });
}

bool LOGCapture::isAttached() const { return m_place.isAttached(m_bundle->appender()); }
