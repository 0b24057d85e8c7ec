#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "apps/cli_runner.h"

namespace korvalin::testing {
namespace {

TEST(UsageCli, EachCommandPrintsItsUsageAndTheGeneralUsageListsThemAll) {
  const TempDir dir;
  const CliResult general = dir.Run({"--help"});
  EXPECT_EQ(general.status, 0);
  const struct {
    std::vector<std::string> args;
    std::string line;  // a line of its usage
  } cases[] = {
      {{"settings", "--help"}, "  settings set Name=Value ..."},
      {{"geometry", "--help"}, "  geometry WxH [--subtitles]"},
      {{"subs", "--help"}, "  subs picture FILE INDEX -o OUT.png"},
      {{"subs", "at", "x.srt", "--help"}, "  subs at FILE TIME_MS ..."},
      {{"text-image", "-h"}, "  text-image TEXT"},
      {{"render", "--help"}, "  render INPUT -o OUTPUT"},
      {{"graph", "--help"}, "  graph INPUT"},
      {{"register", "--help"}, "  register [MODULE]"},
      {{"unregister", "--help"}, "  unregister [MODULE]"},
      {{"demo", "--help"}, "  demo [-o DIR]"},
  };
  for (const auto& c : cases) {
    const CliResult r = dir.Run(c.args);
    EXPECT_EQ(r.status, 0) << c.args[0];
    EXPECT_TRUE(r.out.starts_with("usage:\n  " + c.args[0])) << r.out;
    EXPECT_NE(r.out.find(c.line), std::string::npos) << c.line;
    EXPECT_NE(general.out.find(r.out.substr(r.out.find('\n') + 1)), std::string::npos) << c.args[0];
  }
  const CliResult none = dir.Run({});
  EXPECT_EQ(none.status, 2);
  EXPECT_EQ(none.err, general.out);
}

}  // namespace
}  // namespace korvalin::testing
