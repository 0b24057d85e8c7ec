#include "subtitles/subtitle_track.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace korvalin {
namespace {

// Records what the track draws; fails when told to.
class RecordingRenderer : public SubtitleRenderer {
 public:
  int RenderText(const char* text, int32_t width, TextMarkup markup) override {
    drawn.push_back(std::string(text) + "@" + std::to_string(width) +
                    (markup == TextMarkup::SubRip ? " SubRip" : ""));
    return result;
  }
  int RenderPicture(const Picture& picture, int32_t) override {
    drawn.push_back("picture " + std::to_string(picture.width));
    return result;
  }
  void ClearImage() override {}
  std::vector<std::string> drawn;
  int result = 0;
};

// Entries named by their position in times.
void Fill(SubtitleTrack& track, const std::vector<std::pair<int32_t, int32_t>>& times) {
  for (std::size_t i = 0; i < times.size(); ++i) {
    track.AddEntry(std::make_unique<SubtitleEntry>(times[i].first, times[i].second,
                                                   std::to_string(i).c_str()));
  }
}

std::string Order(const SubtitleTrack& track) {
  std::string order;
  for (const SubtitleEntry* e : track.entries) order += e->text.c_str() + std::string(" ");
  return order;
}

// SortByStart must give exactly the order of this exchange sort, equal starts included.
TEST(SubtitleTrack, SortByStartGivesTheExchangeSortOrder) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    const int n = round % 50 == 49 ? 400 : 1 + round % 40;
    std::vector<std::pair<int32_t, int32_t>> times;
    for (int i = 0; i < n; ++i) times.emplace_back(random() % (1 + round % 7 * 3), 0);
    if (round % 10 == 0) std::sort(times.begin(), times.end());
    if (round % 10 == 1) std::sort(times.rbegin(), times.rend());
    std::vector<std::pair<int32_t, int>> items;
    for (int i = 0; i < n; ++i) items.emplace_back(times[i].first, i);
    for (bool swapped = true; swapped;) {
      swapped = false;
      for (std::size_t i = 0; i + 1 < items.size(); ++i) {
        for (std::size_t j = i + 1; j < items.size(); ++j) {
          if (items[i].first > items[j].first) std::swap(items[i], items[j]), swapped = true;
        }
      }
    }
    std::string want;
    for (const auto& item : items) want += std::to_string(item.second) + " ";
    SubtitleTrack track;
    Fill(track, times);
    track.SortByStart();
    EXPECT_EQ(Order(track), want) << "round " << round;
  }
  SubtitleTrack track;  // equal starts are not kept stable
  Fill(track, {{3, 9}, {3, 9}, {1, 9}});
  track.SortByStart();
  EXPECT_EQ(Order(track), "2 1 0 ");
}

TEST(SubtitleTrack, CloseOpenEndsThenRemoveEmpty) {
  const struct {
    std::vector<std::pair<int32_t, int32_t>> times;
    std::string kept;
    std::vector<int32_t> stops;
  } cases[] = {
      {{{0, 0}, {100, 0}, {200, 0}}, "0 1 2 ", {99, 199, OpenEnd}},
      {{{100, 0}, {100, 500}}, "1 ", {500}},  // same start: stop = start - 1, removed
      {{{0, 0}, {0, 0}}, "1 ", {OpenEnd}},    // next starts at 0: keeps 0, removed
      {{{10, 5}, {20, 30}}, "1 ", {30}},      // stop before start
      {{}, "", {}},
  };
  for (const auto& c : cases) {
    SubtitleTrack track;
    Fill(track, c.times);
    track.CloseOpenEnds();
    track.RemoveEmpty();
    EXPECT_EQ(Order(track), c.kept);
    std::vector<int32_t> stops;
    for (const SubtitleEntry* e : track.entries) stops.push_back(e->stop);
    EXPECT_EQ(stops, c.stops) << c.kept;
  }
  SubtitleTrack track;  // empty text and pictures without pixels go too
  track.AddEntry(std::make_unique<SubtitleEntry>(0, 10, ""));
  track.AddEntry(std::make_unique<SubtitleEntry>(0, 10, std::make_unique<Picture>()));
  track.AddEntry(std::make_unique<SubtitleEntry>(0, 10, std::make_unique<Picture>(2, 2)));
  track.AddEntry(std::make_unique<SubtitleEntry>(0, 10, "x"));
  track.RemoveEmpty();
  ASSERT_EQ(track.entries.Count(), 2u);
  EXPECT_EQ(track.entries[0]->kind, SubtitleEntryKind::Picture);
  EXPECT_EQ(track.entries[1]->text, "x");
}

