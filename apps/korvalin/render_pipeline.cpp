#include "korvalin/render_pipeline.h"

#include <chrono>
#include <cstdlib>

#include "filter/video_filter.h"
#include "filter/video_format_conversion.h"
#include "filter/y4m_source.h"
#include "host/filter_graph.h"

namespace korvalin::cli {

using namespace host;

namespace {

constexpr int32_t kProgressIntervalMs = 500;

const char* FormatName(PixelFormat format) {
  switch (format) {
    case PixelFormat::YUY2:
      return "yuy2";
    case PixelFormat::RGB32:
      return "rgb32";
    case PixelFormat::RGB565:
      return "rgb565";
  }
  return "?";
}

class Progress {
 public:
  explicit Progress(bool shown) : shown_(shown), begun_(std::chrono::steady_clock::now()) {}
  void Show(int64_t frames, bool last) {
    if (!shown_) return;
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begun_).count();
    std::fprintf(stderr, "\rkorvalin: %lld frames, %.1f fps", static_cast<long long>(frames),
                 seconds > 0 ? static_cast<double>(frames) / seconds : 0.0);
    if (last) std::fputc('\n', stderr);
    std::fflush(stderr);
  }

 private:
  bool shown_;
  std::chrono::steady_clock::time_point begun_;
};

ComPtr<VideoFilter> MakeFilter(const RenderJob& job) {
  return job.settings ? MakeCom<VideoFilter>(*job.settings) : MakeCom<VideoFilter>();
}

std::string Connect(FilterGraph* graph, Y4mSource* source, VideoFilter* filter, FrameSink* sink,
                    PixelFormat format) {
  if (FAILED(graph->AddFilter(source, u"YUV4MPEG2 Source")) ||
      FAILED(graph->AddFilter(filter, u"Korvalin")) ||
      FAILED(graph->AddFilter(sink, u"Frame Sink"))) {
    return "cannot build the filter graph";
  }
  if (FAILED(graph->ConnectDirect(source->GetPin(0), filter->GetPin(0), nullptr)))
    return "the filter does not take this video";
  if (FAILED(graph->ConnectDirect(filter->GetPin(1), sink->GetPin(0), nullptr))) {
    return std::string("the filter offers no ") + FormatName(format) +
           " output with these settings";
  }
  return "";
}

// Waits for the end of the stream, showing progress. The completion code.
int32_t WaitForEnd(FilterGraph* graph, FrameSink* sink, Progress* progress) {
  int32_t code = 0;
  while (graph->WaitForCompletion(kProgressIntervalMs, &code) == E_ABORT)
    progress->Show(sink->FramesReceived(), false);
  return code;
}

}  // namespace

std::string RunRender(const RenderJob& job, const RenderOutput& output, int64_t* frames) {
  *frames = 0;
  const ComPtr<Y4mSource> source = MakeCom<Y4mSource>(job.input, job.maxFrames);
  const ComPtr<VideoFilter> filter = MakeFilter(job);
  bool writeFailed = false;
  const ComPtr<FrameSink> sink = MakeCom<FrameSink>(job.format, [&](const SinkFrame& frame) {
    if (output.frame(frame)) return true;
    writeFailed = true;
    return false;
  });
  const ComPtr<FilterGraph> graph = MakeCom<FilterGraph>();
  if (!source || !filter || !sink || !graph) return "out of memory";

  std::string error = source->Open();
  if (!error.empty()) return error;
  if (!job.subtitles.empty() && filter->LoadSubtitles(job.subtitles.c_str()) != 0)
    return "cannot load subtitle file " + job.subtitles;
  error = Connect(graph.Get(), source.Get(), filter.Get(), sink.Get(), job.format);
  if (!error.empty()) return error;

  const VideoFormat out = ToVideoFormat(filter->OutputPin()->CurrentMediaType());
  if (!output.begin({source->header(), out.biWidth, std::abs(out.biHeight)}))
    return "cannot write the output";

  Progress progress(job.progress);
  graph->SetSyncSource(nullptr);  // as fast as the frames come
  if (FAILED(graph->Run())) return "the filter graph does not run";
  const int32_t code = WaitForEnd(graph.Get(), sink.Get(), &progress);
  graph->Stop();
  *frames = sink->FramesReceived();
  progress.Show(*frames, true);

  if (writeFailed) return "cannot write the output";
  if (!source->StreamError().empty()) return source->StreamError();
  if (code != EC_COMPLETE) return "the stream was aborted";
  return "";
}

}  // namespace korvalin::cli
