// libFuzzer target for the REGEDIT4 reader: any bytes parse without going out of bounds, and
// the model survives a write and a second read unchanged.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/regedit_format.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace korvalin::platform;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const RegeditParse first = ParseRegedit(text);
  const std::string written = SerializeRegedit(first.document);
  const RegeditParse second = ParseRegedit(written);
  if (second.Damaged()) std::abort();                      // our own output always reads cleanly
  if (!(second.document == first.document)) std::abort();  // parse, write, parse: same model
  if (SerializeRegedit(second.document) != written) std::abort();  // and the same text
  return 0;
}
