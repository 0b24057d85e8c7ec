#include "korvalin/render_pipeline.h"

#include <chrono>
#include <cstdlib>

#include "filter/filter_settings.h"
#include "filter/video_format_conversion.h"
#include "korvalin/player_graph.h"
#include "host/filter_graph.h"

namespace korvalin::cli {

using namespace host;

namespace {

constexpr int32_t kProgressIntervalMs = 500;

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

// Shows the subtitle file and language the user named, through the filter's settings
// interface as the pages do. A language alone reloads the file found for the film.
std::string SelectSubtitles(const PlayerGraph& player, const RenderJob& job) {
  if (job.subtitles.empty() && job.language.empty()) return "";
  const ComPtr<IFilterSettings> filter = QueryAs<IFilterSettings>(player.VideoFilter().Get());
  if (!filter) return "the filter is not in the graph (its load mode left it out)";
  std::string file = job.subtitles;
  if (file.empty()) {
    char found[4096];
    filter->GetSubtitleInfo(found, sizeof found, nullptr, 0, nullptr, 0, nullptr);
    file = found;
  }
  if (file.empty()) return "";
  if (filter->SelectSubtitle(file.c_str(), job.language.c_str()) != S_OK)
    return std::string(kCannotLoadSubtitles) + " (" + file + ")";
  return "";
}

RenderStart StartOf(const PlayerGraph& player) {
  RenderStart start;
  start.input = player.source()->header();
  const VideoFormat out = ToVideoFormat(player.sink()->GetPin(0)->CurrentMediaType());
  start.outputWidth = out.biWidth;
  start.outputHeight = std::abs(out.biHeight);
  player.OutputFrameRate(&start.rateNumerator, &start.rateDenominator);
  return start;
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
  bool writeFailed = false;
  PlayerJob playerJob{job.input, job.inputPath, job.maxFrames, job.format,
                      [&](const SinkFrame& frame) {
                        if (output.frame(frame)) return true;
                        writeFailed = true;
                        return false;
                      },
                      job.audioInput, job.audioOutput, job.settings};
  PlayerGraph player;
  std::string error = player.Build(playerJob);
  if (error.empty()) error = SelectSubtitles(player, job);
  if (!error.empty()) return error;
  if (!output.begin(StartOf(player))) return "cannot write the output";

  FilterGraph* graph = player.graph();
  Progress progress(job.progress);
  graph->SetSyncSource(nullptr);  // as fast as the frames come
  if (FAILED(graph->Run())) return "the filter graph does not run";
  const int32_t code = WaitForEnd(graph, player.sink(), &progress);
  graph->Stop();
  *frames = player.sink()->FramesReceived();
  progress.Show(*frames, true);

  if (writeFailed) return "cannot write the output";
  if (!player.source()->StreamError().empty()) return player.source()->StreamError();
  if (!player.AudioError().empty()) return player.AudioError();
  if (code != EC_COMPLETE) return "the stream was aborted";
  return "";
}

}  // namespace korvalin::cli
