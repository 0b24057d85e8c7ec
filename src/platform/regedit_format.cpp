#include "platform/regedit_format.h"

#include <algorithm>
#include <array>

#include "base/string_compare.h"

namespace korvalin::platform {

namespace {

constexpr std::array<std::pair<RootKey, std::string_view>, 4> kRoots{{
    {RootKey::ClassesRoot, "HKEY_CLASSES_ROOT"},
    {RootKey::CurrentUser, "HKEY_CURRENT_USER"},
    {RootKey::LocalMachine, "HKEY_LOCAL_MACHINE"},
    {RootKey::Users, "HKEY_USERS"},
}};

constexpr bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

std::string_view Trim(std::string_view s) {
  while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsBlank(s.back())) s.remove_suffix(1);
  return s;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool StartsWithIgnoreCase(std::string_view s, std::string_view prefix) {
  return s.size() >= prefix.size() && EqualsIgnoreCase(s.substr(0, prefix.size()), prefix);
}

// Splits text into lines at "\n"; the last line may lack its line feed.
std::vector<std::string_view> SplitLines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const auto end = text.find('\n');
    if (end == std::string_view::npos) {
      lines.push_back(text);
      break;
    }
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  return lines;
}

// "[ROOT]" or "[ROOT\sub\key]" without the brackets. False for an unknown root.
bool ParseKeyPath(std::string_view path, RootKey& root, std::string& subKey) {
  for (const auto& [key, name] : kRoots) {
    if (!StartsWithIgnoreCase(path, name)) continue;
    const std::string_view rest = path.substr(name.size());
    if (rest.empty()) {
      root = key;
      subKey.clear();
      return true;
    }
    if (rest.front() != '\\') continue;
    root = key;
    subKey = std::string(rest.substr(1));
    return true;
  }
  return false;
}

// A quoted text starting at s[pos] == '"' with \\ and \" escapes (any other backslash is
// kept as it is). Moves pos past the closing quote.
bool ParseQuoted(std::string_view s, std::size_t& pos, std::string& out) {
  if (pos >= s.size() || s[pos] != '"') return false;
  out.clear();
  for (std::size_t i = pos + 1; i < s.size(); ++i) {
    const char c = s[i];
    if (c == '"') {
      pos = i + 1;
      return true;
    }
    if (c == '\\') {
      if (i + 1 >= s.size()) return false;
      const char next = s[i + 1];
      if (next == '\\' || next == '"') {
        out += next;
      } else {
        out += '\\';
        out += next;
      }
      ++i;
      continue;
    }
    out += c;
  }
  return false;
}

// One line's part of a hex byte list: "01,02, ab" with an optional trailing "\" that
// continues the list on the next line.
bool ParseHexFragment(std::string_view s, std::vector<uint8_t>& out, bool& continues) {
  continues = false;
  std::size_t i = 0;
  auto skipBlanks = [&] {
    while (i < s.size() && IsBlank(s[i])) ++i;
  };
  for (;;) {
    skipBlanks();
    if (i >= s.size()) return true;
    if (s[i] == '\\') {
      ++i;
      skipBlanks();
      if (i != s.size()) return false;
      continues = true;
      return true;
    }
    const int high = HexDigit(s[i]);
    if (high < 0) return false;
    int byte = high;
    ++i;
    if (i < s.size() && HexDigit(s[i]) >= 0) {
      byte = byte * 16 + HexDigit(s[i]);
      ++i;
    }
    out.push_back(static_cast<uint8_t>(byte));
    skipBlanks();
    if (i >= s.size()) return true;
    if (s[i] == '\\') continue;
    if (s[i] != ',') return false;
    ++i;
  }
}

bool ParseHexNumber(std::string_view s, uint32_t& value) {
  if (s.empty() || s.size() > 8) return false;
  value = 0;
  for (char c : s) {
    const int d = HexDigit(c);
    if (d < 0) return false;
    value = value * 16 + static_cast<uint32_t>(d);
  }
  return true;
}

class Parser {
 public:
  explicit Parser(std::vector<std::string_view> lines) : lines_(std::move(lines)) {}

