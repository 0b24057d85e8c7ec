#pragma once

#include <atomic>
#include <string>

#include "filter/format_change_allocator.h"
#include "host/com_ptr.h"
#include "host/transform_pins.h"

namespace korvalin {

// The filter's name in a graph; a second copy below it refuses to connect.
inline constexpr std::u16string_view kFilterName = u"Korvalin";

// The filter's input pin. It refuses to follow another copy of the filter, and on
// connection asks the upstream filter for top-down frames through its own allocator, which
// attaches that format to the first buffer it hands out.
class VideoInputPin : public host::TransformInputPin {
 public:
  VideoInputPin(host::TransformFilter* filter, std::u16string name);

  host::HRESULT GetAllocator(host::IMemAllocator** allocator) override;
  host::HRESULT CheckConnect(host::IPin* pin) override;
  host::HRESULT CompleteConnect(host::IPin* receivePin) override;

  // Set when the connection asked for top-down frames; the first frame clears it. Read and
  // written under the filter's frame lock or while not streaming.
  std::atomic<int32_t> topDownPending{0};

 private:
  host::ComPtr<FormatChangeAllocator> ownAllocator_;
};

}  // namespace korvalin
