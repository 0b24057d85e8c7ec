#include "subtitles/readers/microdvd_ini_reader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "loader_detection_entries.h"
#include "subtitles/subtitle_loader.h"
#include "support/temp_folder.h"

namespace korvalin {
namespace {

using testing::DescribeEntries;
using testing::TempFolder;

constexpr const char* kHeader = " [micro dvd ini file] \n";
constexpr const char* kTwoLanguages =
    "[Subtitles]\n1=Lng:English\nFile=en.txt\n2=Lng:French ; the second\nFile=fr.txt\n";

std::vector<std::string> StreamNames(const SubtitleTrack& track) {
  std::vector<std::string> names;
  for (const DynString* name : track.streamNames) names.emplace_back(name->c_str());
  return names;
}

class MicroDvdIniReader : public ::testing::Test {
 protected:
  MicroDvdIniReader() {
    folder_.Write("en.txt", "{1}{1}25\n{25}{50}Hello\n");
    folder_.Write("fr.txt", "{1}{1}25\n{50}{75}Bonjour\n");
  }
  // Reads the INI text written as name, with the given preferred language.
  int Read(const std::string& name, const std::string& text, const char* language = "") {
    path_ = folder_.Write(name, text);
    track_.preferredLanguage.Assign(language);
    return ReadMicroDvdIni(track_, path_.c_str());
  }

  TempFolder folder_;
  SubtitleTrack track_;
  std::string path_;
};

TEST_F(MicroDvdIniReader, LoadsTheFileOfThePreferredLanguage) {
  ASSERT_EQ(Read("a.ini", kHeader + std::string(kTwoLanguages), "FRENCH"), 0);
  EXPECT_EQ(DescribeEntries(track_), "2000-3000:Bonjour|");
  EXPECT_EQ(track_.streamIndex, 1);
  EXPECT_EQ(StreamNames(track_), (std::vector<std::string>{"English", "French"}));
  EXPECT_EQ(track_.fileName, path_.c_str());
  EXPECT_EQ(track_.formatName, "MicroDVD-INI");
  EXPECT_FALSE(track_.framesPending);
}

TEST_F(MicroDvdIniReader, FallsBackToTheFirstLanguage) {
  ASSERT_EQ(Read("a.mdv", kHeader + std::string(kTwoLanguages), "German"), 0);
  EXPECT_EQ(DescribeEntries(track_), "1000-2000:Hello|");
  EXPECT_EQ(track_.streamIndex, 0);
}

TEST_F(MicroDvdIniReader, FindsTheNamedFile) {
  folder_.Write("subs/Deep.TXT", "{10}{20}deep\n");
  const struct {
    const char* name;
    std::string directory;
    const char* file;
  } cases[] = {
      {"relative folder", "Directory=subs\n", "Deep.TXT"},
      {"absolute folder", "DIRECTORY=" + (folder_.path() / "subs").string() + "\n", "Deep.TXT"},
      {"other letter case", "Directory=./subs/\n", "deep.txt"},
      {"backslashes", "Directory=.\n", "subs\\deep.txt"},
      {"folder in other letters", "Directory=SUBS\n", "deep.txt"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Read("a.ini", kHeader + std::string("[SUBTITLES]\n") + c.directory +
                                "1=Lng:Any\nFile=" + c.file + "\n"),
              0)
        << c.name;
    EXPECT_EQ(DescribeEntries(track_), "10-20:deep|") << c.name;
    EXPECT_TRUE(track_.framesPending) << c.name;  // the inner reader's state stays
  }
}

TEST_F(MicroDvdIniReader, RejectsWhatDoesNotNameALoadableFile) {
  const struct {
    const char* name;
    std::string text;
  } cases[] = {
      {"no header", "[Subtitles]\n1=Lng:English\nFile=en.txt\n"},
      {"language without its file", std::string(kHeader) + "[Subtitles]\n1=Lng:English\n"},
      {"outside the subtitles section",
       std::string(kHeader) + "[Other]\n1=Lng:English\nFile=en.txt\n"},
      {"file commented out", std::string(kHeader) + "[Subtitles]\n1=Lng:English\n;File=en.txt\n"},
      {"missing file", std::string(kHeader) + "[Subtitles]\n1=Lng:English\nFile=none.txt\n"},
      {"folder climbing above the root",
       std::string(kHeader) +
           "[Subtitles]\nDirectory=../../../../../../../../../../..\n1=Lng:English\nFile=en.txt\n"},
      {"names itself", std::string(kHeader) + "[Subtitles]\n1=Lng:Self\nFile=self.ini\n"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Read("self.ini", c.text), -1) << c.name;
    EXPECT_TRUE(track_.entries.IsEmpty()) << c.name;
  }
}

TEST_F(MicroDvdIniReader, FilesNamingEachOtherFailInsteadOfRecursing) {
  folder_.Write("b.ini", std::string(kHeader) + "[Subtitles]\n1=Lng:Any\nFile=a.ini\n");
  EXPECT_EQ(Read("a.ini", std::string(kHeader) + "[Subtitles]\n1=Lng:Any\nFile=b.ini\n"), -1);
  // A chain within the bound still loads.
  folder_.Write("c.ini", std::string(kHeader) + "[Subtitles]\n1=Lng:Any\nFile=en.txt\n");
  EXPECT_EQ(Read("d.ini", std::string(kHeader) + "[Subtitles]\n1=Lng:Any\nFile=c.ini\n"), 0);
  EXPECT_EQ(track_.fileName, path_.c_str());
}

TEST_F(MicroDvdIniReader, ALanguageWaitingForItsFileIgnoresTheNext) {
  ASSERT_EQ(Read("a.ini",
                 std::string(kHeader) + "[Subtitles]\n1=Lng:English\n2=Lng:French\nFile=fr.txt\n",
                 "French"),
            0);
  EXPECT_EQ(StreamNames(track_), (std::vector<std::string>{"English"}));
  EXPECT_EQ(DescribeEntries(track_), "2000-3000:Bonjour|");
}

TEST_F(MicroDvdIniReader, BareFileNameHasNoFolderToResolve) {
  const std::filesystem::path before = std::filesystem::current_path();
  folder_.Write("bare.ini", kHeader + std::string(kTwoLanguages));
  std::filesystem::current_path(folder_.path());
  EXPECT_EQ(ReadMicroDvdIni(track_, "bare.ini"), -1);
  std::filesystem::current_path(before);
}

}  // namespace
}  // namespace korvalin
