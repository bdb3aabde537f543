// Tests what an OrderDesk logs.

#include <gmock/gmock.h>

#include "examples/testing/OrderDesk.h"
#include "log4vrk/testing/LOGCapture.h"
#include "log4vrk/testing/matchers.h"

using namespace LOGMatchers;
using namespace testing;

TEST(OrderDesk, WarnsAboutAnOrderThatItCannotTake) {
  LOGCapture logs("shop.orders");
  OrderDesk desk(3);
  desk.take("17", 4);
  EXPECT_THAT(logs.events(), Contains(AllOf(Logged(LOGLevel::WARN_OBJ, HasSubstr("3 left")), HasContext("order", "17"),
                                            HasField("wanted", "4"))));
}

// Whatever is configured: the level is INFO here, and nothing goes to the appenders of "shop" and the root.
TEST(OrderDesk, SaysOneThingAboutAnOrderThatItTakes) {
  LOGCapture logs("shop.orders", {LOGLevel::INFO_OBJ, LOGCaptureOptions::LEFT_OUT});
  OrderDesk desk(3);
  desk.take("17", 2);
  EXPECT_THAT(logs.events(), ElementsAre(Logged(LOGLevel::INFO_OBJ, "taken")));
}

// A capture gets what all loggers below its own log, and events of all threads. Here the thread may be slower.
TEST(OrderDesk, SaysSoWhenThereIsStockAgain) {
  LOGCapture logs("shop");
  OrderDesk desk(0);
  std::thread refilling = desk.refill(5);
  EXPECT_TRUE(logs.waitFor(1, std::chrono::seconds(10)));
  EXPECT_THAT(logs.events(), ElementsAre(AllOf(HasLogger("shop.stock"), HasMessage(StartsWith("refilled")))));
  refilling.join();
}
