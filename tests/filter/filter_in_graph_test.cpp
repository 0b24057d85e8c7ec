// The filter as a graph builder meets it: load modes, the loader, the splice before the
// mixer, the settings interface, and frames streaming while the interface is used.
#include <atomic>
#include <cstring>
#include <thread>

#include "filter/graph_search.h"
#include "filter/loader_filter.h"
#include "filter/page_ids.h"
#include "filter/source_file_name.h"
#include "filter/y4m_source.h"
#include "filter_harness.h"
#include "host/filter_registry.h"
#include "host/pin_helpers.h"
#include "host/reference_clock.h"
#include "support/temp_folder.h"

namespace korvalin::testing {
namespace {

constexpr const char* kSubRip = "1\n00:00:00,000 --> 00:00:09,000\nHELLO\n\n";

template <class T>
FactoryTemplate FilterClass(std::u16string name, const CLSID& clsid, uint32_t merit,
                            std::function<ComPtr<T>()> make, GUID major, GUID minor) {
  FactoryTemplate entry;
  entry.name = std::move(name);
  entry.clsid = clsid;
  entry.create = [make](IUnknown*, const IID& iid, void** out) {
    const ComPtr<T> made = make();
    return made ? made->QueryInterface(iid, out) : E_OUTOFMEMORY;
  };
  entry.isFilter = true;
  entry.merit = merit;
  REGFILTERPINS input;
  input.strName = u"Input";
  input.lpMediaType = {{major, minor}};
  entry.pins = {input};
  return entry;
}

// The process's classes for one test: the video filter and the loader with `settings`, and
// the sink as the only renderer.
class Classes {
 public:
  Classes(const Settings& settings, RecordingSink* sink, uint32_t filterMerit = 0x900000) {
    auto& registry = FilterRegistry::Process();
    registry.Register(FilterClass<VideoFilter>(
        u"Korvalin", CLSID_VideoFilter, filterMerit,
        [settings] { return MakeCom<VideoFilter>(settings); }, MEDIATYPE_Video,
        MEDIASUBTYPE_YUY2));
    registry.Register(FilterClass<LoaderFilter>(
        u"KorvalinForce", CLSID_LoaderFilter, 0x900000,
        [settings] { return MakeCom<LoaderFilter>(settings); }, GUID_NULL, GUID_NULL));
    ComPtr<RecordingSink> kept(sink);
    registry.Register(FilterClass<RecordingSink>(
        u"Renderer", kSinkClass, MERIT_NORMAL, [kept] { return kept; }, MEDIATYPE_Video,
        MEDIASUBTYPE_YUY2));
  }
  ~Classes() {
    for (const CLSID& clsid : {CLSID_VideoFilter, CLSID_LoaderFilter, kSinkClass})
      FilterRegistry::Process().Unregister(clsid);
  }

