#include "platform/code_page.h"

#include <iconv.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "base/string_compare.h"

namespace korvalin::platform {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct CharsetCodePage {
  int32_t charset;
  int codePage;
};

// Font character-set numbers and the code page whose bytes they stand for.
constexpr std::array<CharsetCodePage, 12> kCharsetCodePages{{
    {0, 1252},
    {177, 1255},
    {178, 1256},
    {161, 1253},
    {162, 1254},
    {186, 1257},
    {238, 1250},
    {204, 1251},
    {163, 1258},
    {255, 437},
    {77, kCodePageMacRoman},
    {129, 949},
}};

// glibc's iconv names of the supported code pages.
std::optional<std::string> IconvName(int codePage) {
  if (codePage == kCodePageMacRoman) return "MACINTOSH";
  if (codePage == 437 || codePage == 949 || (codePage >= 1250 && codePage <= 1258)) {
    return "CP" + std::to_string(codePage);
  }
  return std::nullopt;
}

// An iconv descriptor that closes itself.
class Converter {
 public:
  Converter(const char* to, const char* from) : cd_(iconv_open(to, from)) {}
  ~Converter() {
    if (valid()) iconv_close(cd_);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  bool valid() const { return cd_ != reinterpret_cast<iconv_t>(-1); }
  // One iconv step; returns errno (0 on success).
  int Step(char** in, size_t* inLeft, char** out, size_t* outLeft) {
    return iconv(cd_, in, inLeft, out, outLeft) == static_cast<size_t>(-1) ? errno : 0;
  }

 private:
  iconv_t cd_;
};

char32_t ReadUtf32Le(const unsigned char* p) {
  return char32_t{p[0]} | char32_t{p[1]} << 8 | char32_t{p[2]} << 16 | char32_t{p[3]} << 24;
}

void WriteUtf32Le(char32_t c, unsigned char* p) {
  for (int i = 0; i < 4; ++i) p[i] = static_cast<unsigned char>(c >> (8 * i));
}

bool IsScalar(char32_t c) {
  return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
}

// Length of the well-formed UTF-8 sequence at bytes[i], 0 when it is malformed.
size_t Utf8SequenceLength(std::string_view bytes, size_t i) {
  const auto byte = [&](size_t k) { return static_cast<unsigned char>(bytes[k]); };
  const unsigned char lead = byte(i);
  if (lead < 0x80) return 1;
  size_t length;
  char32_t value;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2, value = lead & 0x1F;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3, value = lead & 0x0F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4, value = lead & 0x07;
  } else {
    return 0;
  }
  if (bytes.size() - i < length) return 0;
  for (size_t k = 1; k < length; ++k) {
    if ((byte(i + k) & 0xC0) != 0x80) return 0;
    value = value << 6 | (byte(i + k) & 0x3F);
  }
  constexpr char32_t kMinimum[] = {0, 0, 0x80, 0x800, 0x10000};
  if (value < kMinimum[length] || !IsScalar(value)) return 0;
  return length;
}

}  // namespace

int CodePageOfCharset(int32_t charset) {
  for (const CharsetCodePage& entry : kCharsetCodePages) {
    if (entry.charset == charset) return entry.codePage;
  }
  return kCodePageWestern;
}

bool IsSupportedCodePage(int codePage) {
  return IconvName(codePage).has_value();
}

int SystemCodePage() {
  const char* value = std::getenv("KORVALIN_CODEPAGE");
  if (value == nullptr) return kCodePageWestern;
  std::string_view name(value);
  for (std::string_view prefix : {"windows-", "cp"}) {
    if (name.size() > prefix.size() && EqualsIgnoreCase(name.substr(0, prefix.size()), prefix)) {
      name.remove_prefix(prefix.size());
      break;
    }
  }
  int number = 0;
  for (char c : name) {
    if (c < '0' || c > '9' || number > 100000) return kCodePageWestern;
    number = number * 10 + (c - '0');
  }
  return !name.empty() && IsSupportedCodePage(number) ? number : kCodePageWestern;
}

