// `korvalin play`: any film GStreamer can decode, through playbin with our two elements as
// its filters, with keyboard control in the terminal.
#include <gst/gst.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <optional>
#include <string>

#include "gst/plugin_features.h"
#include "gst/video_element.h"
#include "korvalin/commands.h"
#include "korvalin/player_graph.h"
#include "korvalin/terminal_keys.h"
#include "settings/settings.h"

namespace korvalin::cli {

const std::string_view kPlayUsage =
    "  play FILM [--subs FILE] [--lang NAME] [--format yuy2|rgb32|rgb565] [--sink NAME]\n"
    "                                   play a film with sound; keys: space pause, left/right\n"
    "                                   10 s, down/up 60 s, + and - subtitle delay 100 ms,\n"
    "                                   q quit (headless without a display, or --sink\n"
    "                                   fakesink)\n";

namespace {

constexpr int kPlayFlagText = 0x4;  // playbin's own subtitle drawing
constexpr int kDelayStepMs = 100;

struct PlayOptions {
  std::string film, subs, lang, sink;
  std::optional<PixelFormat> format;
};

std::string ParsePlayArgs(Args args, PlayOptions* options) {
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    const bool hasValue = i + 1 < args.size();
    std::string* target = arg == "--subs" ? &options->subs
                          : arg == "--lang" ? &options->lang
                          : arg == "--sink" ? &options->sink
                                            : nullptr;
    if (target != nullptr || arg == "--format") {
      if (!hasValue) return std::string(arg) + " needs a value";
      const std::string_view value = args[++i];
      if (target != nullptr) {
        *target = value;
      } else if (!(options->format = ParsePixelFormat(value))) {
        return "unknown format '" + std::string(value) + "' (yuy2, rgb32 or rgb565)";
      }
    } else if (arg.starts_with("--") || !options->film.empty()) {
      return "unexpected argument '" + std::string(arg) + "'";
    } else {
      options->film = arg;
    }
  }
  return options->film.empty() ? "which film? (play FILM)" : "";
}

std::string FilmUri(const std::string& film) {
  if (gst_uri_is_valid(film.c_str())) return film;
  gchar* uri = gst_filename_to_uri(film.c_str(), nullptr);
  std::string result = uri ? uri : "";
  g_free(uri);
  return result;
}

bool HasDisplay() {
  const char* x = std::getenv("DISPLAY");
  const char* wayland = std::getenv("WAYLAND_DISPLAY");
  return (x && *x) || (wayland && *wayland);
}

const char* CapsFormat(PixelFormat format) {
  switch (format) {
    case PixelFormat::YUY2: return "YUY2";
    case PixelFormat::RGB32: return "BGRx";
    case PixelFormat::RGB565: return "RGB16";
  }
  return "YUY2";
}

class Player {
 public:
  explicit Player(const PlayOptions& options) : options_(options) {}
  ~Player();
  // "" when the pipeline is built, else what went wrong.
  std::string Build();
  int Run();

 private:
  GstElement* VideoFilterBin(std::string* error);
  GstElement* Sink(const char* kind);
  static gboolean OnBusMessage(GstBus*, GstMessage* message, gpointer self);
  static gboolean OnKey(GIOChannel* channel, GIOCondition, gpointer self);
  static gboolean OnTick(gpointer self);
  static GstPadProbeReturn CountFrame(GstPad*, GstPadProbeInfo*, gpointer self);
  void Handle(PlayerKey key);
  void SeekBy(double seconds);
  void ShiftSubtitles(int32_t deltaMs);
  void HidePlayerSubtitles();
  void PrintStatus(bool final);

