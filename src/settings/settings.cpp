#include "settings/settings.h"

#include <cmath>
#include <string>

#include "base/mul_div.h"
#include "base/number_scan.h"
#include "platform/registry_store.h"
#include "settings/registry_path.h"
#include "settings/setting_fields.h"

namespace korvalin {

namespace {

std::string FullPath(std::string_view name) {
  std::string path(kSettingsKeyPath);
  path += '\\';
  path += name;
  return path;
}

struct Loader {
  RegistryPath& registry;
  template <class I>
  void Int(std::string_view name, I& field, int32_t def, int32_t min, int32_t max) {
    field = static_cast<I>(registry.ReadInt(FullPath(name), def, min, max));
  }
  template <class T>
  void Text(std::string_view name, T& field, std::string_view def) {
    registry.ReadString(field, FullPath(name), def);
  }
};

struct Saver {
  RegistryPath& registry;
  template <class I>
  void Int(std::string_view name, const I& field, int32_t, int32_t, int32_t) {
    registry.WriteInt(FullPath(name), static_cast<int32_t>(field));
  }
  template <class T>
  void Text(std::string_view name, const T& field, std::string_view) {
    registry.WriteString(FullPath(name), field.view());
  }
};

}  // namespace

Settings::Settings() { LoadSettings(); }

Settings::Settings(platform::RegistryStore& store) { LoadSettings(store); }

int Settings::LoadSettings() { return LoadSettings(platform::RegistryStore::Process()); }

int Settings::LoadSettings(platform::RegistryStore& store) {
  platform::RegistryStore::Batch batch(store);
  RegistryPath registry(store);
  Loader loader{registry};
  VisitFieldsInLoadOrder(*this, loader);
  aspectRatio = ParseAspectRatio(AspectComp2.view());
  return 0;
}

int Settings::SaveSettings() const { return SaveSettings(platform::RegistryStore::Process()); }

int Settings::SaveSettings(platform::RegistryStore& store) const {
  platform::RegistryStore::Batch batch(store);
  RegistryPath registry(store);
  Saver saver{registry};
  VisitFieldsInSaveOrder(*this, saver);
  return 0;
}

int32_t Settings::SubtitleTime(int32_t frameTimeMs) const {
  return MulDiv(frameTimeMs, Sub.SubSpeed, 1000) - Sub.SubDelay;
}

int32_t Settings::SourceFrameDuration(int32_t frameDuration) const {
  switch (FPSConv) {
    case 1:  // only clips between 23.5 and 24.5 frames per second
      return (frameDuration >= 408163 && frameDuration < 425532) ? frameDuration : 0;
    case 2:
      return 417083;  // 23.976 fps
    case 3:
      return 416666;  // 24 fps
    default:
      return 0;
  }
}

float ParseAspectRatio(std::string_view text) {
  if (text.empty()) return 0;
  // "%f:%f": a number, a colon right after it, a second number (white space before it).
  const std::string terminated(text);
  float width = 0, height = 0;
  const char* colon = nullptr;
  if (!ScanFloat(terminated.c_str(), &width, &colon) || *colon != ':') return 0;
  if (!ScanFloat(colon + 1, &height)) return 0;
  if (!(width > 0) || !(height > 0) || !std::isfinite(width) || !std::isfinite(height)) return 0;
  const float ratio = width / height;
  return std::isfinite(ratio) ? ratio : 0;
}

}  // namespace korvalin
