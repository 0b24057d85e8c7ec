// korvalin graph: the graph a player would build for a film, without running it.
#include <cstdio>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "filter/video_format_conversion.h"
#include "host/format_blocks.h"
#include "host/media_guids.h"
#include "host/pin_helpers.h"
#include "host/wide_text.h"
#include "korvalin/commands.h"
#include "korvalin/player_graph.h"
#include "korvalin/session_environment.h"

namespace korvalin::cli {

const std::string_view kGraphUsage =
    "  graph INPUT [--audio IN.wav] [--format yuy2|rgb32|rgb565]\n"
    "                                   the filters and connections of that graph,\n"
    "                                   and whether GStreamer players use Korvalin's\n"
    "                                   sinks (see register --gstreamer)\n";

using namespace host;

namespace {

struct GraphRequest {
  std::string input;
  std::string audio;
  PixelFormat format = PixelFormat::YUY2;
};

std::optional<std::string> ParseArguments(Args args, GraphRequest* request) {
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    if ((arg == "--audio" || arg == "--format") && i + 1 >= args.size())
      return "option " + std::string(arg) + " needs a value";
    if (arg == "--audio") {
      request->audio = std::string(args[++i]);
    } else if (arg == "--format") {
      const std::optional<PixelFormat> format = ParsePixelFormat(args[++i]);
      if (!format) return "--format must be yuy2, rgb32 or rgb565";
      request->format = *format;
    } else if (arg.size() > 1 && arg[0] == '-') {
      return "unknown option '" + std::string(arg) + "'";
    } else if (!request->input.empty()) {
      return "only one INPUT argument is taken";
    } else {
      request->input = std::string(arg);
    }
  }
  if (request->input.empty()) return "graph needs an INPUT (a YUV4MPEG2 file)";
  return {};
}

std::string NameOf(IBaseFilter* filter) {
  FILTER_INFO info;
  return filter && SUCCEEDED(filter->QueryFilterInfo(&info)) ? Narrow(info.achName) : "?";
}

std::string NameOf(IPin* pin) {
  PIN_INFO info;
  return pin && SUCCEEDED(pin->QueryPinInfo(&info)) ? Narrow(info.achName) : "?";
}

std::string Describe(const AM_MEDIA_TYPE& type) {
  std::string text = (type.majortype == MEDIATYPE_Audio ? "audio " : "video ") +
                     SubtypeName(type.subtype);
  if (type.formattype == FORMAT_WaveFormatEx) {
    WAVEFORMATEX wave;
    if (ReadFormatBlock(type, &wave)) {
      text += ", " + std::to_string(wave.nSamplesPerSec) + " Hz, " +
              std::to_string(wave.nChannels) + " channels, " +
              std::to_string(wave.wBitsPerSample) + " bits";
    }
  } else if (type.formattype == FORMAT_VideoInfo || type.formattype == FORMAT_VideoInfo2) {
    const VideoFormat format = ToVideoFormat(type);
    text += ", " + std::to_string(format.biWidth) + "x" + std::to_string(format.biHeight) +
            ", frame " + std::to_string(format.AvgTimePerFrame) + " x 100 ns";
  }
  return text;
}

// Sources first, then each filter after the one feeding it; unconnected filters last.
std::vector<ComPtr<IBaseFilter>> StreamOrder(IFilterGraph* graph) {
  std::vector<ComPtr<IBaseFilter>> all, order;
  ComPtr<IEnumFilters> filters;
  if (SUCCEEDED(graph->EnumFilters(filters.ReleaseAndGetAddressOf()))) {
    IBaseFilter* next = nullptr;
    while (filters->Next(1, &next, nullptr) == S_OK) {
      ComPtr<IBaseFilter> filter;
      filter.Attach(next);
      all.push_back(filter);
    }
  }
  std::set<IBaseFilter*> placed;
  auto visit = [&](auto&& self, const ComPtr<IBaseFilter>& filter) -> void {
    if (!filter || !placed.insert(filter.Get()).second) return;
    order.push_back(filter);
    for (const ComPtr<IPin>& out : PinsOf(filter.Get(), PINDIR_OUTPUT))
      self(self, OwnerOf(ConnectedPin(out.Get()).Get()));
  };
  for (const ComPtr<IBaseFilter>& filter : all) {
    const std::vector<ComPtr<IPin>> outputs = PinsOf(filter.Get(), PINDIR_OUTPUT);
    const bool feeds = !outputs.empty() && ConnectedPin(outputs.front().Get());
    if (feeds && PinsOf(filter.Get(), PINDIR_INPUT).empty()) visit(visit, filter);
  }
  for (const ComPtr<IBaseFilter>& filter : all) visit(visit, filter);
  return order;
}

void PrintGraph(IFilterGraph* graph) {
  const std::vector<ComPtr<IBaseFilter>> order = StreamOrder(graph);
  for (const ComPtr<IBaseFilter>& filter : order) std::printf("filter %s\n", NameOf(filter.Get()).c_str());
  for (const ComPtr<IBaseFilter>& filter : order) {
    for (const ComPtr<IPin>& out : PinsOf(filter.Get(), PINDIR_OUTPUT)) {
      const ComPtr<IPin> in = ConnectedPin(out.Get());
      AM_MEDIA_TYPE type;
      if (!in || FAILED(out->ConnectionMediaType(&type))) continue;
      std::printf("connection %s.%s -> %s.%s: %s\n", NameOf(filter.Get()).c_str(),
                  NameOf(out.Get()).c_str(), NameOf(OwnerOf(in.Get()).Get()).c_str(),
                  NameOf(in.Get()).c_str(), Describe(type).c_str());
    }
  }
}

}  // namespace

int RunGraphCommand(Args args) {
  GraphRequest request;
  if (const std::optional<std::string> error = ParseArguments(args, &request)) return Fail(*error);
  std::FILE* input = std::fopen(request.input.c_str(), "rb");
  if (input == nullptr) return Fail("cannot open " + request.input);
  std::string error;
  {
    PlayerGraph player;
    PlayerJob job{input, request.input, -1, request.format,
                  [](const SinkFrame&) { return true; }, request.audio,
                  request.audio.empty() ? "" : "/dev/null", std::nullopt};
    error = player.Build(job);
    if (error.empty()) PrintGraph(player.graph());
  }
  if (error.empty()) std::printf("%s\n", GstreamerSinksStatus().c_str());
  std::fclose(input);
  return error.empty() ? kExitOk : Fail(request.input + ": " + error);
}

}  // namespace korvalin::cli
