// SPDX-License-Identifier: MIT
//
// The two tasks on a folder: finding what is in it, and copying that.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "text.h"

namespace scanshelf {

struct Totals {
  std::uint64_t files = 0;
  std::uint64_t folders = 0;
  std::uint64_t bytes = 0;

  Totals& operator+=(Totals const& other) {
    files += other.files;
    folders += other.folders;
    bytes += other.bytes;
    return *this;
  }
};

struct FoundFile {
  SmartPtr<File const> file;
  std::uint64_t bytes;
};

// What was found in a folder and below it. The items are absolute.
struct Survey {
  SmartPtr<Directory const> folder;
  Totals all;
  std::vector<FoundFile> files;
  std::vector<SmartPtr<Directory const>> folders;  // each before those in it
  std::uint64_t unmeasured = 0;                    // files whose size could not be determined
};

// Called now and then with the counts so far.
using Progress = std::function<void(Totals const&)>;

// Finds the files that match the pattern, and all folders. The folder is absolute.
// Throws an Error if the pattern is invalid.
Survey survey(SmartPtr<Directory const> const& folder, String const& pattern, Progress const& progress);

// An item that was not copied properly, and why.
struct Failure {
  SmartPtr<FileSystemItem const> item;  // relative to the folder that is copied
  String reason;
};

struct CopyResult {
  Totals copied;                  // the folders include those that were in the target before
  std::uint64_t equalSizes = 0;   // files copied whose sizes are equal
  std::uint64_t unattempted = 0;  // files left out because the disk was full
  std::vector<Failure> failures;
};

// Whether the folder, which may be missing, is the other one or lies below it, also through links.
// REQUIRES: both are absolute, and `outer` exists.
bool isWithin(Directory const& folder, Directory const& outer);

// Copies what a survey has found into the target, which is absolute and made if it is missing, and compares
// the sizes. What cannot be copied becomes a failure, and the rest is still copied unless the disk is full. The progress
// counts what is finished, copied or not, and moves within a large file too.
// Throws an Error if the target cannot be made.
CopyResult copyItems(Survey const& found, Directory const& target, bool overwrite, Progress const& progress);

}  // namespace scanshelf
