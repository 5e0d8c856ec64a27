#include "Progress.h"

#include <unistd.h>

namespace DovInspect {

ProgressLine::ProgressLine(std::ostream& out, bool enabled)
    : out_(out), enabled_(enabled), start_(Clock::now()), last_(start_) {}

ProgressLine::~ProgressLine() {
  if (shown_) out_ << "\r\033[K" << std::flush;  // leave no half line behind
}

void ProgressLine::Update(std::size_t done, std::size_t total) {
  if (!enabled_) return;
  Clock::time_point now = Clock::now();
  if (now - start_ < std::chrono::seconds(1)) return;
  if (shown_ && now - last_ < std::chrono::milliseconds(200) && done < total) return;
  last_ = now;
  shown_ = true;
  out_ << "\rexporting " << done << " of " << total << " files (" << (100 * done / total) << "%)"
       << std::flush;
}

bool ErrorIsTerminal() { return isatty(STDERR_FILENO) != 0; }

}  // namespace DovInspect
