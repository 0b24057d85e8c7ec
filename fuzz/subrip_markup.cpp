// Feeds arbitrary subtitle text to the SubRip tag parser, as the renderer reads it.
#include "render/subrip_markup.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/code_page.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::u32string text = korvalin::platform::DecodeSubtitleText(bytes, 1252);
  const korvalin::platform::StyledText styled = korvalin::ParseSubRipMarkup(text);
  std::size_t end = 0;
  for (const korvalin::platform::TextRun& run : styled.runs) {
    if (run.end <= end) __builtin_trap();  // runs are in order and never empty
    end = run.end;
  }
  if (end != styled.text.size() || styled.text.size() > text.size()) __builtin_trap();
  korvalin::ParseSubRipColour(text);
  return 0;
}
