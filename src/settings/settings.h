#pragma once

#include <cstdint>
#include <string_view>

#include "base/fixed_text.h"
#include "settings/font_style.h"

namespace korvalin {

namespace platform {
class RegistryStore;
}

// The key under which every setting is stored.
inline constexpr std::string_view kSettingsKeyPath = "HKEY_LOCAL_MACHINE\\Software\\Vornik\\Korvalin";

struct SubtitleSettings {
  FontStyle style = FontStyle::SubtitleDefaults();
  FixedText<1024> SubPath{"~/.local/share/korvalin/subtitles;."};
  FixedText<128> SubLang{"English"};
  int32_t SubDelay = 0;    // ms; positive shows subtitles later
  int32_t SubSpeed = 1000; // thousandths; 1000 = normal
};

struct OsdSettings {
  FontStyle style = FontStyle::ClockDefaults();
  int32_t OSDVideoTime = 0;  // 0 off, 1 elapsed, 2 remaining
  int32_t OSDWorldTime = 0;  // show the time of day
};

// Every option of the system in one flat record, read from and written to the registry store
// as a whole. A value that is missing or out of range reads as its default.
class Settings {
 public:
  struct DefaultsOnly {};

  Settings();  // defaults, then LoadSettings() from the process's store
  explicit Settings(DefaultsOnly) {}
  explicit Settings(platform::RegistryStore& store);  // defaults, then LoadSettings(store)
  virtual ~Settings() = default;
  Settings(const Settings&) = default;
  Settings& operator=(const Settings&) = default;

  int LoadSettings();
  int LoadSettings(platform::RegistryStore& store);
  int SaveSettings() const;
  int SaveSettings(platform::RegistryStore& store) const;

  // Frame time (ms) scaled by SubSpeed and shifted by SubDelay: the subtitle lookup time.
  int32_t SubtitleTime(int32_t frameTimeMs) const;
  // The source frame duration (100 ns) that plays at 25 fps for this duration, 0 for none.
  int32_t SourceFrameDuration(int32_t frameDuration) const;

  int32_t LoadMode = 0;     // 0 Always, 1 Never, 2 Only if necessary, 3 Force
  int32_t SysTrayIcon = 1;
  int32_t bOverscan = 0;
  int32_t Overscan = 8;     // percent
  int32_t bFill = 0;
  int32_t Fill = 75;        // percent of screen
  int32_t bFillH = 0;
  int32_t FillH = 100;      // percent of screen
  int32_t bFill2 = 1;
  int32_t TV = 0;           // 0 4:3, 1 16:9
  int32_t Flip = 0;         // bit 0 flips the input, bit 1 the output
  int32_t YShift = 0;
  int32_t FPSConv = 0;
  int32_t Economic = 0;
  int32_t Overlay = 0;
  int32_t AspectComp = 0;   // 0 none, 1 PAL, 2 NTSC, 3 abstract square
  FixedText<128> AspectComp2{"4:3"};
  float aspectRatio = 4.0f / 3.0f;  // AspectComp2 parsed; 0 when invalid; not stored
  SubtitleSettings Sub;
  OsdSettings OSD;
};

// "W:H" as width / height; 0 unless both numbers are found and positive.
float ParseAspectRatio(std::string_view text);

}  // namespace korvalin
