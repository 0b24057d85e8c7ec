// What the GStreamer element adds to the filter's own per-frame work at 1080p: the filter's
// Transform through its host session alone, then the same frame through the `korvalin`
// element (caps, buffer pool, frame mapping, times). Items are frames.
#include <gst/check/gstharness.h>
#include <gst/gst.h>
#include <gst/video/video.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

#include "gst/filter_session.h"
#include "gst/plugin_features.h"

namespace korvalin {
namespace {

constexpr int kWidth = 1920, kHeight = 1080;

// Default settings, whatever the user's store holds.
void UsePrivateStore() {
  static const std::string path =
      (std::filesystem::temp_directory_path() / "korvalin-bench-gst.reg").string();
  std::filesystem::remove(path);
  setenv("KORVALIN_REGISTRY", path.c_str(), 1);
}

std::vector<uint8_t> GreyFrame() {
  std::vector<uint8_t> frame(std::size_t(kWidth) * kHeight * 2);
  for (std::size_t i = 0; i < frame.size(); i += 2) frame[i] = 120, frame[i + 1] = 128;
  return frame;
}

void BM_FilterTransformAlone(benchmark::State& state) {
  UsePrivateStore();
  gst::FilterSession session;
  session.Connect(gst::FilmFormat{kWidth, kHeight, 25, 1, 1, 1}, "", 0);
  session.SelectOutput(PixelFormat::RGB32);
  const gst::OutputShape shape = session.Output();
  const std::vector<uint8_t> in = GreyFrame();
  std::vector<uint8_t> out(std::size_t(shape.width) * shape.height * 4);
  int64_t frame = 0;
  for (auto _ : state) {
    gst::FrameIn f{in.data(), in.size(), true, frame * 400000, (frame + 1) * 400000};
    benchmark::DoNotOptimize(session.Transform(f, out.data(), out.size()));
    ++frame;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FilterTransformAlone)->Unit(benchmark::kMillisecond);

void BM_ElementFrame(benchmark::State& state) {
  UsePrivateStore();
  gst_init(nullptr, nullptr);
  gst::RegisterStatically();
  GstHarness* h = gst_harness_new("korvalin");
  gst_harness_set_src_caps_str(h, "video/x-raw,format=YUY2,width=1920,height=1080,"
                                  "framerate=25/1,pixel-aspect-ratio=1/1");
  gst_harness_set_sink_caps_str(h, "video/x-raw,format=BGRx");
  const std::vector<uint8_t> grey = GreyFrame();
  GstBuffer* in = gst_buffer_new_memdup(grey.data(), grey.size());
  GstClockTime pts = 0;
  for (auto _ : state) {
    in = gst_buffer_make_writable(in);
    GST_BUFFER_PTS(in) = pts;
    GST_BUFFER_DURATION(in) = GST_SECOND / 25;
    pts += GST_SECOND / 25;
    GstBuffer* out = gst_harness_push_and_pull(h, gst_buffer_ref(in));
    gst_buffer_unref(out);
  }
  gst_buffer_unref(in);
  gst_harness_teardown(h);
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ElementFrame)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace korvalin
