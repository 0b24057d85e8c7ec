#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "base/string_compare.h"
#include "korvalin/commands.h"
#include "korvalin/number_parse.h"
#include "platform/registry_store.h"
#include "settings/registry_path.h"
#include "settings/setting_fields.h"

namespace korvalin::cli {

const std::string_view kSettingsUsage =
    "  settings show                    print every stored setting as Name=Value\n"
    "  settings set Name=Value ...      store settings (a number outside its setting's range\n"
    "                                   is stored but reads as the default)\n"
    "  settings reset                   remove every stored setting\n";

namespace {

std::string FullPath(std::string_view name) {
  return std::string(kSettingsKeyPath) + "\\" + std::string(name);
}

// Prints every field as the record holds it after a load.
struct Printer {
  template <class I>
  void Int(std::string_view name, const I& field, int32_t, int32_t, int32_t) {
    std::cout << name << '=' << field << '\n';
  }
  template <class T>
  void Text(std::string_view name, const T& field, std::string_view) {
    std::cout << name << '=' << field.view() << '\n';
  }
};

// Finds a field by its stored name (letter case ignored, as the registry does).
struct FieldFinder {
  std::string_view wanted;
  std::string name;  // the canonical spelling, empty when not found
  bool isText = false;
  int32_t defaultValue = 0, min = 0, max = 0;  // an integer's
  template <class I>
  void Int(std::string_view n, const I&, int32_t def, int32_t lo, int32_t hi) {
    if (!name.empty() || !EqualsIgnoreCase(n, wanted)) return;
    name = n;
    defaultValue = def;
    min = lo;
    max = hi;
  }
  template <class T>
  void Text(std::string_view n, const T&, std::string_view) {
    if (name.empty() && EqualsIgnoreCase(n, wanted)) {
      name = n;
      isText = true;
    }
  }
};

struct PendingWrite {
  std::string name;
  bool isText;
  std::string text;
  int32_t number;
  std::string warning;  // for a number that will read as the default
};

int Show() {
  const Settings settings;
  Printer printer;
  VisitFieldsInLoadOrder(settings, printer);
  return kExitOk;
}

std::optional<PendingWrite> ParseAssignment(std::string_view arg, std::string& error) {
  const auto equals = arg.find('=');
  if (equals == std::string_view::npos || equals == 0) {
    error = "expected Name=Value, got '" + std::string(arg) + "'";
    return {};
  }
  const std::string_view name = arg.substr(0, equals);
  const std::string_view value = arg.substr(equals + 1);
  const Settings defaults{Settings::DefaultsOnly{}};
  FieldFinder finder;
  finder.wanted = name;
  VisitFieldsInLoadOrder(defaults, finder);
  if (finder.name.empty()) {
    error = "unknown setting '" + std::string(name) + "'";
    return {};
  }
  if (finder.isText) return PendingWrite{finder.name, true, std::string(value), 0, {}};
  // Integers are stored as 32-bit words: signed values and colours up to 0xFFFFFFFF.
  const auto number = ParseInteger(value, INT32_MIN, UINT32_MAX);
  if (!number) {
    error = "setting '" + finder.name + "' needs a whole number, got '" + std::string(value) + "'";
    return {};
  }
  // Stored as given, as the pages store it; a load checks the word as a signed number.
  const auto stored = static_cast<int32_t>(static_cast<uint32_t>(*number));
  std::string warning;
  if (stored < finder.min || stored > finder.max) {
    warning = finder.name + "=" + std::string(value) + " is out of range (" +
              std::to_string(finder.min) + " to " + std::to_string(finder.max) +
              ") and will read as the default, " + std::to_string(finder.defaultValue);
  }
  return PendingWrite{finder.name, false, {}, stored, std::move(warning)};
}

int Set(Args assignments) {
  if (assignments.empty()) return Fail("settings set: expected Name=Value ...");
  std::vector<PendingWrite> writes;
  for (std::string_view arg : assignments) {
    std::string error;
    auto write = ParseAssignment(arg, error);
    if (!write) return Fail("settings set: " + error);
    writes.push_back(std::move(*write));
  }
  auto& store = platform::RegistryStore::Process();
  platform::RegistryStore::Batch batch(store);
  RegistryPath registry(store);
  for (const PendingWrite& w : writes) {
    const int result = w.isText ? registry.WriteString(FullPath(w.name), w.text)
                                : registry.WriteInt(FullPath(w.name), w.number);
    if (result != 0) return Fail("settings set: cannot write " + store.file().string());
  }
  if (batch.Commit() != 0) return Fail("settings set: cannot write " + store.file().string());
  for (const PendingWrite& w : writes) {
    if (!w.warning.empty()) std::cerr << "korvalin: settings set: " << w.warning << '\n';
  }
  return kExitOk;
}

int Reset() {
  auto& store = platform::RegistryStore::Process();
  RegistryPath registry(store);
  if (registry.Parse(FullPath("x")) != 0 ||
      store.DeleteValues(registry.root(), registry.subKey()) != 0) {
    return Fail("settings reset: cannot write " + store.file().string());
  }
  return kExitOk;
}

}  // namespace

int RunSettingsCommand(Args args) {
  if (args.empty()) return Fail("settings: expected show, set or reset");
  const std::string_view verb = args[0];
  if (verb == "show" && args.size() == 1) return Show();
  if (verb == "set") return Set(args.subspan(1));
  if (verb == "reset" && args.size() == 1) return Reset();
  return Fail("settings: expected show, set Name=Value ... or reset");
}

}  // namespace korvalin::cli
