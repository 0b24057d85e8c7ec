#include <gtest/gtest.h>

#include <string>

#include "cli_runner.h"
#include "subtitles/vobsub_writer.h"

namespace korvalin {
namespace {

using testing::BlockUnit;
using testing::IndexHeader;
using testing::ReadFile;
using testing::RunCli;
using testing::SubStream;
using testing::TempDir;
using testing::TimestampLine;

// A two-language VobSub: English units 10 x 2 and 11 x 2, German 20 x 4 and 21 x 4, with
// an end-of-row code in the German ones' second row.
std::string WriteTwoLanguages(const TempDir& dir) {
  SubStream sub;
  const int64_t en1 = sub.Add(BlockUnit(10, 2), 0x20);
  testing::UnitSpec de = BlockUnit(20, 4);
  de.rows[1] = {{5, 1}, {0, 0}};
  const int64_t de1 = sub.Add(de, 0x21);
  const int64_t en2 = sub.Add(BlockUnit(11, 2), 0x20);
  const int64_t de2 = sub.Add(BlockUnit(21, 4, 200), 0x21);
  const std::string idx = IndexHeader() + "id: en, index: 0\n" + TimestampLine(1000, en1) +
                          TimestampLine(3000, en2) + "id: de, index: 1\n" +
                          TimestampLine(1500, de1) + TimestampLine(3500, de2);
  dir.Write("film.idx", idx);
  return dir.Write("film.sub", sub.bytes()).string();
}

TEST(SubsPictureCli, DumpReadsOnlyTheGermanBlock) {
  const TempDir dir;
  const std::string sub = WriteTwoLanguages(dir);
  const auto r = RunCli({"subs", "dump", sub, "--lang", "German"}, dir.registry());
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("\"format\":\"VobSub 6\""), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("\"streams\":[\"English\",\"German\"],\"streamIndex\":1"), std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("\"entries\":2"), std::string::npos) << r.out;
  // Row 1 of the first German unit has 5 pixels, the other rows 20: 65 pixels of luma 31.
  EXPECT_NE(r.out.find("{\"start\":1500,\"stop\":2637,\"kind\":\"picture\",\"width\":20,"
                       "\"height\":4,\"opaque\":65,\"sum\":2015}"),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("{\"start\":3500,\"stop\":5775,\"kind\":\"picture\",\"width\":21,"
                       "\"height\":4,\"opaque\":84,\"sum\":2604}"),
            std::string::npos)
      << r.out;
  EXPECT_EQ(r.out.find("\"width\":10"), std::string::npos);

  const auto english = RunCli({"subs", "dump", sub, "--lang", "Klingon"}, dir.registry());
  ASSERT_EQ(english.status, 0) << english.err;
  EXPECT_NE(english.out.find("\"start\":1000,\"stop\":2137,\"kind\":\"picture\",\"width\":10"),
            std::string::npos)
      << english.out;
}

TEST(SubsPictureCli, WritesTheEntrysPictureAsGreyAlphaPng) {
  const TempDir dir;
  const std::string sub = WriteTwoLanguages(dir);
  const std::string out = (dir.path() / "de1.png").string();
  const auto r =
      RunCli({"subs", "picture", sub, "1", "-o", out, "--lang", "German"}, dir.registry());
  ASSERT_EQ(r.status, 0) << r.err;
  const std::string png = ReadFile(out);
  EXPECT_EQ(testing::PngSize(png), std::make_pair(21u, 4u));
  EXPECT_EQ(png.substr(24, 2), std::string("\x08\x04", 2));  // 8 bits, grey with alpha
}

TEST(SubsPictureCli, ReportsBadArgumentsAndMissingEntries) {
  const TempDir dir;
  const std::string sub = WriteTwoLanguages(dir);
  const std::string out = (dir.path() / "x.png").string();
  dir.ExpectFailures({{"subs", "picture", sub, "0"},
                      {"subs", "picture", sub, "-o", out},
                      {"subs", "picture", sub, "x", "-o", out},
                      {"subs", "picture", sub, "-1", "-o", out},
                      {"subs", "picture", sub, "0", "-o", out, "--bad", "1"}},
                     2, "");
  dir.ExpectFailures({{"subs", "picture", sub, "2", "-o", out}}, 1, "does not exist");
  const std::string srt = dir.Write("t.srt", "1\n00:00:01,000 --> 00:00:02,000\nHi\n").string();
  dir.ExpectFailures({{"subs", "picture", srt, "0", "-o", out}}, 1, "no picture");
  dir.ExpectFailures({{"subs", "picture", (dir.path() / "none.sub").string(), "0", "-o", out}}, 1,
                     "");
}

}  // namespace
}  // namespace korvalin
