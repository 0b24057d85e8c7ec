#include <gtest/gtest.h>

#include <string_view>

#include "settings/font_style.h"
#include "settings/settings.h"

namespace korvalin {
namespace {

TEST(FontStyleTable, CharsetValueLooksNamesUpWithoutLetterCase) {
  const std::pair<std::string_view, int32_t> cases[] = {
      {"Western", 0},
      {"Hebrew", 177},
      {"Arabic", 178},
      {"Greek", 161},
      {"Turkish", 162},
      {"Baltic", 186},
      {"Central European", 238},
      {"Cyrillic", 204},
      {"cyrillic", 204},
      {"CYRILLIC", 204},
      {"Vietnamese", 163},
      {"OEM", 255},
      {"oem", 255},
      {"Mac", 77},
      {"Hangeul", 129},
      {"Klingon", 0},
      {"", 0},
      {"Cyrillic ", 0},
      {"Central", 0},
  };
  for (const auto& [name, number] : cases) {
    FontStyle style;
    style.Charset = name;
    EXPECT_EQ(style.CharsetValue(), number) << name;
  }
  EXPECT_EQ(CharsetTable().size(), 12u);
  EXPECT_EQ(CharsetTable().front().name, "Western");
  EXPECT_EQ(CharsetTable().back().name, "Hangeul");
}

TEST(FontStyleTable, ScaledSizeDrawsAtThreeQuartersOn16By9) {
  const std::pair<int32_t, int32_t> cases[] = {{16, 12}, {56, 42}, {36, 27}, {24, 18},
                                               {17, 13}, {18, 14}, {19, 14}, {55, 41}};
  for (const auto& [size, scaled] : cases) {
    FontStyle style;
    style.Size = size;
    EXPECT_EQ(style.ScaledSize(1), scaled) << size;
    EXPECT_EQ(style.ScaledSize(0), size) << size;
    EXPECT_EQ(style.ScaledSize(2), size) << size;  // only shape 1 scales
  }
}

TEST(FontStyleTable, StyleDefaults) {
  const FontStyle sub = FontStyle::SubtitleDefaults();
  const FontStyle osd = FontStyle::ClockDefaults();
  EXPECT_EQ(sub.Size, 36);
  EXPECT_EQ(sub.Weight, 500);
  EXPECT_EQ(sub.XPos, 50);
  EXPECT_EQ(sub.YPos, 8);
  EXPECT_EQ(osd.Size, 24);
  EXPECT_EQ(osd.Weight, 700);
  EXPECT_EQ(osd.XPos, 94);
  EXPECT_EQ(osd.YPos, 94);
  for (const FontStyle& s : {sub, osd}) {
    EXPECT_EQ(s.Face, "Arial");
    EXPECT_EQ(s.Charset, "Western");
    EXPECT_EQ(s.Color, 0xFFFFFFu);
    EXPECT_EQ(s.Transparent, 1);
  }
}

TEST(SettingsTable, ParseAspectRatio) {
  const std::pair<std::string_view, float> cases[] = {
      {"4:3", 4.0f / 3.0f},
      {"16:9", 16.0f / 9.0f},
      {"2.35:1", 2.35f},
      {"1:1", 1.0f},
      {" 4: 3", 4.0f / 3.0f},  // %f skips leading blanks
      {"4 :3", 0},             // but the colon must follow the number at once
      {"4:3junk", 4.0f / 3.0f},
      {"0:3", 0},
      {"4:0", 0},
      {"-4:3", 0},
      {"4:-3", 0},
      {"43", 0},
      {"4", 0},
      {"", 0},
      {":3", 0},
      {"4:", 0},
      {"a:b", 0},
      {"4/3", 0},
      {"1e39:1", 0},
      {"1:1e-39", 0},
  };
  for (const auto& [text, ratio] : cases) {
    EXPECT_FLOAT_EQ(ParseAspectRatio(text), ratio) << text;
  }
  EXPECT_NEAR(ParseAspectRatio("4:3"), 1.3333f, 1e-4f);
  EXPECT_NEAR(ParseAspectRatio("16:9"), 1.7778f, 1e-4f);
  // Only the text inside the view counts, not what follows it in memory.
  const std::string_view cut = std::string_view("16:9").substr(0, 3);
  EXPECT_EQ(ParseAspectRatio(cut), 0.0f);
}

TEST(SettingsTable, SubtitleTimeScalesThenShifts) {
  Settings s{Settings::DefaultsOnly{}};
  EXPECT_EQ(s.SubtitleTime(12345), 12345);
  s.Sub.SubDelay = 500;  // shows subtitles 500 ms later
  EXPECT_EQ(s.SubtitleTime(12345), 11845);
  s.Sub.SubDelay = -600000;
  EXPECT_EQ(s.SubtitleTime(0), 600000);
  s.Sub.SubDelay = 0;
  s.Sub.SubSpeed = 1001;
  EXPECT_EQ(s.SubtitleTime(1000000), 1001000);
  EXPECT_EQ(s.SubtitleTime(500), 501);  // 500.5 rounds away from zero
  EXPECT_EQ(s.SubtitleTime(-500), -501);
  s.Sub.SubSpeed = 1500;
  EXPECT_EQ(s.SubtitleTime(1), 2);
  EXPECT_EQ(s.SubtitleTime(-1), -2);
  s.Sub.SubSpeed = 1;
  EXPECT_EQ(s.SubtitleTime(1499), 1);
  EXPECT_EQ(s.SubtitleTime(499), 0);
  s.Sub.SubSpeed = 5000;
  s.Sub.SubDelay = 100;
  EXPECT_EQ(s.SubtitleTime(400000000), 2000000000 - 100);
}

TEST(SettingsTable, SourceFrameDurationFollowsFpsConv) {
  Settings s{Settings::DefaultsOnly{}};
  for (int32_t d : {416666, 417083, 400000, 333667}) EXPECT_EQ(s.SourceFrameDuration(d), 0);
  s.FPSConv = 1;
  EXPECT_EQ(s.SourceFrameDuration(416666), 416666);
  EXPECT_EQ(s.SourceFrameDuration(417083), 417083);
  EXPECT_EQ(s.SourceFrameDuration(400000), 0);
  EXPECT_EQ(s.SourceFrameDuration(333667), 0);
  EXPECT_EQ(s.SourceFrameDuration(408163), 408163);
  EXPECT_EQ(s.SourceFrameDuration(408162), 0);
  EXPECT_EQ(s.SourceFrameDuration(425531), 425531);
  EXPECT_EQ(s.SourceFrameDuration(425532), 0);
  s.FPSConv = 2;
  EXPECT_EQ(s.SourceFrameDuration(400000), 417083);
  EXPECT_EQ(s.SourceFrameDuration(0), 417083);
  s.FPSConv = 3;
  EXPECT_EQ(s.SourceFrameDuration(400000), 416666);
  s.FPSConv = 4;
  EXPECT_EQ(s.SourceFrameDuration(416666), 0);
}

}  // namespace
}  // namespace korvalin
