#include "filter/y4m_source.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "filter/frame_sink.h"
#include "filter/video_filter.h"
#include "host/filter_graph.h"

namespace korvalin {
namespace {

using namespace host;

constexpr int32_t kGenerousMs = 10000;

// A 4:2:2 clip of 8 x 4 pixels whose luma is 16 + 10 x row + frame.
std::string RowClip(int frames) {
  std::string clip = "YUV4MPEG2 W8 H4 F25:1 C422\n";
  for (int f = 0; f < frames; ++f) {
    clip += "FRAME\n";
    for (int row = 0; row < 4; ++row) clip += std::string(8, static_cast<char>(16 + 10 * row + f));
    clip += std::string(2 * 4 * 4, '\x80');
  }
  return clip;
}

std::FILE* FileWith(const std::string& bytes) {
  std::FILE* file = std::tmpfile();
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::rewind(file);
  return file;
}

TEST(Y4mSourceTest, TellsTheLengthOfAFile) {
  std::FILE* file = FileWith(RowClip(3));
  const struct {
    int64_t maxFrames;
    double seconds;
  } cases[] = {{-1, 0.12}, {2, 0.08}, {10, 0.12}};
  for (const auto& c : cases) {
    std::rewind(file);
    const ComPtr<Y4mSource> source = MakeCom<Y4mSource>(file, c.maxFrames);
    ASSERT_EQ(source->Open(), "");
    const ComPtr<IMediaPosition> position = QueryAs<IMediaPosition>(source.Get());
    ASSERT_TRUE(position);
    double seconds = 0;
    ASSERT_EQ(position->get_Duration(&seconds), S_OK);
    EXPECT_DOUBLE_EQ(seconds, c.seconds) << c.maxFrames;
  }
  std::fclose(file);
}

TEST(Y4mSourceTest, FramesReachTheSinkTopRowFirstWithTheirTimes) {
  std::FILE* file = FileWith(RowClip(3));
  Settings settings{Settings::DefaultsOnly{}};
  settings.bFill2 = 0;
  struct Seen {
    std::vector<uint8_t> lumaOfRows;
    REFERENCE_TIME start;
  };
  std::vector<Seen> seen;
  const ComPtr<Y4mSource> source = MakeCom<Y4mSource>(file, -1);
  const ComPtr<VideoFilter> filter = MakeCom<VideoFilter>(settings);
  const ComPtr<FrameSink> sink = MakeCom<FrameSink>(PixelFormat::YUY2, [&](const SinkFrame& frame) {
    Seen s{{}, frame.start};
    for (int32_t row = 0; row < frame.height; ++row)
      s.lumaOfRows.push_back(frame.pixels[row * frame.width * 2]);
    seen.push_back(s);
    return frame.hasTime;
  });
  const ComPtr<FilterGraph> graph = MakeCom<FilterGraph>();
  ASSERT_EQ(source->Open(), "");
  graph->AddFilter(source.Get(), u"Source");
  graph->AddFilter(filter.Get(), u"Korvalin");
  graph->AddFilter(sink.Get(), u"Sink");
  ASSERT_EQ(graph->ConnectDirect(source->GetPin(0), filter->GetPin(0), nullptr), S_OK);
  ASSERT_EQ(graph->ConnectDirect(filter->GetPin(1), sink->GetPin(0), nullptr), S_OK);
  ASSERT_EQ(graph->Run(), S_OK);
  int32_t code = 0;
  ASSERT_EQ(graph->WaitForCompletion(kGenerousMs, &code), S_OK);
  EXPECT_EQ(code, EC_COMPLETE);
  graph->Stop();
  std::fclose(file);

  ASSERT_EQ(seen.size(), 3u);
  for (int f = 0; f < 3; ++f) {
    const std::vector<uint8_t> rows = {static_cast<uint8_t>(16 + f), static_cast<uint8_t>(26 + f),
                                       static_cast<uint8_t>(36 + f), static_cast<uint8_t>(46 + f)};
    EXPECT_EQ(seen[f].lumaOfRows, rows) << f;
    EXPECT_EQ(seen[f].start, f * 400000);
  }
  EXPECT_EQ(filter->durationMs, 120);
}

}  // namespace
}  // namespace korvalin
