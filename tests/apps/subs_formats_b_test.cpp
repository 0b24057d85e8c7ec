#include <gtest/gtest.h>

#include <string>

#include "apps/cli_runner.h"

namespace korvalin::testing {
namespace {

std::string Summary(const std::string& format, const std::string& file, int fileDelay,
                    const std::string& streams, int streamIndex, bool framesPending, int entries) {
  return "{\"result\":0,\"format\":\"" + format + "\",\"file\":\"" + file +
         "\",\"fileDelay\":" + std::to_string(fileDelay) + ",\"streams\":[" + streams +
         "],\"streamIndex\":" + std::to_string(streamIndex) +
         ",\"framesPending\":" + (framesPending ? "true" : "false") +
         ",\"entries\":" + std::to_string(entries) + "}\n";
}

TEST(SubsFormatsB, DumpReadsFramesWithTheFileRateOrTheGivenOne) {
  const TempDir dir;
  const std::string rated = dir.Write("rated.txt", "{1}{1}25\n{25}{50}{y:i}a|b\n").string();
  CliResult r = RunCli({"subs", "dump", rated}, dir.registry());
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, Summary("MicroDVD", rated, 0, "", 0, false, 1) +
                       "{\"start\":1000,\"stop\":2000,\"kind\":\"text\",\"text\":\"a\\nb\"}\n");

  const std::string plain = dir.Write("plain.sub", "{50}{}x\n").string();
  r = RunCli({"subs", "dump", plain, "--fps", "10"}, dir.registry());
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, Summary("MicroDVD", plain, 0, "", 0, false, 1) +
                       "{\"start\":5000,\"stop\":2147483647,\"kind\":\"text\",\"text\":\"x\"}\n");
}

TEST(SubsFormatsB, DumpShowsTheIniLanguagesAndTheChosenOne) {
  const TempDir dir;
  dir.Write("en.srt", "1\n00:00:01,000 --> 00:00:02,000\nHello\n");
  dir.Write("fr.sub", "[DELAY]100\n00:00:01.00,00:00:02.00\nBonjour\n\n");
  const std::string ini = dir.Write("film.ini",
                                    "[Micro DVD Ini File]\n[Subtitles]\n1=Lng:English\n"
                                    "File=en.srt\n2=Lng:French\nFile=fr.sub\n")
                              .string();
  const CliResult r = RunCli({"subs", "dump", ini, "--lang", "french"}, dir.registry());
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, Summary("MicroDVD-INI", ini, 1000, "\"English\",\"French\"", 1, false, 1) +
                       "{\"start\":1000,\"stop\":2000,\"kind\":\"text\",\"text\":\"Bonjour\"}\n");
}

TEST(SubsFormatsB, DumpReadsSubStationAlphaAndJacoSub) {
  const TempDir dir;
  const std::string ssa = dir.Write("a.ssa",
                                    "[Script Info]\nScriptType: v4.00\nTimer: 50\n[Events]\n"
                                    "Dialogue: Marked=0,0:00:02.00,0:00:04.00,Default,,0,0,0,,"
                                    "{\\i1}Hi\\Nthere\n")
                              .string();
  CliResult r = RunCli({"subs", "dump", ssa}, dir.registry());
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out,
            Summary("Sub Station Alpha", ssa, 0, "", 0, false, 1) +
                "{\"start\":1000,\"stop\":2000,\"kind\":\"text\",\"text\":\"Hi\\nthere\"}\n");

  const std::string js = dir.Write("a.js", "#TITLE x\n0:00:01.00 0:00:02.50 D a~b\\nc\n").string();
  r = RunCli({"subs", "dump", js}, dir.registry());
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, Summary("JACOsub", js, 0, "", 0, false, 1) +
                       "{\"start\":1000,\"stop\":2500,\"kind\":\"text\",\"text\":\"a b\\nc\"}\n");
}

}  // namespace
}  // namespace korvalin::testing
