// Feeds arbitrary bytes to the caption markup tokenizer, its tag helpers and entity decoding.
#include "text/markup_text.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include "text/entity_decoding.h"

namespace {

// Exercises the tag helpers on every tag the tokenizer meets.
class ProbingMarkup : public korvalin::MarkupText {
 public:
  void OnTag(const char* tag) override {
    if (TagIs(tag, "time")) text.Append(GetAttribute(tag, "begin").c_str());
    GetAttribute(tag, "class");
    MarkupText::OnTag(tag);
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);  // NUL-terminated copy
  ProbingMarkup markup;
  markup.Parse(input.c_str());
  const korvalin::DynString plain = korvalin::DecodeEntities(markup.text.c_str());
  if (plain.Length() > 0 && static_cast<unsigned char>(plain.c_str()[0]) <= 0x20) {
    __builtin_trap();  // the ends are trimmed
  }
  korvalin::DecodeEntities(input.c_str());
  return 0;
}
