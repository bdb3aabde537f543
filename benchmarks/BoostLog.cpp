#include "benchmarks/BoostLog.h"

#ifdef LOG4VRK_PEER_BOOST

#include <boost/log/attributes/clock.hpp>
#include <boost/log/attributes/current_thread_id.hpp>
#include <boost/log/core.hpp>
#include <boost/log/expressions.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/log/sinks/text_ostream_backend.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/log/sources/severity_channel_logger.hpp>
#include <boost/log/support/date_time.hpp>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <fstream>

#include "benchmarks/Line.h"

namespace bench {

namespace {

enum Severity { INFO };

std::ostream& operator<<(std::ostream& out, Severity /*severity*/) { return out << "INFO "; }

using Sink = boost::log::sinks::synchronous_sink<boost::log::sinks::text_ostream_backend>;

}  // namespace

struct BoostLog::State {
  boost::shared_ptr<Sink> sink = boost::make_shared<Sink>();
  boost::log::sources::severity_channel_logger_mt<Severity, std::string> logger{boost::log::keywords::channel =
                                                                                    std::string(LOGGER)};
};

BoostLog::BoostLog(const std::string& path) : m_state(std::make_unique<State>()) {
  namespace expressions = boost::log::expressions;
  m_state->sink->locked_backend()->add_stream(boost::make_shared<std::ofstream>(path));
  m_state->sink->locked_backend()->auto_flush(true);
  m_state->sink->set_formatter(
      expressions::stream << expressions::format_date_time<boost::posix_time::ptime>("TimeStamp",
                                                                                     "%Y-%m-%d %H:%M:%S.%f")
                          << " [" << expressions::attr<boost::log::attributes::current_thread_id::value_type>("Thread")
                          << "] " << expressions::attr<Severity>("Severity") << ' '
                          << expressions::attr<std::string>("Channel") << " - " << expressions::smessage);
  boost::log::core::get()->add_global_attribute("TimeStamp", boost::log::attributes::local_clock());
  boost::log::core::get()->add_global_attribute("Thread", boost::log::attributes::current_thread_id());
  boost::log::core::get()->add_sink(m_state->sink);
}

BoostLog::~BoostLog() {
  if (m_state) boost::log::core::get()->remove_sink(m_state->sink);
}

BoostLog::BoostLog(BoostLog&&) noexcept = default;

void BoostLog::log(long i) {
  BOOST_LOG_SEV(m_state->logger, INFO) << "request " << number(i) << " from " << HOST << " ok";
}

}  // namespace bench

#endif
