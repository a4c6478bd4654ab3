// SPDX-License-Identifier: MIT
#pragma once

#include <kvbase/kvbase.h>

#include <cstdint>
#include <vector>

#include "survey.h"

namespace scanshelf {

struct CopyRequest {
  KV_1_1::SmartPtr<KV_1_1::Directory const> source;  // absolute, as is the target
  KV_1_1::SmartPtr<KV_1_1::Directory const> target;
  bool overwrite;
};

// An item of the source that has no proper copy, and why.
struct Failure {
  KV_1_1::SmartPtr<KV_1_1::FileSystemItem const> item;  // relative to the source
  KV_1_1::String reason;
};

struct CopyResult {
  Totals copied;                 // the folders are those that are in the target now
  std::uint64_t equalSizes = 0;  // of the files copied
  std::uint64_t untried = 0;     // files that were left when the disk was full
  std::vector<Failure> failures;
};

// Whether the folder, which may be missing, is the other one or lies below it, on a way through links too.
// REQUIRES: both are absolute, and `outer` is there.
bool isWithin(KV_1_1::Directory const& folder, KV_1_1::Directory const& outer);

// Copies what a survey of the source has found and kept into the target, which is made if it is missing, and compares
// the sizes. What cannot be copied becomes a failure and the rest is copied all the same, unless the disk is full. The
// progress gets the files done with, copied or not, also within a large file.
// Throws a Complaint if there is no target and none can be made.
CopyResult copyItems(Survey const& found, CopyRequest const& request, Progress const& progress);

}  // namespace scanshelf
