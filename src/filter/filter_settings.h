#pragma once

#include <cstddef>
#include <cstdint>

#include "base/dyn_string.h"
#include "base/ptr_array.h"
#include "host/guid.h"
#include "host/hresult.h"
#include "host/unknown.h"
#include "settings/settings.h"

namespace korvalin {

// How the user interface changes a playing filter: offered by a video filter only while it
// is in a graph. Every operation runs under the filter's frame lock, so none meets half a
// frame.
struct IFilterSettings : virtual host::IUnknown {
  static constexpr host::IID kIid = host::MakeGuid("43057812-553F-4BAD-876E-D7A55D131507");

  // Takes over the live part of the settings (flips, row shift, subtitle timing, language
  // and style, the clock); the rest reaches only filters made later.
  virtual host::HRESULT SetSettings(const Settings* settings) = 0;
  // The loaded file, its format name, its stream names (each ended by a zero byte, the list
  // by one more) and the chosen stream. Any pointer may be null; no buffer is written past
  // its size, and text that does not fit is cut (a stream name is left out whole).
  virtual host::HRESULT GetSubtitleInfo(char* file, std::size_t fileSize, char* format,
                                        std::size_t formatSize, char* languages,
                                        std::size_t languagesSize, int32_t* index) = 0;
  // Loads `file` preferring `language` (empty: the configured one); no file: no subtitles.
  // E_FAIL when the file does not load (the filter then shows none).
  virtual host::HRESULT SelectSubtitle(const char* file, const char* language) = 0;
  // 100-ns units: the input format's frame duration and the one measured on timed frames.
  virtual host::HRESULT GetFrameDurations(int32_t* current, int32_t* detected) = 0;
  // Appends the subtitle files found for the filter's film, in discovery order.
  virtual host::HRESULT FindSubtitleFiles(OwningPtrArray<DynString>* files) = 0;
};

inline constexpr host::IID IID_IFilterSettings = IFilterSettings::kIid;

}  // namespace korvalin
