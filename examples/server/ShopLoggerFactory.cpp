// libShopLoggerFactory.so: makes the loggers that the document asks for with class="ShopLogger".

#include "examples/server/ShopLogger.h"
#include "log4vrk/core/LOGLoggerFactory.h"

namespace {

class ShopLoggerFactory : public LOGLoggerFactory {
 public:
  LOGLogger* makeNewLoggerInstance(const I18NString& name) override { return new ShopLogger(name); }
};

}  // namespace

extern "C" LOG4VRK_EXPORT LOGLoggerFactory* getLoggerFactory() {
  static ShopLoggerFactory factory;
  return &factory;
}
