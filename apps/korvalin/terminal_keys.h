#pragma once

#include <termios.h>

#include <optional>
#include <string>

namespace korvalin::cli {

// What a key pressed during playback asks for.
enum class PlayerKey { kPause, kSeekBack, kSeekForward, kSeekBackLong, kSeekForwardLong,
                       kDelayMore, kDelayLess, kQuit };

// The terminal in single-key mode while playback runs (no echo, no line editing), restored
// when this goes. Does nothing when standard input is not a terminal.
class TerminalKeys {
 public:
  TerminalKeys();
  ~TerminalKeys();
  TerminalKeys(const TerminalKeys&) = delete;
  TerminalKeys& operator=(const TerminalKeys&) = delete;

  bool active() const { return active_; }
  // Takes bytes read from the terminal; answers the key once a whole one has arrived
  // (arrow keys come as escape sequences of three bytes).
  std::optional<PlayerKey> Feed(char byte);

 private:
  bool active_ = false;
  termios saved_{};
  std::string pending_;
};

}  // namespace korvalin::cli
