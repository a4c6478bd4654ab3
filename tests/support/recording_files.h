// SPDX-License-Identifier: MIT
//
// A file backend that records each call and then forwards it, by default to the native backend.
//
//   RecordingFiles files;
//   platform::ScopedBackend<platform::FileApi> scope(files);
//   directory.exists();
//   EXPECT_EQ(files.log(), Log({"getAttributes \\\\?\\C:\\a\\"}));
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "tests/support/intercepted_files.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {

using Log = std::vector<std::string>;

// The calls of all parts, one after the other.
inline Log joined(std::initializer_list<Log> parts) {
  Log all;
  for (Log const& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

class RecordingFiles : public InterceptedFiles {
 public:
  explicit RecordingFiles(platform::FileApi& target = platform::nativeFiles()) : InterceptedFiles(target) {}

  // The calls so far: the name of the method and, after a blank, its text in UTF-8 if it has one.
  Log const& log() const { return log_; }
  void clearLog() { log_.clear(); }

 protected:
  bool enter(char const* call, wchar const* text) override {
    log_.push_back(text == nullptr ? std::string(call) : std::string(call) + ' ' + narrow(text));
    return true;
  }

 private:
  Log log_;
};

}  // namespace testing
}  // namespace KV_1_1