TEST(SubtitleTrack, ConvertFramesToMsOnceAndOnlyForAPositiveRate) {
  SubtitleTrack track;
  Fill(track, {{0, 0}, {24, 0}, {48, 0}});
  track.framesPending = true;
  for (float bad : {0.0f, -25.0f, std::nanf("")}) {
    track.ConvertFramesToMs(bad);
    EXPECT_TRUE(track.framesPending);
  }
  track.CloseOpenEnds();
  track.ConvertFramesToMs(23.976f);
  EXPECT_FALSE(track.framesPending);
  EXPECT_EQ(track.entries[1]->start, 1001);  // 24 * 1000 / 23.976 = 1001.0009
  EXPECT_EQ(track.entries[1]->stop, 1960);   // frame 47
  EXPECT_EQ(track.entries[2]->stop, OpenEnd);
  track.ConvertFramesToMs(1.0f);
  EXPECT_EQ(track.entries[1]->start, 1001);
}

TEST(SubtitleTrack, FindEntry) {
  SubtitleTrack track;
  Fill(track, {{1000, 1999}, {3000, 3999}, {5000, 5999}});
  const struct {
    int32_t current, t1, t2, want;
  } cases[] = {
      {-1, 3500, 3540, 1}, {-1, 2000, 2040, -1}, {-1, 6000, 6040, -1}, {-1, 0, 999, -1},
      {-1, 1990, 3010, 1},  // spans two: the binary search meets the middle one first
      {0, 1500, 1540, 0},  {0, 3000, 3040, 1},   {0, 2500, 2540, -1},  // the gap
      {2, 7000, 7040, -1}, {0, 5500, 5540, 2},   {9, 5500, 5540, 2},
  };
  for (const auto& c : cases) {
    track.currentIndex = c.current;
    EXPECT_EQ(track.FindEntry(c.t1, c.t2), c.want) << c.current << " " << c.t1;
  }
  track.fileDelay = 5000;  // shows subtitles later
  EXPECT_EQ(track.FindEntry(1000, 1040), -1);
  EXPECT_EQ(track.FindEntry(6000, 6040), 0);
  track.fileDelay = -2147483647;
  EXPECT_EQ(track.FindEntry(2147483647, 2147483647), -1);  // no overflow
  EXPECT_EQ(SubtitleTrack().FindEntry(0, 100), -1);
}

TEST(SubtitleTrack, UpdateForFrameDrawsOnlyWhenTheEntryChanges) {
  auto owned = std::make_unique<RecordingRenderer>();
  RecordingRenderer& renderer = *owned;
  SubtitleTrack track(std::move(owned));
  Fill(track, {{0, 999}, {1000, 1999}});
  EXPECT_EQ(track.UpdateForFrame(0, 40, 720), 0);
  EXPECT_EQ(track.UpdateForFrame(40, 80, 720), 1);
  EXPECT_EQ(track.UpdateForFrame(1000, 1040, 640), 0);
  EXPECT_EQ(track.UpdateForFrame(5000, 5040, 640), -1);
  EXPECT_EQ(renderer.drawn, (std::vector<std::string>{"0@720", "1@640"}));
  renderer.result = -1;
  track.currentIndex = -1;
  EXPECT_EQ(track.UpdateForFrame(0, 40, 720), -1);  // drawing failed
  EXPECT_EQ(track.UpdateForFrame(40, 80, 720), 0);  // same entry after a failure
  track.framesPending = true;
  EXPECT_EQ(track.UpdateForFrame(40, 80, 720), -1);
}

TEST(SubtitleTrack, OnlySubRipTextIsDrawnWithItsTags) {
  for (const char* format : {"SubRip", "MicroDVD", "subrip", ""}) {
    auto owned = std::make_unique<RecordingRenderer>();
    RecordingRenderer& renderer = *owned;
    SubtitleTrack track(std::move(owned));
    track.formatName.Assign(format);
    track.AddEntry(std::make_unique<SubtitleEntry>(0, 999, "<i>x</i>"));
    EXPECT_EQ(track.UpdateForFrame(0, 40, 1920), 0);
    const std::string want =
        std::string("<i>x</i>@1920") + (std::string(format) == "SubRip" ? " SubRip" : "");
    EXPECT_EQ(renderer.drawn, std::vector<std::string>{want}) << format;
    EXPECT_STREQ(track.entries[0]->text.c_str(), "<i>x</i>");  // kept as read
  }
}

TEST(SubtitleTrack, ResetKeepsPreferredLanguageAndGetInfoCopies) {
  SubtitleTrack track;
  Fill(track, {{0, 1}});
  track.preferredLanguage.Assign("French");
  track.fileDelay = 5;
  track.fileName.Assign("a.srt");
  track.streamNames.Add(std::make_unique<DynString>("English"));
  const SubtitleInfo info = track.GetInfo();
  track.Reset();
  EXPECT_EQ(info.fileName, "a.srt");
  EXPECT_EQ(info.fileDelay, 5);
  ASSERT_EQ(info.streamNames.size(), 1u);
  EXPECT_EQ(info.streamNames[0], "English");
  EXPECT_EQ(track.preferredLanguage, "French");
  EXPECT_TRUE(track.entries.IsEmpty() && track.streamNames.IsEmpty());
  EXPECT_EQ(track.fileDelay, 0);
  EXPECT_EQ(track.currentIndex, -1);
}

}  // namespace
}  // namespace korvalin
