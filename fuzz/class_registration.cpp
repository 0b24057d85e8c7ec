// libFuzzer target for reading class registrations out of a registry file: any file reads
// without going out of bounds, and every filter read back registers again to the same data.
#include "host/class_registration.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

std::filesystem::path TempFile(const char* name) {
  static const std::filesystem::path folder = [] {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "korvalin-fuzz-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) std::abort();
    return std::filesystem::path(pattern);
  }();
  return folder / name;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace korvalin;
  const auto input = TempFile("input.reg"), output = TempFile("output.reg");
  std::ofstream(input, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  platform::RegistryStore store(input);
  for (const host::StoredFilter& filter : host::ReadStoredFilters(store)) {
    std::filesystem::remove(output);
    platform::RegistryStore again(output);
    host::FactoryTemplate entry{filter.data.name,  filter.data.clsid, {}, true,
                                filter.data.merit, filter.data.pins};
    if (host::RegisterInStore(again, {entry}, filter.modulePath) != host::S_OK) std::abort();
    const auto stored = host::ReadStoredFilters(again);
    if (stored.size() != 1 || !(stored[0].data == filter.data) ||
        stored[0].modulePath != filter.modulePath) {
      std::abort();
    }
  }
  return 0;
}