 private:
  static constexpr CLSID kSinkClass = MakeGuid("22222222-0000-4000-8000-000000000009");
};

int FiltersNamed(IFilterGraph* graph, std::u16string_view wanted) {
  ComPtr<IEnumFilters> filters;
  graph->EnumFilters(filters.ReleaseAndGetAddressOf());
  IBaseFilter* next = nullptr;
  int count = 0;
  while (filters->Next(1, &next, nullptr) == S_OK) {
    FILTER_INFO info;
    next->QueryFilterInfo(&info);
    count += NameMatches(info.achName, wanted) ? 1 : 0;
    next->Release();
  }
  return count;
}

Settings WithLoadMode(int32_t mode) {
  Settings settings = Plain();
  settings.LoadMode = mode;
  return settings;
}

TEST(FilterInGraphTest, LoadModesDecideWhetherTheBuilderKeepsTheFilter) {
  struct Case {
    int32_t mode, width;
    bool present;
  };
  for (const Case c : {Case{0, 640, true}, Case{1, 640, false}, Case{2, 640, false},
                       Case{2, 720, true}, Case{3, 640, true}}) {
    const ComPtr<RecordingSink> sink = MakeCom<RecordingSink>(MEDIASUBTYPE_YUY2);
    const Classes classes(WithLoadMode(c.mode), sink.Get());
    const ComPtr<FilterGraph> graph = MakeCom<FilterGraph>();
    const ComPtr<PushSource> source = MakeCom<PushSource>(Yuy2Type(c.width, 480));
    graph->AddFilter(source.Get(), u"Source");
    ASSERT_EQ(graph->Render(source->Pin()), S_OK) << c.mode << " " << c.width;
    const ComPtr<IBaseFilter> filter = FindNamedFilter(graph.Get(), u"Korvalin");
    EXPECT_EQ(filter && ConnectedPin(source->Pin()) &&
                  OwnerOf(ConnectedPin(source->Pin()).Get()) == filter,
              c.present)
        << c.mode << " " << c.width;
    EXPECT_TRUE(ConnectedPin(sink->InPin()));
  }
}

TEST(FilterInGraphTest, NeverRefusesEvenAnExplicitAdd) {
  const ComPtr<FilterGraph> graph = MakeCom<FilterGraph>();
  const ComPtr<VideoFilter> filter = MakeCom<VideoFilter>(WithLoadMode(1));
  EXPECT_EQ(graph->AddFilter(filter.Get(), u"Korvalin"), E_FAIL);
  const ComPtr<LoaderFilter> loader = MakeCom<LoaderFilter>(WithLoadMode(0));
  EXPECT_EQ(graph->AddFilter(loader.Get(), u"KorvalinForce"), E_FAIL);
}

// The builder would never pick the video filter itself here; the loader puts one in.
TEST(FilterInGraphTest, ForcePutsExactlyOneFilterNamedKorvalinIn) {
  const ComPtr<RecordingSink> sink = MakeCom<RecordingSink>(MEDIASUBTYPE_YUY2);
  const Classes classes(WithLoadMode(3), sink.Get(), MERIT_DO_NOT_USE);
  const ComPtr<FilterGraph> graph = MakeCom<FilterGraph>();
  const ComPtr<PushSource> source = MakeCom<PushSource>(Yuy2Type(640, 480));
  graph->AddFilter(source.Get(), u"Source");
  ASSERT_EQ(graph->Render(source->Pin()), S_OK);
  EXPECT_EQ(FiltersNamed(graph.Get(), u"Korvalin"), 1);
  EXPECT_EQ(OwnerOf(ConnectedPin(source->Pin()).Get()),
            FindNamedFilter(graph.Get(), u"Korvalin"));

  // Later attempts add none, also when the present one was given a number.
  const ComPtr<LoaderFilter> loader = MakeCom<LoaderFilter>(WithLoadMode(3));
  const ComPtr<FilterGraph> numbered = MakeCom<FilterGraph>();
  const ComPtr<VideoFilter> present = MakeCom<VideoFilter>(Plain());
  numbered->AddFilter(present.Get(), u"Korvalin 0001");
  numbered->AddFilter(loader.Get(), u"KorvalinForce");
  for (int attempt = 0; attempt < 2; ++attempt)
    EXPECT_EQ(loader->CheckConnect(PINDIR_INPUT, source->Pin()), E_FAIL);
  EXPECT_EQ(FiltersNamed(numbered.Get(), u"Korvalin"), 1);
  EXPECT_EQ(loader->CheckConnect(PINDIR_OUTPUT, source->Pin()), E_FAIL);
}

TEST(FilterInGraphTest, ForceSplicesAnUnusedFilterBeforeTheOverlayMixer) {
  for (int32_t mode : {0, 3}) {
    const ComPtr<FilterGraph> graph = MakeCom<FilterGraph>();
    const ComPtr<PushSource> source = MakeCom<PushSource>(Yuy2Type(640, 480));
    const ComPtr<RecordingSink> mixer = MakeCom<RecordingSink>(MEDIASUBTYPE_YUY2);
    const ComPtr<VideoFilter> filter = MakeCom<VideoFilter>(WithLoadMode(mode));
    graph->AddFilter(source.Get(), u"Source");
    graph->AddFilter(mixer.Get(), u"Overlay Mixer");
    graph->AddFilter(filter.Get(), u"Korvalin");
    ASSERT_EQ(graph->ConnectDirect(source->Pin(), mixer->InPin(), nullptr), S_OK);
    const ComPtr<ReferenceClock> clock = MakeCom<ReferenceClock>();
    graph->SetSyncSource(clock.Get());
    const bool spliced = OwnerOf(ConnectedPin(mixer->InPin()).Get()).Get() ==
                         static_cast<IBaseFilter*>(filter.Get());
    EXPECT_EQ(spliced, mode == 3);
    EXPECT_EQ(spliced, filter->InputPin()->GetConnected() == source->Pin());
  }
}

TEST(FilterInGraphTest, SettingsInterfaceOnlyWhileInAGraph) {
  const ComPtr<VideoFilter> filter = MakeCom<VideoFilter>(Plain());
  EXPECT_FALSE(QueryAs<IFilterSettings>(filter.Get()));
  EXPECT_TRUE(QueryAs<ISpecifyPropertyPages>(filter.Get()));
  const ComPtr<FilterGraph> graph = MakeCom<FilterGraph>();
  graph->AddFilter(filter.Get(), u"Korvalin");
  const ComPtr<IFilterSettings> held = QueryAs<IFilterSettings>(filter.Get());
  ASSERT_TRUE(held);
  graph->RemoveFilter(filter.Get());
  EXPECT_FALSE(QueryAs<IFilterSettings>(filter.Get()));
  int32_t current = -1, detected = -1;
  EXPECT_EQ(held->GetFrameDurations(&current, &detected), S_OK);  // still works
  EXPECT_EQ(current, 0);

  CAUUID pages;
  ASSERT_EQ(filter->GetPages(&pages), S_OK);
  ASSERT_EQ(pages.cElems, 4u);
  EXPECT_EQ(pages.pElems[0], CLSID_PicturePage);
  EXPECT_EQ(pages.pElems[3], CLSID_AboutPage);
  CoTaskMemFree(pages.pElems);
}

TEST(FilterInGraphTest, RateClockOnlyWithFrameRateConversion) {
  for (int32_t conversion : {0, 3}) {
    Settings settings = Plain();
    settings.FPSConv = conversion;
    FilterPipeline pipeline(settings, Yuy2Type(64, 4, 416666));
    ASSERT_EQ(pipeline.Connect(), S_OK);
    const ComPtr<IReferenceClock> clock = QueryAs<IReferenceClock>(
        static_cast<IBaseFilter*>(pipeline.filter.Get()));
    ASSERT_EQ(static_cast<bool>(clock), conversion != 0);
    if (clock) {
      EXPECT_EQ(static_cast<RateClock*>(clock.Get())->Rate(), 416666);
    }
    EXPECT_EQ(pipeline.filter->UpdateClockRate(), conversion != 0);
  }
}

// Overscan reaches only filters made later; a flip reaches the next frame.
TEST(FilterInGraphTest, SetSettingsTakesOnlyTheLiveFields) {
  Settings settings = Plain();
  settings.YShift = 1;  // a black top row, so a flip shows
  settings.bOverscan = 1;
  FilterPipeline pipeline(settings, Yuy2Type(64, 8));
  ASSERT_EQ(pipeline.Start(), S_OK);
  ASSERT_EQ(pipeline.Push(Frame(0)), S_OK);
  const std::vector<uint8_t> before = pipeline.Last().bytes;
  settings.Overscan = 30;
  ASSERT_EQ(pipeline.filter->SetSettings(&settings), S_OK);
  ASSERT_EQ(pipeline.Push(Frame(1)), S_OK);
  EXPECT_EQ(pipeline.Last().bytes, before);
  settings.Flip = 2;
  ASSERT_EQ(pipeline.filter->SetSettings(&settings), S_OK);
  ASSERT_EQ(pipeline.Push(Frame(2)), S_OK);
  const std::vector<uint8_t>& flipped = pipeline.Last().bytes;
  ASSERT_EQ(flipped.size(), before.size());
  const std::size_t row = before.size() / 8;
  for (std::size_t r = 0; r < 8; ++r) {
    EXPECT_TRUE(std::equal(before.begin() + r * row, before.begin() + (r + 1) * row,
                           flipped.begin() + (7 - r) * row))
        << r;
  }
  EXPECT_NE(flipped, before);
}

TEST(FilterInGraphTest, SelectSubtitleAndItsInfo) {
  const TempFolder folder;
  const std::string good = folder.Write("good.srt", kSubRip).string();
  const std::string bad = folder.Write("bad.srt", "no subtitles here\n").string();
  FilterPipeline pipeline(Plain(), Yuy2Type(64, 8));
  IFilterSettings* settings = pipeline.filter.Get();
  ASSERT_EQ(settings->SelectSubtitle(good.c_str(), nullptr), S_OK);
  EXPECT_EQ(pipeline.filter->FrameState().subtitleEntries, 1u);

  char file[8], format[64], languages[4];
  std::memset(file, 'x', sizeof file);
  int32_t index = -1;
  ASSERT_EQ(settings->GetSubtitleInfo(file, sizeof file, format, sizeof format, languages,
                                      sizeof languages, &index),
            S_OK);
  EXPECT_EQ(std::string(file), good.substr(0, 7));  // cut to the buffer, still ended
  EXPECT_EQ(std::string(format), "SubRip");
  EXPECT_EQ(languages[0], '\0');
  EXPECT_EQ(languages[1], '\0');
  EXPECT_EQ(index, 0);
  EXPECT_EQ(settings->GetSubtitleInfo(nullptr, 0, nullptr, 0, nullptr, 0, nullptr), S_OK);

  for (const std::string& failing : {bad, folder.path().string() + "/missing.srt"}) {
    ASSERT_EQ(settings->SelectSubtitle(good.c_str(), nullptr), S_OK);
    EXPECT_EQ(settings->SelectSubtitle(failing.c_str(), nullptr), E_FAIL) << failing;
    EXPECT_EQ(pipeline.filter->FrameState().subtitleEntries, 0u);
  }
  for (const char* empty : {static_cast<const char*>(nullptr), ""}) {
    ASSERT_EQ(settings->SelectSubtitle(good.c_str(), nullptr), S_OK);
    EXPECT_EQ(settings->SelectSubtitle(empty, "German"), S_OK);
    EXPECT_EQ(pipeline.filter->FrameState().subtitleEntries, 0u);
  }
}

// A Y4M file with one grey frame of 64x8 at 25 fps.
std::string Y4mClip() {
  std::string clip = "YUV4MPEG2 W64 H8 F25:1 C422\nFRAME\n";
  clip.append(64 * 8 * 2, '\x80');
  return clip;
}

TEST(FilterInGraphTest, InputConnectionFindsTheFilmAndItsSubtitles) {
  const TempFolder folder;
  const std::string film = folder.Write("film.y4m", Y4mClip()).string();
  folder.Write("film.srt", kSubRip);
  std::FILE* file = std::fopen(film.c_str(), "rb");
  ASSERT_NE(file, nullptr);
  {
    const ComPtr<Y4mSource> source = MakeCom<Y4mSource>(file, -1, film);
    ASSERT_EQ(source->Open(), "");
    const ComPtr<VideoFilter> filter = MakeCom<VideoFilter>(Plain());
    const ComPtr<FilterGraph> graph = MakeCom<FilterGraph>();
    graph->AddFilter(source.Get(), u"Source");
    graph->AddFilter(filter.Get(), u"Korvalin");
    ASSERT_EQ(graph->ConnectDirect(source->GetPin(0), filter->GetPin(0), nullptr), S_OK);
    const FrameStateView state = filter->FrameState();
    EXPECT_EQ(state.sourceFileName, film);
    EXPECT_EQ(state.subtitleEntries, 1u);
    EXPECT_EQ(state.frameDuration, 400000);
    EXPECT_EQ(state.durationMs, 40);
    EXPECT_EQ(FindSourceFileName(filter->GetPin(1)).c_str(), film);  // through the filter
  }
  std::fclose(file);
}

// Frames stream while another thread uses every operation of the settings interface.
TEST(FilterInGraphTest, SettingsInterfaceWhileFramesStream) {
  const TempFolder folder;
  const std::string subs = folder.Write("a.srt", kSubRip).string();
  FilterPipeline pipeline(Plain(), Yuy2Type(64, 8));
  ASSERT_EQ(pipeline.Start(), S_OK);
  std::atomic<bool> done{false};
  std::thread user([&] {
    IFilterSettings* settings = pipeline.filter.Get();
    Settings changed = Plain();
    for (int i = 0; !done; ++i) {
      changed.Flip = i % 4;
      settings->SetSettings(&changed);
      settings->SelectSubtitle(i % 2 ? subs.c_str() : nullptr, "English");
      char file[256], format[32], languages[64];
      int32_t index = 0, current = 0, detected = 0;
      settings->GetSubtitleInfo(file, sizeof file, format, sizeof format, languages,
                                sizeof languages, &index);
      settings->GetFrameDurations(&current, &detected);
      OwningPtrArray<DynString> files;
      settings->FindSubtitleFiles(&files);
    }
  });
  for (int frame = 0; frame < 200; ++frame) ASSERT_EQ(pipeline.Push(Frame(frame)), S_OK);
  done = true;
  user.join();
  EXPECT_EQ(pipeline.sink->frames.size(), 200u);
}

}  // namespace
}  // namespace korvalin::testing
