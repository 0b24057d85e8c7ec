#include <gtest/gtest.h>

#include <string>

#include "apps/cli_runner.h"

namespace korvalin::testing {
namespace {

constexpr const char* kTwoCues =
    "1\n00:00:10,000 --> 00:00:11,000\nca\xC3\xA7\x61 \"q\"\n\tline 2\n\n"
    "2\n00:00:05,000 --> 00:00:06,500\nfirst\n";

std::string Entry(int start, int stop, const std::string& text) {
  return "{\"start\":" + std::to_string(start) + ",\"stop\":" + std::to_string(stop) +
         ",\"kind\":\"text\",\"text\":\"" + text + "\"}\n";
}

TEST(SubsCli, DumpPrintsTheTrackAsJsonLines) {
  const TempDir dir;
  const std::string file = dir.Write("a.srt", kTwoCues).string();
  const CliResult r = dir.Run({"subs", "dump", file});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "{\"result\":0,\"format\":\"SubRip\",\"file\":\"" + file +
                       "\",\"fileDelay\":0,\"streams\":[],\"streamIndex\":0,"
                       "\"framesPending\":false,\"entries\":2}\n" +
                       Entry(5000, 6500, "first") +
                       Entry(10000, 11000, "ca\\u00c3\\u00a7a \\\"q\\\"\\n\\tline 2"));
  // Rejected files: exit status 1 and the loader's result.
  const std::string blank = dir.Write("blank.srt", "\n\n").string();
  for (const auto& [path, result] :
       {std::pair{dir.path().string() + "/missing.srt", "-1"}, std::pair{blank, "1"}}) {
    const CliResult bad = dir.Run({"subs", "dump", path});
    EXPECT_EQ(bad.status, 1);
    EXPECT_TRUE(bad.out.starts_with(std::string("{\"result\":") + result +
                                    ",\"format\":\"\",\"file\":\"\","))
        << bad.out;
  }
}

TEST(SubsCli, DumpsFrameRatesAndChosenLanguages) {
  const TempDir dir;
  dir.Write("en.srt", "1\n00:00:01,000 --> 00:00:02,000\nHello\n");
  dir.Write("fr.sub", "[DELAY]100\n00:00:01.00,00:00:02.00\nBonjour\n\n");
  const struct {
    const char* name;
    std::string bytes;
    std::vector<std::string> options;
    std::string facts;  // part of the first line
    std::string entries;
  } cases[] = {
      {"rated.txt", "{1}{1}25\n{25}{50}{y:i}a|b\n", {}, "\"MicroDVD\"", Entry(1000, 2000, "a\\nb")},
      {"plain.sub", "{50}{}x\n", {"--fps", "10"}, "\"MicroDVD\"", Entry(5000, 2147483647, "x")},
      {"film.smi",
       "<SAMI><HEAD><STYLE TYPE=\"text/css\"><!--\n.ENUSCC {Name: English; lang: en-US;}\n"
       ".FRFRCC {Name: French; lang: fr-FR;}\n--></STYLE></HEAD><BODY>\n"
       "<SYNC Start=1000><P Class=ENUSCC>Hello<br>world\n<P Class=FRFRCC>Bonjour<br>le monde\n"
       "<SYNC Start=4000><P Class=ENUSCC>&nbsp;<P Class=FRFRCC>&nbsp;\n</BODY></SAMI>\n",
       {"--lang", "french"},
       "\"SAMI\",\"file\":\"" + (dir.path() / "film.smi").string() +
           "\",\"fileDelay\":0,\"streams\":[\"English\",\"French\"],\"streamIndex\":1,",
       Entry(1000, 3999, "Bonjour\\nle monde")},
      {"film.ini",
       "[Micro DVD Ini File]\n[Subtitles]\n1=Lng:English\nFile=en.srt\n2=Lng:French\n"
       "File=fr.sub\n",
       {"--lang", "french"},
       "\"MicroDVD-INI\",\"file\":\"" + (dir.path() / "film.ini").string() +
           "\",\"fileDelay\":1000,\"streams\":[\"English\",\"French\"],\"streamIndex\":1,",
       Entry(1000, 2000, "Bonjour")},
  };
  for (const auto& c : cases) {
    std::vector<std::string> args = {"subs", "dump", dir.Write(c.name, c.bytes).string()};
    args.insert(args.end(), c.options.begin(), c.options.end());
    const CliResult r = dir.Run(args);
    EXPECT_EQ(r.status, 0) << c.name << r.err;
    const std::string facts = r.out.substr(0, r.out.find('\n'));
    EXPECT_NE(facts.find("\"format\":" + c.facts), std::string::npos) << facts;
    EXPECT_NE(facts.find("\"entries\":1}"), std::string::npos) << facts;
    EXPECT_EQ(r.out.substr(r.out.find('\n') + 1), c.entries) << c.name;
  }
}

TEST(SubsCli, AtAppliesSpeedAndDelayFromTheStore) {
  const TempDir dir;
  const std::string file = dir.Write("a.srt", kTwoCues).string();
  const struct {
    const char *speed, *delay;
    std::vector<std::string> times;
    std::string want;
  } cases[] = {
      {"1000",
       "0",
       {"4999", "5000", "7000", "10500"},
       "4999\t-1\t\n5000\t0\tfirst\n7000\t-1\t\n10500\t1\tca\\u00c3\\u00a7a \\\"q\\\"\\n\\tline "
       "2\n"},
      {"1000", "1000", {"5999", "6000"}, "5999\t-1\t\n6000\t0\tfirst\n"},  // later by 1 s
      {"2000", "0", {"2499", "2500", "3250"}, "2499\t-1\t\n2500\t0\tfirst\n3250\t0\tfirst\n"},
  };
  for (const auto& c : cases) {
    ASSERT_EQ(dir.Run({"settings", "set", std::string("SubSpeed=") + c.speed,
                       std::string("SubDelay=") + c.delay})
                  .status,
              0);
    std::vector<std::string> args = {"subs", "at", file};
    args.insert(args.end(), c.times.begin(), c.times.end());
    const CliResult r = dir.Run(args);
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, c.want) << c.speed << " " << c.delay;
  }
}

