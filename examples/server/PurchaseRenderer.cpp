// libPurchaseRenderer.so: renders a purchase as fields that the auditor's programs read.

#include "examples/server/Order.h"
#include "log4vrk/core/LOGObjectRenderer.h"

namespace {

class PurchaseRenderer : public LOGObjectRenderer {
 public:
  PurchaseRenderer() { instance("PurchaseRenderer"); }

  I18NString* doRender(LOGObject* object) override {
    const Order& order = static_cast<const Purchase&>(*object).order();
    auto* const text = new I18NString("order=");
    *text += order.number.c_str();
    *text += " customer=";
    *text += order.customer.c_str();
    *text += " article=";
    *text += order.article.c_str();
    *text += " quantity=";
    *text += order.quantity;
    return text;
  }
};

}  // namespace

extern "C" LOG4VRK_EXPORT LOGObjectRenderer* getRenderer() { return new PurchaseRenderer; }
