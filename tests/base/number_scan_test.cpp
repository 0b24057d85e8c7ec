#include "base/number_scan.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdlib>

namespace korvalin {
namespace {

TEST(NumberScan, FloatsReadAsStrtofReadsThemInTheCLocale) {
  for (const char* text : {"23.976", "  -1.5e3x", "+.5", "7:3", "1e-50", "\t42", "0x10"}) {
    float value = -99;
    char* end = nullptr;
    const float expected = std::strtof(text, &end);
    const char* stop = nullptr;
    ASSERT_TRUE(ScanFloat(text, &value, &stop)) << text;
    if (std::string_view(text) != "0x10") {  // hexadecimal floats are not subtitle syntax
      EXPECT_EQ(value, expected) << text;
      EXPECT_EQ(stop, end) << text;
    }
  }
  float value = 0;
  EXPECT_FALSE(ScanFloat("x1", &value));
  EXPECT_FALSE(ScanFloat("", &value));
  EXPECT_FALSE(ScanFloat(nullptr, &value));
  ASSERT_TRUE(ScanFloat("1e999", &value));
  EXPECT_TRUE(std::isinf(value));
}

TEST(NumberScan, FloatsIgnoreTheProgramsLocale) {
  const char* previous = std::setlocale(LC_NUMERIC, nullptr);
  const std::string saved = previous ? previous : "C";
  if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8") && !std::setlocale(LC_NUMERIC, "fr_FR.UTF-8")) {
    GTEST_SKIP() << "no locale with a decimal comma installed";
  }
  float value = 0;
  EXPECT_TRUE(ScanFloat("23.976", &value));
  std::setlocale(LC_NUMERIC, saved.c_str());
  EXPECT_FLOAT_EQ(value, 23.976f);
}

TEST(NumberScan, IntegersClampInsteadOfOverflowing) {
  int32_t value = 0;
  ASSERT_TRUE(ScanInt(" 99999999999", &value));
  EXPECT_EQ(value, INT32_MAX);
  ASSERT_TRUE(ScanInt("-99999999999", &value));
  EXPECT_EQ(value, INT32_MIN);
  EXPECT_FALSE(ScanInt("abc", &value));
}

}  // namespace
}  // namespace korvalin
