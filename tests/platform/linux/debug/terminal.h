// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <string>

#include "kvbase/platform/linux/files/descriptor.h"

namespace KV_1_1 {
namespace testing {

// The side of a terminal on which the user sits. The base of a process that has the other side.
class Terminal {
 public:
  // What the process writes up to and with `end`, and the echo of what was typed. If that does not come, the test
  // fails, and the process loses its terminal, which ends it.
  std::string readUpTo(std::string const& end) {
    std::string text;
    pollfd request{terminal_.get(), POLLIN, 0};
    char byte;
    while (text.size() < end.size() || text.compare(text.size() - end.size(), end.size(), end) != 0) {
      if (!terminal_ || poll(&request, 1, 10000) != 1 || read(terminal_.get(), &byte, 1) != 1) {
        ADD_FAILURE() << "only this is there: " << text;
        terminal_ = platform::Descriptor();
        break;
      }
      text += byte;
    }
    return text;
  }
  void type(std::string const& text) {
    EXPECT_EQ(write(terminal_.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }

 protected:
  platform::Descriptor terminal_;
};

}  // namespace testing
}  // namespace KV_1_1
