#include "video/color_tables.h"

#include <gtest/gtest.h>

namespace korvalin {
namespace {

TEST(ColorTablesTest, StudioRangeEnds) {
  const ColorTables tables;
  EXPECT_EQ(tables.ChromaToStudio(0), 16);
  EXPECT_EQ(tables.ChromaToStudio(128), 128);
  EXPECT_EQ(tables.ChromaToStudio(255), 240);
  EXPECT_EQ(tables.LumaToStudio(0), 16);
  EXPECT_EQ(tables.LumaToStudio(255), 235);
}

TEST(ColorTablesTest, LumaWeightsOfWhiteAddUpTo255) {
  const ColorTables tables;
  EXPECT_EQ(tables.RedToLuma(255), 76);     // 76.2195 + 0.5
  EXPECT_EQ(tables.GreenToLuma(255), 150);  // 149.583 + 0.5
  EXPECT_EQ(tables.BlueToLuma(255), 29);    // 29.1975 + 0.5
  EXPECT_EQ(tables.RedToLuma(255) + tables.GreenToLuma(255) + tables.BlueToLuma(255), 255);
}

TEST(ColorTablesTest, SaturationLimitsEveryIndex) {
  const ColorTables tables;
  for (int32_t i = ColorTables::kSaturationMin; i <= ColorTables::kSaturationMax; ++i) {
    EXPECT_EQ(tables.Saturate(i), i < 0 ? 0 : (i > 255 ? 255 : i)) << i;
    EXPECT_EQ(tables.SaturationOrigin()[i], tables.Saturate(i));
  }
}

}  // namespace
}  // namespace korvalin