  RegeditParse Run() {
    RegeditParse result;
    std::size_t i = 0;
    while (i < lines_.size() && Trim(lines_[i]).empty()) ++i;
    if (i == lines_.size()) return result;  // nothing at all: empty, not damaged
    if (Trim(lines_[i]) != "REGEDIT4") {
      result.headerOk = false;
      return result;
    }
    RegistryKey* key = nullptr;
    for (++i; i < lines_.size();) {
      const std::string_view line = Trim(lines_[i]);
      ++i;
      if (line.empty() || line.front() == ';') continue;
      if (line.front() == '[') {
        key = nullptr;
        RootKey root;
        std::string subKey;
        if (line.size() >= 2 && line.back() == ']' &&
            ParseKeyPath(line.substr(1, line.size() - 2), root, subKey)) {
          key = &result.document.CreateKey(root, subKey);
        } else {
          ++result.skippedLines;  // unknown root, deletion syntax or no closing bracket
        }
        continue;
      }
      std::string name;
      RegistryValue value;
      if (key == nullptr || !ParseValueLine(line, i, name, value)) {
        ++result.skippedLines;
        continue;
      }
      key->Set(name, std::move(value));
    }
    return result;
  }

 private:
  // A value line; continuation lines of a hex list are consumed by moving `next` on.
  bool ParseValueLine(std::string_view line, std::size_t& next, std::string& name,
                      RegistryValue& value) {
    std::size_t pos = 0;
    if (line.front() == '@') {
      name.clear();
      pos = 1;
    } else if (!ParseQuoted(line, pos, name)) {
      return false;
    }
    while (pos < line.size() && IsBlank(line[pos])) ++pos;
    if (pos >= line.size() || line[pos] != '=') return false;
    ++pos;
    while (pos < line.size() && IsBlank(line[pos])) ++pos;
    const std::string_view data = line.substr(pos);

    if (!data.empty() && data.front() == '"') {
      std::size_t end = 0;
      std::string text;
      if (!ParseQuoted(data, end, text) || !Trim(data.substr(end)).empty()) return false;
      value.type = REG_SZ;
      value.data.assign(text.begin(), text.end());
      value.data.push_back(0);
      return true;
    }
    if (StartsWithIgnoreCase(data, "dword:")) {
      uint32_t number = 0;
      if (!ParseHexNumber(Trim(data.substr(6)), number)) return false;
      value.type = REG_DWORD;
      value.data = {static_cast<uint8_t>(number), static_cast<uint8_t>(number >> 8),
                    static_cast<uint8_t>(number >> 16), static_cast<uint8_t>(number >> 24)};
      return true;
    }
    if (!StartsWithIgnoreCase(data, "hex")) return false;
    std::string_view rest = data.substr(3);
    value.type = REG_BINARY;
    if (!rest.empty() && rest.front() == '(') {
      const auto close = rest.find(')');
      if (close == std::string_view::npos || !ParseHexNumber(rest.substr(1, close - 1), value.type))
        return false;
      rest.remove_prefix(close + 1);
    }
    if (rest.empty() || rest.front() != ':') return false;
    rest.remove_prefix(1);
    bool continues = false;
    if (!ParseHexFragment(rest, value.data, continues)) return false;
    while (continues && next < lines_.size()) {
      const std::string_view more = Trim(lines_[next]);
      if (more.empty()) break;  // a blank line ends the list
      if (!ParseHexFragment(more, value.data, continues)) return false;  // line read again
      ++next;
    }
    return true;
  }

  std::vector<std::string_view> lines_;
};

void AppendQuoted(std::string& out, std::string_view text) {
  out += '"';
  for (char c : text) {
    if (c == '\\' || c == '"') out += '\\';
    out += c;
  }
  out += '"';
}

bool IsPlainText(const std::vector<uint8_t>& data) {
  if (data.empty() || data.back() != 0) return false;
  for (std::size_t i = 0; i + 1 < data.size(); ++i) {
    if (data[i] == 0 || data[i] == '\r' || data[i] == '\n') return false;
  }
  return true;
}

void AppendHex(std::string& out, uint32_t value, int minDigits) {
  static constexpr char kDigits[] = "0123456789abcdef";
  char buffer[8];
  int n = 0;
  do {
    buffer[n++] = kDigits[value & 15];
    value >>= 4;
  } while (value != 0);
  while (n < minDigits) buffer[n++] = '0';
  while (n > 0) out += buffer[--n];
}

// The part of `path` below the key `parent` ("a\b\c" below "A" is "b\c"); empty when
// `path` is not below it. Every key is below the root's empty path.
std::string_view BelowKey(std::string_view path, std::string_view parent) {
  if (parent.empty()) return path;
  if (path.size() <= parent.size() + 1 || path[parent.size()] != '\\' ||
      !EqualsIgnoreCase(path.substr(0, parent.size()), parent)) {
    return {};
  }
  return path.substr(parent.size() + 1);
}

}  // namespace