std::u32string DecodeCodePage(std::string_view bytes, int codePage) {
  const std::string from = IconvName(codePage).value_or("CP1252");
  Converter converter("UTF-32LE", from.c_str());
  std::u32string text;
  if (!converter.valid()) {  // iconv without the module: keep ASCII, mark the rest
    for (char c : bytes) text.push_back(static_cast<unsigned char>(c) < 0x80 ? c : kReplacement);
    return text;
  }
  std::string input(bytes);
  char* in = input.data();
  size_t inLeft = input.size();
  std::array<unsigned char, 4 * 256> buffer;
  while (inLeft > 0) {
    char* out = reinterpret_cast<char*>(buffer.data());
    size_t outLeft = buffer.size();
    const int error = converter.Step(&in, &inLeft, &out, &outLeft);
    const size_t produced = (buffer.size() - outLeft) / 4;
    for (size_t k = 0; k < produced; ++k) text.push_back(ReadUtf32Le(&buffer[4 * k]));
    if (error == EILSEQ || error == EINVAL) {  // undefined or cut-off sequence: skip a byte
      text.push_back(kReplacement);
      ++in, --inLeft;
    } else if (error != 0 && error != E2BIG) {
      break;
    }
  }
  // Stateful pages (1258) hold back a base letter that a combining mark might follow.
  char* out = reinterpret_cast<char*>(buffer.data());
  size_t outLeft = buffer.size();
  converter.Step(nullptr, nullptr, &out, &outLeft);
  for (size_t k = 0; k < (buffer.size() - outLeft) / 4; ++k) {
    text.push_back(ReadUtf32Le(&buffer[4 * k]));
  }
  return text;
}

std::string EncodeCodePage(std::u32string_view text, int codePage) {
  const std::string to = IconvName(codePage).value_or("CP1252");
  Converter converter(to.c_str(), "UTF-32LE");
  std::string bytes;
  for (char32_t c : text) {
    unsigned char unit[4];
    WriteUtf32Le(c, unit);
    char* in = reinterpret_cast<char*>(unit);
    size_t inLeft = sizeof unit;
    char encoded[8];
    char* out = encoded;
    size_t outLeft = sizeof encoded;
    if (converter.valid() && converter.Step(&in, &inLeft, &out, &outLeft) == 0) {
      bytes.append(encoded, out);
    } else {
      bytes.push_back(c < 0x80 ? static_cast<char>(c) : '?');
    }
  }
  return bytes;
}

bool IsMultiByteUtf8(std::string_view bytes) {
  bool multiByte = false;
  for (size_t i = 0; i < bytes.size();) {
    const size_t length = Utf8SequenceLength(bytes, i);
    if (length == 0) return false;
    multiByte |= length > 1;
    i += length;
  }
  return multiByte;
}

std::u32string DecodeUtf8(std::string_view bytes) {
  std::u32string text;
  for (size_t i = 0; i < bytes.size();) {
    const size_t length = Utf8SequenceLength(bytes, i);
    if (length == 0) {
      text.push_back(kReplacement);
      ++i;
      continue;
    }
    char32_t value = length == 1 ? static_cast<unsigned char>(bytes[i])
                                 : static_cast<unsigned char>(bytes[i]) & (0x7F >> length);
    for (size_t k = 1; k < length; ++k) value = value << 6 | (bytes[i + k] & 0x3F);
    text.push_back(value);
    i += length;
  }
  return text;
}

void AppendUtf8(std::string* bytes, char32_t c) {
  if (!IsScalar(c)) c = kReplacement;
  if (c < 0x80) {
    bytes->push_back(static_cast<char>(c));
  } else if (c < 0x800) {
    bytes->push_back(static_cast<char>(0xC0 | c >> 6));
    bytes->push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else if (c < 0x10000) {
    bytes->push_back(static_cast<char>(0xE0 | c >> 12));
    bytes->push_back(static_cast<char>(0x80 | (c >> 6 & 0x3F)));
    bytes->push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else {
    bytes->push_back(static_cast<char>(0xF0 | c >> 18));
    bytes->push_back(static_cast<char>(0x80 | (c >> 12 & 0x3F)));
    bytes->push_back(static_cast<char>(0x80 | (c >> 6 & 0x3F)));
    bytes->push_back(static_cast<char>(0x80 | (c & 0x3F)));
  }
}

std::string EncodeUtf8(std::u32string_view text) {
  std::string bytes;
  for (char32_t c : text) AppendUtf8(&bytes, c);
  return bytes;
}

std::u32string DecodeSubtitleText(std::string_view bytes, int codePage) {
  return IsMultiByteUtf8(bytes) ? DecodeUtf8(bytes) : DecodeCodePage(bytes, codePage);
}

}  // namespace korvalin::platform