  PlayOptions options_;
  bool headless_ = false;
  GstElement* playbin_ = nullptr;
  GstElement* video_ = nullptr;  // our element, owned by playbin
  GMainLoop* loop_ = nullptr;
  std::atomic<int64_t> frames_{0};
  bool paused_ = false;
  int exitCode_ = kExitOk;
  Settings settings_;  // the store's, with this playback's subtitle delay
  TerminalKeys keys_;
};

Player::~Player() {
  if (playbin_) {
    gst_element_set_state(playbin_, GST_STATE_NULL);
    gst_object_unref(playbin_);
  }
  if (loop_) g_main_loop_unref(loop_);
}

GstElement* Player::VideoFilterBin(std::string* error) {
  std::string description = "videoconvert ! korvalin name=korvalin";
  if (options_.format)
    description += std::string(" ! video/x-raw,format=") + CapsFormat(*options_.format);
  description += " ! videoconvert";
  GError* parseError = nullptr;
  GstElement* bin = gst_parse_bin_from_description(description.c_str(), TRUE, &parseError);
  if (parseError != nullptr) {
    *error = parseError->message;
    g_error_free(parseError);
    return nullptr;
  }
  return bin;
}

GstElement* Player::Sink(const char* kind) {
  const bool video = std::string_view(kind) == "video";
  const std::string name = headless_ ? "fakesink" : video && !options_.sink.empty() ? options_.sink : "";
  if (name.empty()) return nullptr;  // playbin picks
  GstElement* sink = gst_element_factory_make(name.c_str(), nullptr);
  if (sink && name == "fakesink") g_object_set(sink, "sync", TRUE, nullptr);
  return sink;
}

std::string Player::Build() {
  headless_ = options_.sink == "fakesink" || (options_.sink.empty() && !HasDisplay());
  playbin_ = gst_element_factory_make("playbin", nullptr);
  if (playbin_ == nullptr) return "GStreamer's playbin is missing (gstreamer1.0-plugins-base)";
  gst_object_ref_sink(playbin_);
  std::string error;
  GstElement* filter = VideoFilterBin(&error);
  if (filter == nullptr) return "cannot make the video filter: " + error;
  video_ = gst_bin_get_by_name(GST_BIN(filter), "korvalin");
  GstElement* audio = gst_element_factory_make("korvalinaudio", nullptr);
  g_object_set(playbin_, "uri", FilmUri(options_.film).c_str(), "video-filter", filter,
               "audio-filter", audio, nullptr);
  if (GstElement* sink = Sink("video")) g_object_set(playbin_, "video-sink", sink, nullptr);
  else if (!options_.sink.empty()) return "no video sink named '" + options_.sink + "'";
  if (headless_) g_object_set(playbin_, "audio-sink", Sink("audio"), nullptr);
  if (!options_.subs.empty() || !options_.lang.empty()) {
    if (!options_.subs.empty()) g_object_set(video_, "subtitle-file", options_.subs.c_str(), nullptr);
    if (!options_.lang.empty()) g_object_set(video_, "subtitle-language", options_.lang.c_str(), nullptr);
  }
  GstPad* out = gst_element_get_static_pad(video_, "src");
  gst_pad_add_probe(out, GST_PAD_PROBE_TYPE_BUFFER, CountFrame, this, nullptr);
  gst_object_unref(out);
  gst_object_unref(video_);  // playbin keeps it
  return "";
}

GstPadProbeReturn Player::CountFrame(GstPad*, GstPadProbeInfo*, gpointer self) {
  ++static_cast<Player*>(self)->frames_;
  return GST_PAD_PROBE_OK;
}

void Player::HidePlayerSubtitles() {
  int flags = 0;
  g_object_get(playbin_, "flags", &flags, nullptr);
  if (flags & kPlayFlagText) g_object_set(playbin_, "flags", flags & ~kPlayFlagText, nullptr);
}

gboolean Player::OnBusMessage(GstBus*, GstMessage* message, gpointer data) {
  auto* self = static_cast<Player*>(data);
  switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_EOS:
      g_main_loop_quit(self->loop_);
      break;
    case GST_MESSAGE_ERROR: {
      GError* error = nullptr;
      gchar* debug = nullptr;
      gst_message_parse_error(message, &error, &debug);
      std::fprintf(stderr, "\nkorvalin: play: %s\n", error->message);
      g_error_free(error);
      g_free(debug);
      self->exitCode_ = kExitFailed;
      g_main_loop_quit(self->loop_);
      break;
    }
    case GST_MESSAGE_ELEMENT: {
      const GstStructure* s = gst_message_get_structure(message);
      if (gst_structure_has_name(s, gst::kSubtitlesLoadedMessage)) {
        // Our element draws subtitles: the player must not draw the film's own as well.
        self->HidePlayerSubtitles();
        std::fprintf(stderr, "subtitles: %s (%s)\n", gst_structure_get_string(s, "file"),
                     gst_structure_get_string(s, "format"));
      }
      break;
    }
    default:
      break;
  }
  return TRUE;
}

void Player::SeekBy(double seconds) {
  gint64 position = 0;
  if (!gst_element_query_position(playbin_, GST_FORMAT_TIME, &position)) return;
  const gint64 target = std::max<gint64>(0, position + gint64(seconds * GST_SECOND));
  gst_element_seek_simple(playbin_, GST_FORMAT_TIME,
                          GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_KEY_UNIT), target);
}

