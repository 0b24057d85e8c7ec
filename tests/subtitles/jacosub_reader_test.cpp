#include "subtitles/readers/jacosub_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "loader_detection_entries.h"

namespace korvalin {
namespace {

using testing::ExpectReaderCases;
using testing::ReaderCase;

TEST(JacoSubReader, ReadsTimedLinesAndWorksOutTheirCodes) {
  const ReaderCase cases[] = {
      {"line break", "0:00:01.00 0:00:03.50 D Hello\\nWorld\n", 0, "1000-3500:Hello/World|"},
      {"comment", "0:00:01.00 0:00:02.00 D Billy{an actor} said\n", 0, "1000-2000:Billy said|"},
      {"hard space and escaped tilde", "0:00:01.00 0:00:02.00 D a~b\\~c\n", 0, "1000-2000:a b~c|"},
      {"escaped specials", "0:00:01.00 0:00:02.00 D \\\\ \\{x\n", 0, "1000-2000:\\ {x|"},
      {"colour and font codes with their argument", "0:00:01.00 0:00:02.00 D \\C1a\\Fbb\\C\n", 0,
       "1000-2000:ab|"},
      {"other codes vanish", "0:00:01.00 0:00:02.00 D \\Bbold\\b \\Nx\\\n", 0, "1000-2000:bold x|"},
      {"escapes inside comments are not", "0:00:01.00 0:00:02.00 D a{\\}b\n", 0, "1000-2000:ab|"},
      {"text spaces kept", "0:00:01.00 0:00:02.00 VL3 a  b \n", 0, "1000-2000:a  b |"},
      {"empty text kept, sorted",
       "#TITLE x\n\n0:00:05.00 0:00:06.00 D \n"
       "0:00:01.00 0:00:02.00 D a\n",
       0, "1000-2000:a|5000-6000:|"},
      {"only directives", "#TIMERES 100\n#T 50\n", 1, ""},
      {"two spaces only", "0:00:01.00 0:00:02.00 D\n", -1, ""},
      {"leading space", " 0:00:01.00 0:00:02.00 D x\n", -1, ""},
      {"frame timing", "100 200 D x\n", -1, ""},
      {"prefixed time", "@0:00:01.00 0:00:02.00 D x\n", -1, ""},
  };
  ExpectReaderCases(ReadJacoSub, "JACOsub", "case.js", cases);
}

}  // namespace
}  // namespace korvalin
