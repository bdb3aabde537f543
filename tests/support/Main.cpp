// main() of every test program: gtest's own, but in the locale of the environment, as servers run.

#include <gtest/gtest.h>

#include <clocale>

int main(int argc, char** argv) {
  std::setlocale(LC_ALL, "");
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
