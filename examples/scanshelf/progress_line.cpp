// SPDX-License-Identifier: MIT
#include "progress_line.h"

#include <filesystem>
#include <ostream>
#include <system_error>

#include "text.h"

namespace scanshelf {

namespace {

constexpr auto kPatience = std::chrono::seconds(1);
constexpr auto kRefresh = std::chrono::milliseconds(200);

}  // namespace

ProgressLine::ProgressLine(std::ostream& out, bool isTerminal, Clock::time_point start)
    : out_(out), isTerminal_(isTerminal), interval_(kPatience), next_(start + kPatience) {}

ProgressLine::~ProgressLine() {
  if (shown_ == 0) return;
  writeOver("");
  out_ << '\r' << std::flush;
}

void ProgressLine::show(Totals const& totals, Clock::time_point now) {
  if (now < next_) return;
  std::string const line = std::string("Reading: ") + utf8(countOf(totals.files, KVW("file"))) + " in " +
                           utf8(countOf(totals.folders + 1, KVW("folder"))) + ", " + utf8(sizeText(totals.bytes));
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

// The standard library does not tell. Where a system shows its streams as files this does; elsewhere plain lines serve.
bool isErrorStreamTerminal() {
  std::error_code error;
  return std::filesystem::is_character_file("/dev/stderr", error);
}

}  // namespace scanshelf
