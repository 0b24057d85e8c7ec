#include "subtitles/byte_budget.h"

namespace korvalin {

bool ByteBudget::Spend(std::size_t bytes) {
  if (bytes > limit_ - spent_ || exceeded_) {
    exceeded_ = true;
    return false;
  }
  spent_ += bytes;
  return true;
}

}  // namespace korvalin
