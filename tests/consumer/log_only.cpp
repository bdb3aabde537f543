// A file that only logs: the small header is enough. Only compiled.

#include "log4vrk/log.h"

class Order : public LOGObject {};

void log(LOGLogger* logger, Order& order, const I18NString& text, const void* unknown) {
  logger->info("text");
  logger->warn(&order);
  if (logger->isInfoEnabled()) logger->info(text + 1);
  LOG4VRK_DEBUG(LOGManager::getLogger("shop"), "order " << order << ' ' << 17u << true << 'c' << std::string(3, '.'));
  LOG4VRK_WARN(logger, 1.5 << 1.5F << 1.5L << text << u"utf-16" << order.instanceOf());
  if (unknown == nullptr) LOG4VRK_LOG(logger, LOGLevel::FATAL_OBJ, "nothing");
}
