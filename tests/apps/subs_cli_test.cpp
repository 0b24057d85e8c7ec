#include <gtest/gtest.h>

#include <string>

#include "apps/cli_runner.h"

namespace korvalin::testing {
namespace {

constexpr const char* kTwoCues =
    "1\n00:00:10,000 --> 00:00:11,000\nca\xC3\xA7\x61 \"q\"\n\tline 2\n\n"
    "2\n00:00:05,000 --> 00:00:06,500\nfirst\n";

TEST(SubsCli, DumpPrintsTheTrackAsJsonLines) {
  const TempDir dir;
  const std::string file = dir.Write("a.srt", kTwoCues).string();
  const CliResult r = RunCli({"subs", "dump", file}, dir.registry());
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out,
            "{\"result\":0,\"format\":\"SubRip\",\"file\":\"" + file +
                "\",\"fileDelay\":0,\"streams\":[],\"streamIndex\":0,\"framesPending\":false,"
                "\"entries\":2}\n"
                "{\"start\":5000,\"stop\":6500,\"kind\":\"text\",\"text\":\"first\"}\n"
                "{\"start\":10000,\"stop\":11000,\"kind\":\"text\",\"text\":"
                "\"ca\\u00c3\\u00a7a \\\"q\\\"\\n\\tline 2\"}\n");
}

TEST(SubsCli, DumpReportsRejectionsWithExitStatusOne) {
  const TempDir dir;
  const std::string blank = dir.Write("blank.srt", "\n\n").string();
  const struct {
    std::string file;
    const char* result;
  } cases[] = {{dir.path().string() + "/missing.srt", "-1"}, {blank, "1"}};
  for (const auto& c : cases) {
    const CliResult r = RunCli({"subs", "dump", c.file}, dir.registry());
    EXPECT_EQ(r.status, 1);
    const std::string head =
        std::string("{\"result\":") + c.result + ",\"format\":\"\",\"file\":\"\",";
    EXPECT_TRUE(r.out.starts_with(head)) << r.out << head;
  }
}

TEST(SubsCli, BadArgumentsExitWithTwo) {
  const TempDir dir;
  const std::string file = dir.Write("a.srt", kTwoCues).string();
  const std::vector<std::vector<std::string>> cases = {
      {"subs"},
      {"subs", "dump"},
      {"subs", "dump", file, "--fps", "fast"},
      {"subs", "dump", file, "--lang"},
      {"subs", "dump", file, "--bogus", "1"},
      {"subs", "at", file},
      {"subs", "at", file, "12x"},
      {"subs", "find"},
      {"subs", "play", file},
  };
  for (const auto& args : cases) {
    const CliResult r = RunCli(args, dir.registry());
    EXPECT_EQ(r.status, 2) << args.back();
    EXPECT_FALSE(r.err.empty());
  }
}

TEST(SubsCli, AtAppliesSpeedAndDelayFromTheStore) {
  const TempDir dir;
  const std::string file = dir.Write("a.srt", kTwoCues).string();
  const struct {
    const char* speed;
    const char* delay;
    std::vector<std::string> times;
    std::string want;
  } cases[] = {
      {"1000", "0", {"4999", "5000", "7000", "10500"},
       "4999\t-1\t\n5000\t0\tfirst\n7000\t-1\t\n10500\t1\tca\\u00c3\\u00a7a \\\"q\\\"\\n\\tline 2\n"},
      {"1000", "1000", {"5999", "6000"}, "5999\t-1\t\n6000\t0\tfirst\n"},  // later by 1 s
      {"2000", "0", {"2499", "2500", "3250"}, "2499\t-1\t\n2500\t0\tfirst\n3250\t0\tfirst\n"},
  };
  for (const auto& c : cases) {
    ASSERT_EQ(RunCli({"settings", "set", std::string("SubSpeed=") + c.speed,
                      std::string("SubDelay=") + c.delay},
                     dir.registry())
                  .status,
              0);
    std::vector<std::string> args = {"subs", "at", file};
    args.insert(args.end(), c.times.begin(), c.times.end());
    const CliResult r = RunCli(args, dir.registry());
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, c.want) << c.speed << " " << c.delay;
  }
}

TEST(SubsCli, FindListsTheCandidatesInOrder) {
  const TempDir dir;
  const std::string films = dir.path().string() + "/Films/";
  for (const char* name : {"Harbour.1998.srt", "Harbour.1998.en.srt", "Harbour.1998.sub",
                           "Subtitles.txt", "Harbour.1998.avi"}) {
    dir.Write(std::string("Films/") + name, "x");
  }
  const std::string want = films + "Harbour.1998.srt\n" + films + "Harbour.1998.sub\n" + films +
                           "Harbour.1998.en.srt\n" + films + "Subtitles.txt\n";
  const std::string video = films + "Harbour.1998.avi";
  const CliResult r = RunCli({"subs", "find", video, "--path", "/nonexistent;."}, dir.registry());
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, want);
  ASSERT_EQ(RunCli({"settings", "set", "SubPath=" + films + ";."}, dir.registry()).status, 0);
  EXPECT_EQ(RunCli({"subs", "find", video}, dir.registry()).out, want);  // duplicates removed
}

}  // namespace
}  // namespace korvalin::testing
