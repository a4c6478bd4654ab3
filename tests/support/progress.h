// SPDX-License-Identifier: MIT
//
// The two progress interfaces as tests implement them.
#pragma once

#include <vector>

#include "kvbase/filesystem/progress.h"

namespace KV_1_1 {
namespace testing {

// Keeps every fraction that a copy reports.
class RecordedProgress : public IProgress {
 public:
  void setProgress(double fraction) override { values.push_back(fraction); }
  std::vector<double> values;
};

// Counts the files that Directory::copyContents reports.
class CountedFiles final : public KVFileProgressInterface {
 public:
  void fileCopied() override { ++count; }
  int count = 0;
};

}  // namespace testing
}  // namespace KV_1_1
