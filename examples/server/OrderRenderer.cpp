// libOrderRenderer.so: renders the steps of an order for people.

#include "examples/server/Order.h"
#include "log4vrk/core/LOGObjectRenderer.h"

namespace {

class OrderRenderer : public LOGObjectRenderer {
 public:
  OrderRenderer() { instance("OrderRenderer"); }

  I18NString* doRender(LOGObject* object) override {
    const auto& step = static_cast<const OrderStep&>(*object);
    const Order& order = step.order();
    auto* const text = new I18NString(step.what().c_str());
    *text += " order ";
    *text += order.number.c_str();
    *text += " (";
    *text += order.quantity;
    *text += " x ";
    *text += order.article.c_str();
    *text += " for ";
    *text += order.customer.c_str();
    *text += ')';
    return text;
  }
};

}  // namespace

extern "C" LOG4VRK_EXPORT LOGObjectRenderer* getRenderer() { return new OrderRenderer; }
