// SPDX-License-Identifier: MIT
//
// Tools of the desktop as shell scripts, in the only folder of PATH. They report their arguments through a named pipe,
// which the test waits for, so nothing depends on how long a tool takes to start.
//
//   FakeDesktop desktop;
//   desktop.install("xdg-open", kReport);
//   shell.open(...);
//   EXPECT_EQ(desktop.nextCall(), (Call{"xdg-open", "/home/x/a.txt"}));
#pragma once

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/platform/linux/files/descriptor.h"
#include "tests/platform/linux/environment_variable.h"
#include "tests/platform/linux/open_descriptors.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {

// The name of a tool and its arguments.
using Call = std::vector<std::string>;

// The usual beginning of a tool: it reports its name and its arguments.
inline constexpr char kReport[] = "printf '%s\\0' \"${0##*/}\" \"$@\" '' >\"${0%/*}/calls\"\n";
// Waits for FakeDesktop::letGoOn.
inline constexpr char kWait[] = "read -r line <\"${0%/*}/gate\"\n";
inline constexpr char kReportEnd[] = "printf '%s\\0' end '' >\"${0%/*}/calls\"\n";
inline constexpr char kAnswer[] = "echo 'method return'\n";

class FakeDesktop {
 public:
  FakeDesktop()
      : path_("PATH", folder_.path().c_str()),
        calls_(openPipe(folder_.path("calls"))),
        gate_(openPipe(folder_.path("gate"))) {}

  void install(std::string const& tool, std::string const& script) const {
    folder_.write(tool, "#!/bin/sh\n" + script);
    std::filesystem::permissions(folder_.path(tool), std::filesystem::perms::owner_all);
  }

  // Waits for the next report of a tool. Empty if none comes.
  Call nextCall() const {
    Call call;
    std::string word;
    char byte;
    while (waitFor(calls_) && read(calls_.get(), &byte, 1) == 1) {
      if (byte != '\0') {
        word += byte;
      } else if (word.empty()) {
        return call;
      } else {
        call.push_back(std::move(word));
        word.clear();
      }
    }
    return {};
  }

  void letGoOn() const { EXPECT_EQ(write(gate_.get(), "\n", 1), 1); }

 private:
  // Open for both directions, so that neither side waits for the other one.
  static platform::Descriptor openPipe(std::filesystem::path const& path) {
    EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
    platform::Descriptor ends(::open(path.c_str(), O_RDWR | O_CLOEXEC));
    EXPECT_TRUE(ends);
    return ends;
  }

  static bool waitFor(platform::Descriptor const& descriptor) {
    pollfd request{descriptor.get(), POLLIN, 0};
    int ready;
    do {
      ready = poll(&request, 1, 10000);
    } while (ready < 0 && errno == EINTR);
    EXPECT_EQ(ready, 1) << "no tool reports";
    return ready == 1;
  }

  TempFolder folder_;
  EnvironmentVariable path_;
  platform::Descriptor calls_;
  platform::Descriptor gate_;
};

inline bool hasChildren() {
  return waitpid(-1, nullptr, WNOHANG | static_cast<int>(__WALL)) != -1 || errno != ECHILD;
}

}  // namespace testing
}  // namespace KV_1_1