void Player::ShiftSubtitles(int32_t deltaMs) {
  const host::ComPtr<IFilterSettings> filter = gst::FilterSettingsOf(video_);
  if (!filter) return;
  settings_.Sub.SubDelay += deltaMs;
  filter->SetSettings(&settings_);
  std::fprintf(stderr, "\nsubtitle delay %d ms\n", settings_.Sub.SubDelay);
}

void Player::Handle(PlayerKey key) {
  switch (key) {
    case PlayerKey::kPause:
      paused_ = !paused_;
      gst_element_set_state(playbin_, paused_ ? GST_STATE_PAUSED : GST_STATE_PLAYING);
      break;
    case PlayerKey::kSeekBack: SeekBy(-10); break;
    case PlayerKey::kSeekForward: SeekBy(10); break;
    case PlayerKey::kSeekBackLong: SeekBy(-60); break;
    case PlayerKey::kSeekForwardLong: SeekBy(60); break;
    case PlayerKey::kDelayMore: ShiftSubtitles(kDelayStepMs); break;
    case PlayerKey::kDelayLess: ShiftSubtitles(-kDelayStepMs); break;
    case PlayerKey::kQuit: g_main_loop_quit(loop_); break;
  }
}

gboolean Player::OnKey(GIOChannel* channel, GIOCondition condition, gpointer data) {
  auto* self = static_cast<Player*>(data);
  char byte = 0;
  gsize read = 0;
  if ((condition & (G_IO_HUP | G_IO_ERR)) ||
      g_io_channel_read_chars(channel, &byte, 1, &read, nullptr) != G_IO_STATUS_NORMAL) {
    return FALSE;  // input closed: keep playing without keys
  }
  if (const std::optional<PlayerKey> key = self->keys_.Feed(byte)) self->Handle(*key);
  return TRUE;
}

void Player::PrintStatus(bool final) {
  gint64 position = 0, duration = 0;
  gst_element_query_position(playbin_, GST_FORMAT_TIME, &position);
  gst_element_query_duration(playbin_, GST_FORMAT_TIME, &duration);
  std::fprintf(stderr, "%s%7.1f / %.1f s, %lld frames%s", isatty(STDERR_FILENO) ? "\r" : "",
               double(std::max<gint64>(position, 0)) / GST_SECOND,
               double(std::max<gint64>(duration, 0)) / GST_SECOND,
               static_cast<long long>(frames_.load()), final || !isatty(STDERR_FILENO) ? "\n" : "");
}

gboolean Player::OnTick(gpointer data) {
  auto* self = static_cast<Player*>(data);
  if (isatty(STDERR_FILENO)) self->PrintStatus(false);
  return TRUE;
}

int Player::Run() {
  loop_ = g_main_loop_new(nullptr, FALSE);
  GstBus* bus = gst_element_get_bus(playbin_);
  const guint busWatch = gst_bus_add_watch(bus, OnBusMessage, this);
  gst_object_unref(bus);
  guint keyWatch = 0;
  if (keys_.active()) {
    GIOChannel* input = g_io_channel_unix_new(STDIN_FILENO);
    g_io_channel_set_encoding(input, nullptr, nullptr);
    keyWatch = g_io_add_watch(input, GIOCondition(G_IO_IN | G_IO_HUP | G_IO_ERR), OnKey, this);
    g_io_channel_unref(input);
  }
  const guint tick = g_timeout_add(500, OnTick, this);
  if (gst_element_set_state(playbin_, GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE) {
    std::fprintf(stderr, "korvalin: play: cannot start playing %s\n", options_.film.c_str());
    exitCode_ = kExitFailed;
  } else {
    g_main_loop_run(loop_);
  }
  g_source_remove(tick);
  if (keyWatch) g_source_remove(keyWatch);
  g_source_remove(busWatch);
  PrintStatus(true);
  return exitCode_;
}

}  // namespace

int RunPlayCommand(Args args) {
  PlayOptions options;
  if (const std::string error = ParsePlayArgs(args, &options); !error.empty())
    return Fail("play: " + error);
  if (!gst_uri_is_valid(options.film.c_str()) && access(options.film.c_str(), R_OK) != 0)
    return Fail("play: cannot read " + options.film);
  gst_init(nullptr, nullptr);
  if (!gst::RegisterStatically()) return Fail("play: cannot register the GStreamer elements");
  Player player(options);
  if (const std::string error = player.Build(); !error.empty()) return Fail("play: " + error);
  return player.Run();
}

}  // namespace korvalin::cli
