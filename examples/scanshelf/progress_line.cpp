// SPDX-License-Identifier: MIT
#include "scanshelf.h"

#include <algorithm>
#include <memory>

namespace scanshelf {
namespace {

constexpr auto kPatience = std::chrono::seconds(1);
constexpr auto kRefresh = std::chrono::milliseconds(200);

// Fits into 80 columns with room to spare: a line that fills the last column may wrap.
constexpr int kLineWidth = 77;
constexpr int kLongestBar = 30;

// Rounded down, so that 100 means all. Empty files count by their number.
unsigned percentOf(Totals const& done, Totals const& all) {
  double const part = static_cast<double>(all.bytes > 0 ? done.bytes : done.files);
  double const whole = static_cast<double>(all.bytes > 0 ? all.bytes : all.files);
  return part < whole ? static_cast<unsigned>(part * 100 / whole) : 100;  // a file may have grown meanwhile
}

String foundText(Totals const& found) {
  return textOf(IDS_READING, countOf(found.files, kFiles), countOf(found.folders + 1, kFolders), sizeText(found.bytes));
}

String copiedText(Totals const& done, Totals const& all) {
  return textOf(IDS_COPYING, countText(done.files), countOf(all.files, kFiles), sizeText(done.bytes),
                sizeText(all.bytes), percentOf(done, all));
}

// The numbers keep their places while they grow, and the bar takes the columns that they leave.
//   [############..................]  42%   1,234 of 2,900 files    1.2 GB of 2.8 GB
String barText(Totals const& done, Totals const& all) {
  unsigned const percent = percentOf(done, all);
  String const numbers = textOf(IDS_BAR_NUMBERS, percent, countText(all.files).length(), countText(done.files),
                                countOf(all.files, kFiles), sizeText(done.bytes), sizeText(all.bytes));
  int const length = std::clamp(kLineWidth - numbers.length() - 2, 0, kLongestBar);
  int const filled = length * static_cast<int>(percent) / 100;
  String const bar = KVW("[") + String(KVW('#'), filled) + String(KVW('.'), length - filled) + KVW("]");
  return (bar + numbers).substr(0, kLineWidth);
}

class ProgressLine {
 public:
  using Clock = std::chrono::steady_clock;

  ProgressLine(Console const& console, Totals const* all, Clock::time_point start = Clock::now())
      : console_(console), all_(all), next_(console.isTerminal ? start : start + kPatience) {}
  ~ProgressLine() {
    if (shown_ > 0) console_.stream << '\r' << std::string(shown_, ' ') << '\r' << std::flush;
  }

  void show(Totals const& done, Clock::time_point now = Clock::now()) {
    if (now < next_) return;
    if (!console_.isTerminal) {
      console_.stream << utf8(all_ != nullptr ? copiedText(done, *all_) : foundText(done)) << std::endl;
      interval_ *= 2;
      next_ = now + interval_;
      return;
    }
    std::string const line = utf8(all_ != nullptr ? barText(done, *all_) : foundText(done));
    console_.stream << '\r' << line << std::string(shown_ - std::min(shown_, line.size()), ' ') << std::flush;
    shown_ = line.size();
    next_ = now + kRefresh;
  }

 private:
  Console const console_;
  Totals const* const all_;
  Clock::duration interval_ = kPatience;
  Clock::time_point next_;
  std::size_t shown_ = 0;  // the width of the line on the terminal
};

}  // namespace

Progress progressOn(Console const& console, Totals const* all) {
  auto const line = std::make_shared<ProgressLine>(console, all);
  return [line](Totals const& done) { line->show(done); };
}

}  // namespace scanshelf