std::string_view RootKeyName(RootKey root) {
  for (const auto& [key, name] : kRoots) {
    if (key == root) return name;
  }
  return {};
}

const RegistryValue* RegistryKey::Find(std::string_view name) const {
  for (const auto& [n, v] : values) {
    if (EqualsIgnoreCase(n, name)) return &v;
  }
  return nullptr;
}

void RegistryKey::Set(std::string_view name, RegistryValue value) {
  for (auto& [n, v] : values) {
    if (EqualsIgnoreCase(n, name)) {
      v = std::move(value);
      return;
    }
  }
  values.emplace_back(std::string(name), std::move(value));
}

RegistryKey* RegistryDocument::FindKey(RootKey root, std::string_view subKey) {
  for (RegistryKey& key : keys) {
    if (key.root == root && EqualsIgnoreCase(key.subKey, subKey)) return &key;
  }
  return nullptr;
}

const RegistryKey* RegistryDocument::FindKey(RootKey root, std::string_view subKey) const {
  return const_cast<RegistryDocument*>(this)->FindKey(root, subKey);
}

RegistryKey& RegistryDocument::CreateKey(RootKey root, std::string_view subKey) {
  if (RegistryKey* key = FindKey(root, subKey)) return *key;
  keys.push_back(RegistryKey{root, std::string(subKey), {}});
  return keys.back();
}

const RegistryValue* RegistryDocument::Find(RootKey root, std::string_view subKey,
                                            std::string_view name) const {
  const RegistryKey* key = FindKey(root, subKey);
  return key ? key->Find(name) : nullptr;
}

std::vector<std::string> RegistryDocument::SubKeyNames(RootKey root,
                                                       std::string_view subKey) const {
  std::vector<std::string> names;
  for (const RegistryKey& key : keys) {
    if (key.root != root) continue;
    std::string_view child = BelowKey(key.subKey, subKey);
    if (child.empty()) continue;
    child = child.substr(0, child.find('\\'));
    if (child.empty()) continue;  // two backslashes in a row name no key
    const bool known = std::any_of(names.begin(), names.end(), [&](const std::string& name) {
      return EqualsIgnoreCase(name, child);
    });
    if (!known) names.emplace_back(child);
  }
  return names;
}

bool RegistryDocument::DeleteTree(RootKey root, std::string_view subKey) {
  return std::erase_if(keys, [&](const RegistryKey& key) {
           return key.root == root &&
                  (EqualsIgnoreCase(key.subKey, subKey) || !BelowKey(key.subKey, subKey).empty());
         }) > 0;
}

bool IsStorableName(std::string_view name) {
  return name.find('\n') == std::string_view::npos;
}

RegeditParse ParseRegedit(std::string_view text) {
  if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
  return Parser(SplitLines(text)).Run();
}

std::string SerializeRegedit(const RegistryDocument& document) {
  std::string out = "REGEDIT4\n\n";
  for (const RegistryKey& key : document.keys) {
    out += '[';
    out += RootKeyName(key.root);
    if (!key.subKey.empty()) {
      out += '\\';
      out += key.subKey;
    }
    out += "]\n";
    for (const auto& [name, value] : key.values) {
      const std::size_t lineStart = out.size();
      if (name.empty()) {
        out += '@';
      } else {
        AppendQuoted(out, name);
      }
      out += '=';
      if (value.type == REG_DWORD && value.data.size() == 4) {
        const uint32_t number = uint32_t{value.data[0]} | uint32_t{value.data[1]} << 8 |
                                uint32_t{value.data[2]} << 16 | uint32_t{value.data[3]} << 24;
        out += "dword:";
        AppendHex(out, number, 8);
      } else if (value.type == REG_SZ && IsPlainText(value.data)) {
        AppendQuoted(out, std::string_view(reinterpret_cast<const char*>(value.data.data()),
                                           value.data.size() - 1));
      } else {
        if (value.type == REG_BINARY) {
          out += "hex:";
        } else {
          out += "hex(";
          AppendHex(out, value.type, 1);
          out += "):";
        }
        std::size_t column = out.size() - lineStart;
        for (std::size_t i = 0; i < value.data.size(); ++i) {
          if (i > 0) {
            out += ',';
            ++column;
            if (column >= 76) {
              out += "\\\n  ";
              column = 2;
            }
          }
          AppendHex(out, value.data[i], 2);
          column += 2;
        }
      }
      out += '\n';
    }
    out += '\n';
  }
  return out;
}

}  // namespace korvalin::platform
