// SPDX-License-Identifier: MIT
#include "progress_line.h"

#if defined(_WIN32)
#include <io.h>
#include <stdio.h>
#else
#include <unistd.h>
#endif

#include <algorithm>
#include <ostream>

#include "text.h"

namespace scanshelf {

namespace {

constexpr auto kPatience = std::chrono::seconds(1);
constexpr auto kRefresh = std::chrono::milliseconds(200);

// A line that fills the last place of a terminal of 80 may move on to the next one; a narrower terminal is rare.
constexpr std::size_t kBarLineWidth = 77;
constexpr std::size_t kLongestBar = 30;
constexpr std::size_t kWidestSize = 9;  // "1023.9 KB"

// Rounded down, so that 100 means all. Files of no size count by their number.
unsigned percentOf(Totals const& done, Totals const& all) {
  bool const bySize = all.bytes > 0;
  double const part = static_cast<double>(bySize ? done.bytes : done.files);
  double const whole = static_cast<double>(bySize ? all.bytes : all.files);
  // A file may have grown since it was counted.
  return part < whole ? static_cast<unsigned>(part * 100 / whole) : 100;
}

std::string rightAligned(std::string const& text, std::size_t width) {
  return std::string(width - std::min(width, text.size()), ' ') + text;
}

std::string foundText(Totals const& found) {
  return std::string("Reading: ") + utf8(countOf(found.files, KVW("file"))) + " in " +
         utf8(countOf(found.folders + 1, KVW("folder"))) + ", " + utf8(sizeText(found.bytes));
}

std::string copiedText(Totals const& done, Totals const& all) {
  return std::string("Copying: ") + utf8(countText(done.files)) + " of " + utf8(countOf(all.files, KVW("file"))) +
         ", " + utf8(sizeText(done.bytes)) + " of " + utf8(sizeText(all.bytes)) + " (" +
         std::to_string(percentOf(done, all)) + "%)";
}

// The numbers keep their places while they grow, and the bar takes what they leave.
//   [############..................]  42%   1,234 of 2,900 files    1.2 GB of 2.8 GB
std::string barText(Totals const& done, Totals const& all) {
  unsigned const percent = percentOf(done, all);
  std::string const allFiles = utf8(countOf(all.files, KVW("file")));
  std::string const numbers =
      " " + rightAligned(std::to_string(percent), 3) + "%  " +
      rightAligned(utf8(countText(done.files)), std::string(utf8(countText(all.files))).size()) + " of " + allFiles +
      "  " + rightAligned(utf8(sizeText(done.bytes)), kWidestSize) + " of " + utf8(sizeText(all.bytes));
  std::size_t const room = kBarLineWidth - std::min(kBarLineWidth, numbers.size() + 2);
  std::size_t const length = std::min(room, kLongestBar);
  std::size_t const filled = length * percent / 100;
  return ("[" + std::string(filled, '#') + std::string(length - filled, '.') + "]" + numbers).substr(0, kBarLineWidth);
}

}  // namespace

ProgressLine::ProgressLine(std::ostream& out, bool isTerminal, Clock::time_point start)
    : out_(out), isTerminal_(isTerminal), interval_(kPatience), next_(isTerminal ? start : start + kPatience) {}

ProgressLine::~ProgressLine() {
  if (shown_ == 0) return;
  writeOver("");
  out_ << '\r' << std::flush;
}

void ProgressLine::showFound(Totals const& found, Clock::time_point now) {
  if (now >= next_) write(foundText(found), now);
}

void ProgressLine::showCopied(Totals const& done, Totals const& all, Clock::time_point now) {
  if (now >= next_) write(isTerminal_ ? barText(done, all) : copiedText(done, all), now);
}

void ProgressLine::write(std::string const& line, Clock::time_point now) {
  if (isTerminal_) {
    writeOver(line);
    next_ = now + kRefresh;
    return;
  }
  out_ << line << std::endl;
  interval_ *= 2;
  next_ = now + interval_;
}

// The text is ASCII: a byte is a place.
void ProgressLine::writeOver(std::string const& line) {
  out_ << '\r' << line;
  if (line.size() < shown_) out_ << std::string(shown_ - line.size(), ' ');
  out_ << std::flush;
  shown_ = line.size();
}

bool isErrorStreamTerminal() {
#if defined(_WIN32)
  return _isatty(_fileno(stderr)) != 0;
#else
  return isatty(STDERR_FILENO) != 0;
#endif
}

}  // namespace scanshelf
