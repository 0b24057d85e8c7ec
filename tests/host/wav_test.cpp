#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "host/filter_graph.h"
#include "host/wav_file_source.h"
#include "host/wav_file_writer.h"
#include "host/wav_files.h"
#include "host/wide_text.h"
#include "support/temp_folder.h"

namespace korvalin::host::testing {
namespace {

constexpr int32_t kGenerousMs = 10000;

std::string Le(uint32_t value, int bytes) {
  std::string out;
  for (int i = 0; i < bytes; ++i) out += static_cast<char>(value >> (8 * i));
  return out;
}

std::string Chunk(const std::string& id, const std::string& body, uint32_t size = UINT32_MAX) {
  const std::string pad = body.size() % 2 ? std::string(1, '\0') : "";
  return id + Le(size == UINT32_MAX ? static_cast<uint32_t>(body.size()) : size, 4) + body + pad;
}

std::string Fmt(uint16_t tag, uint16_t channels, uint32_t rate, uint16_t bits,
                uint16_t blockAlign = 0) {
  if (blockAlign == 0) blockAlign = static_cast<uint16_t>(channels * bits / 8);
  return Le(tag, 2) + Le(channels, 2) + Le(rate, 4) + Le(rate * blockAlign, 4) + Le(blockAlign, 2) +
         Le(bits, 2);
}

std::string Extensible(uint16_t bits, uint8_t subformat) {
  const std::string guidTail("\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 14);
  return Fmt(0xFFFE, 2, 48000, bits) + Le(22, 2) + Le(bits, 2) + Le(3, 4) +
         static_cast<char>(subformat) + '\0' + guidTail;
}

std::string Riff(const std::string& chunks) {
  return "RIFF" + Le(static_cast<uint32_t>(4 + chunks.size()), 4) + "WAVE" + chunks;
}

TEST(WavFormatTest, ParsesLayoutsAndRefusesDamagedHeaders) {
  const std::string pcm = Chunk("fmt ", Fmt(1, 2, 44100, 16));
  const std::string data = std::string(40, 'd');
  const struct {
    const char* name;
    std::string bytes;
    std::string error;
    uint64_t dataOffset = 0, dataBytes = 0;
    uint16_t bits = 16;
  } cases[] = {
      {"canonical", Riff(pcm + Chunk("data", data)), "", 44, 40},
      {"odd chunk before fmt", Riff(Chunk("LIST", "abc") + pcm + Chunk("data", data)), "", 56, 40},
      {"data past the end", Riff(pcm + Chunk("data", data, 1000)), "", 44, 40},
      {"part of a frame", Riff(pcm + Chunk("data", data.substr(0, 39))), "", 44, 36},
      {"extensible PCM", Riff(Chunk("fmt ", Extensible(24, 1)) + Chunk("data", data)), "", 68, 36,
       24},
      {"empty", "", "not a RIFF/WAVE file"},
      {"not WAVE", "RIFF\4\0\0\0AVI ", "not a RIFF/WAVE file"},
      {"no chunks", Riff(""), "no fmt chunk"},
      {"no data", Riff(pcm), "no data chunk"},
      {"data first", Riff(Chunk("data", data) + pcm), "data chunk before fmt chunk"},
      {"short fmt", Riff(Chunk("fmt ", Fmt(1, 2, 44100, 16).substr(0, 14))), "fmt chunk too short"},
      {"huge fmt", Riff(Chunk("fmt ", Fmt(1, 2, 44100, 16), 0xFFFFFFF0)), "truncated fmt chunk"},
      {"float", Riff(Chunk("fmt ", Fmt(3, 2, 44100, 32)) + Chunk("data", data)), "not PCM audio"},
      {"extensible float", Riff(Chunk("fmt ", Extensible(32, 3))), "not PCM audio"},
      {"12 bits", Riff(Chunk("fmt ", Fmt(1, 1, 8000, 12, 2))), "unsupported PCM format"},
      {"wrong block", Riff(Chunk("fmt ", Fmt(1, 2, 8000, 16, 2))), "unsupported PCM format"},
      {"no channels", Riff(Chunk("fmt ", Fmt(1, 0, 8000, 16))), "unsupported PCM format"},
      {"byte rate past 32 bits", Riff(Chunk("fmt ", Fmt(1, 8, 0x10000000, 32))),
       "unsupported PCM format"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const WavParse parse = ParseWavString(c.bytes);
    EXPECT_EQ(parse.error, c.error);
    if (!c.error.empty()) continue;
    EXPECT_EQ(parse.layout.dataOffset, c.dataOffset);
    EXPECT_EQ(parse.layout.dataBytes, c.dataBytes);
    EXPECT_EQ(parse.layout.format.wFormatTag, WAVE_FORMAT_PCM);
    EXPECT_EQ(parse.layout.format.wBitsPerSample, c.bits);
    EXPECT_EQ(parse.layout.format.nAvgBytesPerSec,
              parse.layout.format.nSamplesPerSec * parse.layout.format.nBlockAlign);
  }
}

TEST(WavFormatTest, CanonicalHeaderReadsBack) {
  const WAVEFORMATEX format = PcmFormat(8000, 1, 8);
  const std::string file = WavFileBytes(format, "abc");
  const WavParse parse = ParseWavString(file);
  ASSERT_EQ(parse.error, "");
  EXPECT_TRUE(MediaTypesEqual(PcmMediaType(parse.layout.format), PcmMediaType(format)));
  EXPECT_EQ(parse.layout.dataBytes, 3u);
  EXPECT_EQ(file.substr(4, 4), Le(36 + 3 + 1, 4));         // the RIFF size counts the pad byte
  EXPECT_EQ(WavHeaderBytes(format, UINT32_MAX)[7], 0xFF);  // and stops at 32 bits
}

class WavFileTest : public ::testing::Test {
 protected:
  WavFileTest() {
    input = WavFileBytes(format, CountingBytes(12345 * format.nBlockAlign));
    inputPath = folder.Write("in.wav", input);
  }
  // Connects a source of `path` straight to `writer` in a fresh graph.
  void Connect(const std::filesystem::path& path, WavFileWriter* writer) {
    graph = MakeCom<FilterGraph>(&registry);
    source = MakeCom<WavFileSource>(path.string());
    ASSERT_EQ(source->Open(), "");
    ASSERT_EQ(graph->AddFilter(source.Get(), u"Source"), S_OK);
    ASSERT_EQ(graph->AddFilter(writer, u"Writer"), S_OK);
    ASSERT_EQ(graph->ConnectDirect(source->GetPin(0), writer->GetPin(0), nullptr), S_OK);
  }
  int32_t RunToEnd() {
    EXPECT_EQ(graph->Run(), S_OK);
    int32_t code = 0;
    EXPECT_EQ(graph->WaitForCompletion(kGenerousMs, &code), S_OK);
    graph->Stop();
    return code;
  }

  const WAVEFORMATEX format = PcmFormat(22050);
  korvalin::testing::TempFolder folder;
  std::string input;
  std::filesystem::path inputPath;
  FilterRegistry registry;
  ComPtr<FilterGraph> graph;
  ComPtr<WavFileSource> source;
};

TEST_F(WavFileTest, CopiesAFileByteForByteOnEveryRun) {
  const auto outputPath = folder.path() / "out.wav";
  auto writer = MakeCom<WavFileWriter>(outputPath.string());
  Connect(inputPath, writer.Get());
  std::u16string name;
  ASSERT_EQ(QueryAs<IFileSourceFilter>(static_cast<IBaseFilter*>(source.Get()))
                ->GetCurFile(&name, nullptr),
            S_OK);
  EXPECT_EQ(Narrow(name), inputPath.string());
  double seconds = 0;
  ASSERT_EQ(graph->get_Duration(&seconds), S_OK);
  EXPECT_DOUBLE_EQ(seconds, 12345.0 / 22050);

  for (int run = 0; run < 2; ++run) {
    EXPECT_EQ(RunToEnd(), EC_COMPLETE);
    EXPECT_EQ(writer->BytesWritten(), input.size() - kWavHeaderBytes);
    EXPECT_TRUE(ReadWholeFile(outputPath) == input) << run;
  }
}

TEST_F(WavFileTest, WritesIntoTheCallersFileFromWhereItStands) {
  std::FILE* file = std::tmpfile();
  ASSERT_TRUE(file);
  std::fputs("prefix", file);
  auto writer = MakeCom<WavFileWriter>(file);
  Connect(inputPath, writer.Get());
  EXPECT_EQ(RunToEnd(), EC_COMPLETE);
  std::string written(6 + input.size() + 1, '\0');
  std::rewind(file);
  written.resize(std::fread(written.data(), 1, written.size(), file));
  std::fclose(file);
  EXPECT_TRUE(written == "prefix" + input);
}

TEST_F(WavFileTest, AWriteErrorAbortsTheStream) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
  auto writer = MakeCom<WavFileWriter>(std::string("/dev/full"));
  Connect(inputPath, writer.Get());
  EXPECT_EQ(RunToEnd(), EC_ERRORABORT);
  EXPECT_EQ(writer->Error().rfind("write failed", 0), 0u) << writer->Error();
}

TEST_F(WavFileTest, OpenReportsUnplayableFiles) {
  auto missing = MakeCom<WavFileSource>((folder.path() / "missing.wav").string());
  EXPECT_EQ(missing->Open().rfind("cannot open", 0), 0u);
  auto text = MakeCom<WavFileSource>(folder.Write("text.wav", "hello").string());
  EXPECT_EQ(text->Open(), "not a RIFF/WAVE file");
  EXPECT_EQ(text->GetPin(0)->GetMediaType(0, nullptr), VFW_S_NO_MORE_ITEMS);
}

}  // namespace
}  // namespace korvalin::host::testing
