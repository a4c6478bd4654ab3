// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <string>

#include "survey.h"

namespace scanshelf {

// Tells the user how far a task has come. On a terminal one line stands there from the beginning, is written over and
// over, and cleared at the end. Anywhere else, a log for one, plain lines come at ever longer intervals, and a task of
// less than a second shows nothing.
class ProgressLine {
 public:
  using Clock = std::chrono::steady_clock;

  ProgressLine(std::ostream& out, bool isTerminal, Clock::time_point start = Clock::now());
  ~ProgressLine();
  ProgressLine(ProgressLine const&) = delete;
  ProgressLine& operator=(ProgressLine const&) = delete;

  // Each shows its counts if it is time to: what a survey has found so far, and what of all has been copied.
  void showFound(Totals const& found, Clock::time_point now = Clock::now());
  void showCopied(Totals const& done, Totals const& all, Clock::time_point now = Clock::now());

 private:
  void write(std::string const& line, Clock::time_point now);
  void writeOver(std::string const& line);

  std::ostream& out_;
  bool isTerminal_;
  Clock::duration interval_;
  Clock::time_point next_;
  std::size_t shown_ = 0;  // the places that the line on the terminal takes
};

// Whether the standard error stream is a terminal.
bool isErrorStreamTerminal();

}  // namespace scanshelf
