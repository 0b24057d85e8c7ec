#include "korvalin/player_graph.h"

#include <filesystem>
#include <numeric>

#include "filter/filter_settings.h"
#include "filter/graph_search.h"
#include "filter/video_filter.h"
#include "framerate/rate_clock.h"
#include "host/class_factory.h"
#include "host/filter_registry.h"
#include "host/media_guids.h"
#include "host/wav_file_source.h"
#include "host/wav_file_writer.h"
#include "module/class_table.h"
#include "platform/registry_store.h"

namespace korvalin::cli {

using namespace host;

namespace {


GUID SubtypeOf(PixelFormat format) {
  switch (format) {
    case PixelFormat::RGB32:
      return MEDIASUBTYPE_RGB32;
    case PixelFormat::RGB565:
      return MEDIASUBTYPE_RGB565;
    case PixelFormat::YUY2:
      break;
  }
  return MEDIASUBTYPE_YUY2;
}

// A renderer the graph builder finds by merit, as a player's video or audio renderer.
FactoryTemplate RendererClass(std::u16string name, const CLSID& clsid, const GUID& major,
                              const GUID& minor, ComPtr<IBaseFilter> instance) {
  FactoryTemplate entry;
  entry.name = std::move(name);
  entry.clsid = clsid;
  entry.create = [instance](IUnknown* outer, const IID& iid, void** out) {
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    return instance->QueryInterface(iid, out);
  };
  entry.isFilter = true;
  entry.merit = MERIT_NORMAL;
  REGFILTERPINS pin;
  pin.strName = u"Input";
  pin.bRendered = true;
  pin.lpMediaType = {{major, minor}};
  entry.pins = {pin};
  return entry;
}

bool ClassAvailable(const CLSID& clsid) {
  void* raw = nullptr;
  if (FAILED(CoCreateInstance(clsid, nullptr, IID_IUnknown, &raw))) return false;
  static_cast<IUnknown*>(raw)->Release();
  return true;
}

// The video filter class with the given settings, in place of the stored ones.
FactoryTemplate VideoFilterWith(const Settings& settings) {
  FactoryTemplate entry = ModuleClasses().front();
  entry.create = [settings](IUnknown* outer, const IID& iid, void** out) {
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    const ComPtr<korvalin::VideoFilter> filter = MakeCom<korvalin::VideoFilter>(settings);
    return filter ? filter->QueryInterface(iid, out) : E_OUTOFMEMORY;
  };
  return entry;
}

std::string AbsolutePath(const std::string& path) {
  if (path.empty()) return path;
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(path, error);
  return error ? path : absolute.lexically_normal().string();
}

}  // namespace

PlayerGraph::PlayerGraph() : graph_(MakeCom<FilterGraph>()) {}

PlayerGraph::~PlayerGraph() {
  if (graph_) graph_->Stop();
  graph_.Reset();
  for (const CLSID& clsid : registered_) FilterRegistry::Process().Unregister(clsid);
}

std::string PlayerGraph::Build(const PlayerJob& job) {
  if (!graph_) return "out of memory";
  // One look at the store for the whole build: the graph builder asks it for registered
  // filters at every pin it renders, and every filter made loads its settings from it.
  platform::RegistryStore::Batch snapshot(platform::RegistryStore::Process());
  settings_ = job.settings ? *job.settings : Settings();
  if (job.settings) {
    FilterRegistry::Process().Register(VideoFilterWith(*job.settings));
    registered_.push_back(CLSID_VideoFilter);
  } else if (!ClassAvailable(CLSID_VideoFilter)) {
    RegisterModuleClassesInProcess();  // not installed: the tool's own classes
  }
  std::string error = AddVideo(job);
  if (error.empty() && !job.audioInput.empty()) error = AddAudio(job);
  if (!error.empty()) return error;
  // The graph takes the filter's faster clock when it offers one; taking a clock is when
  // the filter splices in front of the mixer and the audio renderer.
  graph_->SetDefaultSyncSource();
  return "";
}

std::string PlayerGraph::AddVideo(const PlayerJob& job) {
  source_ = MakeCom<Y4mSource>(job.input, job.maxFrames, AbsolutePath(job.inputPath));
  sink_ = MakeCom<FrameSink>(job.format, job.frame);
  if (!source_ || !sink_) return "out of memory";
  std::string error = source_->Open();
  if (!error.empty()) return error;
  FilterRegistry::Process().Register(
      RendererClass(u"Frame Writer", CLSID_FrameSink, MEDIATYPE_Video, SubtypeOf(job.format),
                    ComPtr<IBaseFilter>(sink_.Get())));
  registered_.push_back(CLSID_FrameSink);
  if (FAILED(graph_->AddFilter(source_.Get(), u"YUV4MPEG2 Source")))
    return "cannot build the filter graph";
  if (FAILED(graph_->Render(source_->GetPin(0)))) {
    return "nothing in the graph turns this video into " + SubtypeName(SubtypeOf(job.format)) +
           " (is the filter's load mode \"Never\"?)";
  }
  return "";
}

std::string PlayerGraph::AddAudio(const PlayerJob& job) {
  const ComPtr<WavFileSource> source = MakeCom<WavFileSource>(job.audioInput);
  const ComPtr<WavFileWriter> writer = MakeCom<WavFileWriter>(job.audioOutput);
  if (!source || !writer) return "out of memory";
  std::string error = source->Open();
  if (!error.empty()) return job.audioInput + ": " + error;
  audioSource_ = source.Get();
  audioWriter_ = writer;
  FilterRegistry::Process().Register(RendererClass(u"WAV Writer", CLSID_WavFileWriter,
                                                   MEDIATYPE_Audio, MEDIASUBTYPE_PCM,
                                                   ComPtr<IBaseFilter>(writer.Get())));
  registered_.push_back(CLSID_WavFileWriter);
  if (FAILED(graph_->AddFilter(source.Get(), u"WAV Source")) ||
      FAILED(graph_->Render(source->GetPin(0)))) {
    return job.audioInput + ": the sound cannot be written";
  }
  return "";
}

ComPtr<IBaseFilter> PlayerGraph::VideoFilter() const {
  return FindNamedFilter(graph_.Get(), u"Korvalin");
}

void PlayerGraph::OutputFrameRate(uint32_t* numerator, uint32_t* denominator) const {
  const Y4mHeader& header = source_->header();
  *numerator = header.rateNumerator;
  *denominator = header.rateDenominator;
  const ComPtr<IFilterSettings> filter = QueryAs<IFilterSettings>(VideoFilter().Get());
  int32_t current = 0, detected = 0;
  if (!filter || FAILED(filter->GetFrameDurations(&current, &detected)) || current <= 0) return;
  const int32_t rate = settings_->SourceFrameDuration(current);
  if (rate <= 0) return;
  // The clock runs rate / 400000 times as fast, so each frame lasts this long.
  const int64_t played = (int64_t{current} * kTargetFrameDuration + rate / 2) / rate;
  const int64_t divisor = std::gcd(int64_t{10000000}, played);
  *numerator = static_cast<uint32_t>(10000000 / divisor);
  *denominator = static_cast<uint32_t>(played / divisor);
}

std::string PlayerGraph::AudioError() const {
  return audioWriter_ ? audioWriter_->Error() : "";
}

std::optional<PixelFormat> ParsePixelFormat(std::string_view name) {
  if (name == "yuy2") return PixelFormat::YUY2;
  if (name == "rgb32") return PixelFormat::RGB32;
  if (name == "rgb565") return PixelFormat::RGB565;
  return std::nullopt;
}

std::string SubtypeName(const GUID& subtype) {
  if (subtype == MEDIASUBTYPE_YUY2) return "YUY2";
  if (subtype == MEDIASUBTYPE_RGB32) return "RGB32";
  if (subtype == MEDIASUBTYPE_RGB565) return "RGB565";
  if (subtype == MEDIASUBTYPE_PCM) return "PCM";
  return ToString(subtype);
}

}  // namespace korvalin::cli
