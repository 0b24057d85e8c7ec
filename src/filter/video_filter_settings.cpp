// The settings interface: what the user interface may change on a playing filter.
#include <cstring>

#include "filter/video_filter.h"
#include "subtitles/subtitle_discovery.h"
#include "subtitles/subtitle_loader.h"

namespace korvalin {

using namespace host;

namespace {

// Copies text with its terminating zero when it fits; otherwise as much as fits, still ended
// by a zero. Nothing is written into a buffer of size 0.
void CopyText(const DynString& text, char* buffer, std::size_t size) {
  if (buffer == nullptr || size == 0 || text.IsEmpty()) return;
  const std::size_t length = std::min(text.Length(), size - 1);
  std::memcpy(buffer, text.c_str(), length);
  buffer[length] = '\0';
}

// Every name followed by a zero byte, then one more; a name that does not fit whole is left
// out with those after it.
void CopyNameList(const std::vector<DynString>& names, char* buffer, std::size_t size) {
  if (buffer == nullptr || size < 2) return;
  std::size_t used = 0;
  for (const DynString& name : names) {
    if (used + name.Length() + 2 > size) break;
    std::memcpy(buffer + used, name.c_str(), name.Length());
    used += name.Length();
    buffer[used++] = '\0';
  }
  buffer[used] = '\0';
  if (used == 0) buffer[1] = '\0';
}

bool IsGiven(const char* text) { return text != nullptr && text[0] != '\0'; }

}  // namespace

HRESULT VideoFilter::SetSettings(const Settings* settings) {
  if (settings == nullptr) return E_POINTER;
  std::lock_guard lock(frameLock_);
  borderRefresh_ = kBorderRefreshFrames;
  settings_.Flip = settings->Flip;
  settings_.YShift = settings->YShift;
  settings_.Sub.style = settings->Sub.style;
  settings_.Sub.SubLang = settings->Sub.SubLang;
  settings_.Sub.SubDelay = settings->Sub.SubDelay;
  settings_.Sub.SubSpeed = settings->Sub.SubSpeed;
  settings_.OSD = settings->OSD;
  ApplyStyles();
  return S_OK;
}

HRESULT VideoFilter::GetSubtitleInfo(char* file, std::size_t fileSize, char* format,
                                     std::size_t formatSize, char* languages,
                                     std::size_t languagesSize, int32_t* index) {
  std::lock_guard lock(frameLock_);
  if (file != nullptr && fileSize > 0) file[0] = '\0';
  if (format != nullptr && formatSize > 0) format[0] = '\0';
  if (languages != nullptr && languagesSize >= 2) languages[0] = languages[1] = '\0';
  if (index != nullptr) *index = 0;
  const SubtitleInfo info = track_.GetInfo();
  CopyText(info.fileName, file, fileSize);
  CopyText(info.formatName, format, formatSize);
  CopyNameList(info.streamNames, languages, languagesSize);
  if (index != nullptr) *index = info.streamIndex;
  return S_OK;
}

HRESULT VideoFilter::SelectSubtitle(const char* file, const char* language) {
  std::lock_guard lock(frameLock_);
  borderRefresh_ = kBorderRefreshFrames;
  track_.preferredLanguage = IsGiven(language) ? language : settings_.Sub.SubLang.c_str();
  if (!IsGiven(file)) {
    track_.Reset();
    return S_OK;
  }
  if (LoadSubtitleFile(track_, file) != 0) return E_FAIL;
  if (frameDuration_ > 0) {
    track_.ConvertFramesToMs(10000000.0f / static_cast<float>(frameDuration_));
  }
  return S_OK;
}

HRESULT VideoFilter::GetFrameDurations(int32_t* current, int32_t* detected) {
  std::lock_guard lock(frameLock_);
  if (current != nullptr) *current = frameDuration_;
  if (detected != nullptr) *detected = detectedFrameDuration_;
  return S_OK;
}

HRESULT VideoFilter::FindSubtitleFiles(OwningPtrArray<DynString>* files) {
  if (files == nullptr) return E_POINTER;
  std::lock_guard lock(frameLock_);
  korvalin::FindSubtitleFiles(*files, settings_.Sub.SubPath.c_str(),
                              sourceFileName_.IsEmpty() ? nullptr : sourceFileName_.c_str());
  return S_OK;
}

}  // namespace korvalin
