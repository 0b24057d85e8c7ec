#include "subtitles/picture_budget.h"

namespace korvalin {

bool PictureBudget::Spend(std::size_t bytes) {
  if (bytes > limit_ - spent_ || exceeded_) {
    exceeded_ = true;
    return false;
  }
  spent_ += bytes;
  return true;
}

}  // namespace korvalin
