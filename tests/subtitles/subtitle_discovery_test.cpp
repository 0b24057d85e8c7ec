#include "subtitles/subtitle_discovery.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace korvalin {
namespace {

using testing::TempFolder;

std::vector<std::string> Find(const std::string& searchPath, const std::string& video) {
  OwningPtrArray<DynString> files;
  EXPECT_EQ(FindSubtitleFiles(files, searchPath.c_str(), video.c_str()), 0);
  std::vector<std::string> paths;
  for (const DynString* file : files) paths.emplace_back(file->c_str());
  return paths;
}

TEST(ResolveDirectory, MakesAbsoluteFolders) {
  const char* home = std::getenv("HOME");
  const std::string home_subs = std::string(home ? home : "") + "/subs/";
  const struct {
    const char* base;
    const char* element;
    std::string want;
  } cases[] = {
      {"/movies/", ".", "/movies/"},
      {"/movies", "", "/movies/"},
      {"/movies/", "..", "/"},
      {"/movies/", "../Subs", "/Subs/"},
      {"/movies/", "\\Subs", "/Subs/"},
      {"/movies/", "/opt/korvalin", "/opt/korvalin/"},
      {"/movies/", "../../x", ""},
      {"/movies/", "./a/./b/../c", "/movies/a/c/"},
      {"/movies/", "a/././b", "/movies/a/./b/"},  // one pass leaves one "/./" of a run
      {"", ".", ""},
      {"/movies/", "~/subs", home ? home_subs : ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ResolveDirectory(c.base, c.element), c.want.c_str()) << c.base << c.element;
  }
}

// Folding as first written: replace each "/./" once, left to right, then fold the first
// "/../" into the folder before it again and again.
std::string FoldedAsWritten(std::string path) {
  std::string once;
  for (std::size_t i = 0; i < path.size();) {
    if (path.compare(i, 3, "/./") == 0) {
      once += '/';
      i += 3;
    } else {
      once += path[i++];
    }
  }
  for (std::size_t up; (up = once.find("/../")) != std::string::npos;) {
    const std::size_t parent = up == 0 ? std::string::npos : once.rfind('/', up - 1);
    if (parent == std::string::npos) return "";
    once = once.substr(0, parent) + once.substr(up + 3);
  }
  return once;
}

TEST(ResolveDirectory, FoldsAsRepeatedFoldingWould) {
  std::mt19937 random(3);
  const char* parts[] = {"a", "bc", ".", "..", "...", ""};  // relative: not "" first
  for (int round = 0; round < 2000; ++round) {
    std::string element = parts[random() % (std::size(parts) - 1)];
    for (int n = static_cast<int>(random() % 8); n > 0; --n) {
      element += random() % 4 ? "/" : "\\";
      element += parts[random() % std::size(parts)];
    }
    const std::string base = round % 3 ? "/m/v/" : "rel/m/";
    std::string written = base + element;
    for (char& c : written) c = c == '\\' ? '/' : c;
    if (written.back() != '/') written += '/';
    const std::string folded = FoldedAsWritten(written);
    const std::string want = folded.empty() || folded.back() == '/' ? folded : folded + "/";
    EXPECT_EQ(std::string(ResolveDirectory(base.c_str(), element.c_str()).c_str()), want)
        << element;
  }
}

TEST(FindSubtitleFiles, ReproducesTheHarbourExample) {
  const TempFolder root;
  const std::string films = root.path().string() + "/Films/";
  for (const char* name : {"Harbour.1998.srt", "Harbour.1998.en.srt", "Harbour.1998.sub",
                           "Subtitles.txt", "Harbour.1998.avi", "Other.srt"}) {
    root.Write(std::string("Films/") + name, "x");
  }
  const std::string korvalin = root.path().string() + "/Korvalin";
  EXPECT_EQ(Find(korvalin + ";.", films + "Harbour.1998.avi"),
            (std::vector<std::string>{films + "Harbour.1998.srt", films + "Harbour.1998.sub",
                                      films + "Harbour.1998.en.srt", films + "Subtitles.txt"}));
}

TEST(FindSubtitleFiles, EdgeCases) {
  const TempFolder root;
  const std::string dir = root.path().string();
  root.Write("My.Films/movie.srt", "x");
  root.Write("My.Films/MOVIE-b.SRT", "x");
  root.Write("My.Films/movie-a.srt", "x");
  root.Write("a.b.c.srt", "x");
  root.Write("subs/film.srt", "x");
  std::filesystem::create_directories(dir + "/folder.srt");
  const std::string mf = dir + "/My.Films/";
  struct Case {
    std::string searchPath;
    std::string video;
    std::vector<std::string> want;
  };
  const Case cases[] = {
      // Names sort by their bytes: capitals first.
      {".", mf + "movie", {mf + "movie.srt", mf + "MOVIE-b.SRT", mf + "movie-a.srt"}},
      {".;" + mf, mf + "movie.avi", {mf + "movie.srt", mf + "MOVIE-b.SRT", mf + "movie-a.srt"}},
      {";", dir + "/a.b.c.avi", {dir + "/a.b.c.srt"}},
      {".;" + dir + "/subs/film.srt", dir + "/folder.avi", {dir + "/subs/film.srt"}},
      {"./subs//", dir + "/x.avi", {}},
      {"..\\..\\..\\..\\..\\..\\..\\..\\..\\..", dir + "/a.b.c.avi", {}},
      {"", dir + "/a.b.c.avi", {}},
      {".", "", {}},
      {dir + "\\", "", {}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Find(c.searchPath, c.video), c.want) << c.searchPath << " " << c.video;
  }
}

}  // namespace
}  // namespace korvalin
