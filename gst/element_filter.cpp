#include "gst/element_filter.h"

#include <cstring>

namespace korvalin::gst {

using namespace host;

namespace {

constexpr std::size_t kTextLimit = 4096;
constexpr std::size_t kLanguagesLimit = 16384;
constexpr std::size_t kRememberedDecisions = 16;

std::vector<std::string> SplitZeroList(const std::vector<char>& list) {
  std::vector<std::string> names;
  for (const char* p = list.data(); *p != '\0'; p += std::strlen(p) + 1) names.emplace_back(p);
  return names;
}

}  // namespace

ElementFilter::ElementFilter() = default;
ElementFilter::~ElementFilter() = default;

ElementFilter::Key ElementFilter::KeyOf(const Film& film) {
  const FilmFormat& f = film.format;
  return {f.width,
          f.height,
          f.rateNumerator,
          f.rateDenominator,
          f.pixelAspectNumerator,
          f.pixelAspectDenominator,
          film.fileName};
}

FilmDecision ElementFilter::Connect(FilterSession& session, const Film& film) {
  FilmDecision decision;
  decision.active = session.Connect(film.format, film.fileName, film.durationSeconds);
  if (!decision.active) return decision;
  ApplyRequestedSubtitle(session);
  decision.shape = session.Output();
  AM_MEDIA_TYPE rgb;
  decision.rgbOffered = session.Filter()->GetMediaType(1, &rgb) == S_OK;
  decision.clockRate = session.ClockRate();
  return decision;
}

FilmDecision ElementFilter::Decide(const Film& film) {
  std::lock_guard lock(lock_);
  const Key key = KeyOf(film);
  if (const auto known = decisions_.find(key); known != decisions_.end()) return known->second;
  FilterSession* session = nullptr;
  if (!streaming_) {
    if (!live_) live_ = std::make_unique<FilterSession>();
    session = live_.get();
    liveKey_ = key;
  } else {
    if (!probe_) probe_ = std::make_unique<FilterSession>(/*probe=*/true);
    session = probe_.get();
  }
  const FilmDecision decision = Connect(*session, film);
  if (decisions_.size() >= kRememberedDecisions) decisions_.clear();
  decisions_[key] = decision;
  return decision;
}

bool ElementFilter::Start(const Film& film, PixelFormat format) {
  std::lock_guard lock(lock_);
  const Key key = KeyOf(film);
  if (!live_) live_ = std::make_unique<FilterSession>();
  if (!live_->Connected() || liveKey_ != key) {
    streaming_ = false;
    Connect(*live_, film);
    liveKey_ = key;
  }
  streaming_ = live_->Connected() && live_->SelectOutput(format);
  return streaming_;
}

void ElementFilter::Forget() {
  std::lock_guard lock(lock_);
  decisions_.clear();  // the live session plays on until Start connects it anew
}

FrameResult ElementFilter::Transform(const FrameIn& in, uint8_t* out, std::size_t outSize) {
  std::lock_guard lock(lock_);
  if (!streaming_) return FrameResult::kUntouched;
  return live_->Transform(in, out, outSize);
}

void ElementFilter::NewSegment(int64_t start) {
  std::lock_guard lock(lock_);
  if (live_) live_->NewSegment(start);
}

bool ElementFilter::SelectSubtitle(const std::string& file, const std::string& language) {
  std::lock_guard lock(lock_);
  subtitleRequested_ = true;
  requestedFile_ = file;
  requestedLanguage_ = language;
  if (!live_ || !live_->Connected()) return true;
  return SUCCEEDED(live_->Settings()->SelectSubtitle(file.c_str(), language.c_str()));
}

void ElementFilter::ApplyRequestedSubtitle(FilterSession& session) {
  if (!subtitleRequested_ || session.Settings() == nullptr) return;
  if (requestedFile_.empty() && requestedLanguage_.empty()) return;  // automatic
  std::string file = requestedFile_;
  if (file.empty()) file = SubtitlesOf(session).file;  // a language for the found file
  session.Settings()->SelectSubtitle(file.c_str(), requestedLanguage_.c_str());
}

ElementFilter::SubtitleInfo ElementFilter::SubtitlesOf(FilterSession& session) {
  SubtitleInfo info;
  IFilterSettings* settings = session.Settings();
  if (settings == nullptr || !session.Connected()) return info;
  std::vector<char> file(kTextLimit), format(kTextLimit), languages(kLanguagesLimit);
  if (FAILED(settings->GetSubtitleInfo(file.data(), file.size(), format.data(), format.size(),
                                       languages.data(), languages.size(), &info.index))) {
    return info;
  }
  info.file = file.data();
  info.format = format.data();
  info.languages = SplitZeroList(languages);
  return info;
}

ElementFilter::SubtitleInfo ElementFilter::Subtitles() {
  std::lock_guard lock(lock_);
  if (!live_) return {};
  SubtitleInfo info = SubtitlesOf(*live_);
  if (!live_->Connected() && subtitleRequested_) info.file = requestedFile_;
  return info;
}

ComPtr<IFilterSettings> ElementFilter::Settings() {
  std::lock_guard lock(lock_);
  if (!live_ || !live_->Connected()) return {};
  return ComPtr<IFilterSettings>(live_->Settings());
}

}  // namespace korvalin::gst
