// main() of every test program: as gtest's own, but in the user's locale, as servers run.

#include <gtest/gtest.h>

#include <clocale>

int main(int argc, char** argv) {
  std::setlocale(LC_ALL, "");
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
