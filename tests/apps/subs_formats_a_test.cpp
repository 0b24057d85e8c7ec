#include <gtest/gtest.h>

#include <string>

#include "apps/cli_runner.h"

namespace korvalin::testing {
namespace {

// The dump of FILE after its first line (the file's facts), one JSON object per entry.
std::string DumpedEntries(const CliResult& r) {
  return r.out.substr(r.out.find('\n') + 1);
}

TEST(SubsFormatsA, TwoLanguageSamiGivesTheFrenchCaptions) {
  const TempDir dir;
  const std::string file =
      dir.Write("film.smi",
                "<SAMI><HEAD><STYLE TYPE=\"text/css\"><!--\n"
                ".ENUSCC {Name: English; lang: en-US;}\n"
                ".FRFRCC {Name: French; lang: fr-FR;}\n"
                "--></STYLE></HEAD><BODY>\n"
                "<SYNC Start=1000><P Class=ENUSCC>Hello<br>world\n"
                "<P Class=FRFRCC>Bonjour<br>le monde\n"
                "<SYNC Start=4000><P Class=ENUSCC>&nbsp;<P Class=FRFRCC>&nbsp;\n"
                "</BODY></SAMI>\n")
          .string();
  const CliResult r = RunCli({"subs", "dump", file, "--lang", "french"}, dir.registry());
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("\"format\":\"SAMI\""), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("\"streams\":[\"English\",\"French\"],\"streamIndex\":1,"),
            std::string::npos)
      << r.out;
  EXPECT_EQ(DumpedEntries(r),
            "{\"start\":1000,\"stop\":3999,\"kind\":\"text\",\"text\":\"Bonjour\\nle monde\"}\n");
}

TEST(SubsFormatsA, DumpsEveryFormatOfThisFamily) {
  const struct {
    const char* name;
    const char* bytes;
    const char* format;
    const char* entries;
  } cases[] = {
      {"a.txt", "00:00:01:Hi|there\n", "TMPlayer",
       "{\"start\":1000,\"stop\":5000,\"kind\":\"text\",\"text\":\"Hi\\nthere\"}\n"},
      {"a.aqt", "-->> 0\n25\n\n-->> 50\nHi\n\n", "AqTitle",
       "{\"start\":2000,\"stop\":2147483647,\"kind\":\"text\",\"text\":\"Hi\"}\n"},
      {"a.rt", "<time begin=\"1.5\" end=\"2\"/>Hi", "RealText",
       "{\"start\":1500,\"stop\":2000,\"kind\":\"text\",\"text\":\"Hi\"}\n"},
      {"a.sub", "{T 00:00:01:00 D=50\nHi\n}", "DVDSubtitle",
       "{\"start\":1000,\"stop\":1500,\"kind\":\"text\",\"text\":\"Hi\"}\n"},
  };
  const TempDir dir;
  for (const auto& c : cases) {
    const CliResult r =
        RunCli({"subs", "dump", dir.Write(c.name, c.bytes).string()}, dir.registry());
    EXPECT_EQ(r.status, 0) << c.name << r.err;
    EXPECT_NE(r.out.find(std::string("\"format\":\"") + c.format + "\""), std::string::npos)
        << r.out;
    EXPECT_EQ(DumpedEntries(r), c.entries) << c.name;
  }
}

}  // namespace
}  // namespace korvalin::testing