TEST(SubsCli, FindListsTheCandidatesInOrder) {
  const TempDir dir;
  const std::string films = dir.path().string() + "/Films/";
  for (const char* name : {"Harbour.1998.srt", "Harbour.1998.en.srt", "Harbour.1998.sub",
                           "Subtitles.txt", "Harbour.1998.avi"})
    dir.Write(std::string("Films/") + name, "x");
  const std::string want = films + "Harbour.1998.srt\n" + films + "Harbour.1998.sub\n" + films +
                           "Harbour.1998.en.srt\n" + films + "Subtitles.txt\n";
  const std::string video = films + "Harbour.1998.avi";
  const CliResult r = dir.Run({"subs", "find", video, "--path", "/nonexistent;."});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, want);
  ASSERT_EQ(dir.Run({"settings", "set", "SubPath=" + films + ";."}).status, 0);
  EXPECT_EQ(dir.Run({"subs", "find", video}).out, want);  // duplicates removed
}

TEST(SubsCli, BadArgumentsExitWithTwo) {
  const TempDir dir;
  const std::string file = dir.Write("a.srt", kTwoCues).string();
  dir.ExpectFailures({{"subs"},
                      {"subs", "dump"},
                      {"subs", "dump", file, "--fps", "fast"},
                      {"subs", "dump", file, "--lang"},
                      {"subs", "dump", file, "--bogus", "1"},
                      {"subs", "at", file},
                      {"subs", "at", file, "12x"},
                      {"subs", "find"},
                      {"subs", "play", file}},
                     2, "korvalin");
  // A file that does not load is an error too, with the reason.
  const std::string blank = dir.Write("blank.srt", "\n\n").string();
  dir.ExpectFailures({{"subs", "at", (dir.path() / "missing.srt").string(), "100"}}, 2,
                     "korvalin: cannot open '" + (dir.path() / "missing.srt").string() +
                         "': No such file or directory");
  dir.ExpectFailures({{"subs", "at", blank, "100"}}, 2,
                     "korvalin: cannot read '" + blank + "' as a subtitle file");
}

}  // namespace
}  // namespace korvalin::testing
