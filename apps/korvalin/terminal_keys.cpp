#include "korvalin/terminal_keys.h"

#include <unistd.h>

namespace korvalin::cli {

TerminalKeys::TerminalKeys() {
  if (!isatty(STDIN_FILENO) || tcgetattr(STDIN_FILENO, &saved_) != 0) return;
  termios raw = saved_;
  raw.c_lflag &= ~tcflag_t(ICANON | ECHO);
  raw.c_cc[VMIN] = 1;
  raw.c_cc[VTIME] = 0;
  active_ = tcsetattr(STDIN_FILENO, TCSANOW, &raw) == 0;
}

TerminalKeys::~TerminalKeys() {
  if (active_) tcsetattr(STDIN_FILENO, TCSANOW, &saved_);
}

std::optional<PlayerKey> TerminalKeys::Feed(char byte) {
  pending_ += byte;
  if (pending_ == "\x1b" || pending_ == "\x1b[") return std::nullopt;  // more to come
  const std::string key = std::move(pending_);
  pending_.clear();
  if (key == "\x1b[D") return PlayerKey::kSeekBack;
  if (key == "\x1b[C") return PlayerKey::kSeekForward;
  if (key == "\x1b[B") return PlayerKey::kSeekBackLong;
  if (key == "\x1b[A") return PlayerKey::kSeekForwardLong;
  if (key == " ") return PlayerKey::kPause;
  if (key == "+") return PlayerKey::kDelayMore;
  if (key == "-") return PlayerKey::kDelayLess;
  if (key == "q" || key == "Q") return PlayerKey::kQuit;
  return std::nullopt;
}

}  // namespace korvalin::cli
