#include "filter/source_file_name.h"

#include "host/filter_interfaces.h"
#include "host/pin_helpers.h"
#include "host/wide_text.h"

namespace korvalin {

using namespace host;

namespace {

// Graphs are acyclic, but a bound keeps a damaged one from recursing forever.
constexpr int kMaxDepth = 256;

DynString FileOfSource(IBaseFilter* filter) {
  DynString name;
  const ComPtr<IFileSourceFilter> source = QueryAs<IFileSourceFilter>(filter);
  std::u16string wide;
  if (source && SUCCEEDED(source->GetCurFile(&wide, nullptr))) name.Assign(Narrow(wide).c_str());
  return name;
}

DynString FindAt(IPin* pin, int depth) {
  if (pin == nullptr || depth > kMaxDepth) return {};
  const ComPtr<IBaseFilter> filter = OwnerOf(pin);
  if (!filter) return {};
  bool inputSeen = false;
  for (const ComPtr<IPin>& candidate : PinsOf(filter.Get())) {
    if (DirectionOf(candidate.Get()) != PINDIR_INPUT) continue;
    inputSeen = true;
    if (const ComPtr<IPin> upstream = ConnectedPin(candidate.Get())) {
      DynString found = FindAt(upstream.Get(), depth + 1);
      if (!found.IsEmpty()) return found;
    }
  }
  return inputSeen ? DynString() : FileOfSource(filter.Get());
}

}  // namespace

DynString FindSourceFileName(IPin* pin) { return FindAt(pin, 0); }

}  // namespace korvalin
