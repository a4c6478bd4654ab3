// SPDX-License-Identifier: MIT
#pragma once

#include <kvbase/kvbase.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace scanshelf {

struct Totals {
  std::uint64_t files = 0;
  std::uint64_t folders = 0;
  std::uint64_t bytes = 0;
};

// One line of a list: what it counts, and the counts.
struct Group {
  KV_1_1::String name;
  Totals totals;
};

struct FoundFile {
  KV_1_1::SmartPtr<KV_1_1::File const> file;
  std::uint64_t bytes;
};

struct IgnoringCase {
  bool operator()(KV_1_1::String const& a, KV_1_1::String const& b) const { return a.compareIgnoreCase(b) < 0; }
};

// What was found in a folder and below it. The items are absolute.
struct Survey {
  Totals all;
  Totals direct;  // the files that lie in the folder itself
  std::map<KV_1_1::String, Totals, IgnoringCase> byExtension;
  std::vector<Group> byFolder;     // the folders in the folder, each with all that lies below it
  std::vector<FoundFile> largest;  // the largest first, no more than asked for
  std::uint64_t unmeasured = 0;    // files whose size the disk did not tell

  // Only if they are asked for.
  std::vector<FoundFile> files;
  std::vector<KV_1_1::SmartPtr<KV_1_1::Directory const>> folders;  // each before those in it
};

struct SurveyRequest {
  KV_1_1::SmartPtr<KV_1_1::Directory const> folder;  // absolute
  KV_1_1::String pattern;
  std::size_t largest;     // how many of the largest files to keep
  bool keepItems = false;  // all files and folders too
};

// Called now and then with the counts so far.
using Progress = std::function<void(Totals const&)>;

// Walks the folder and all folders below it. Throws a Complaint if the pattern is refused.
Survey survey(SurveyRequest const& request, Progress const& progress);

}  // namespace scanshelf
