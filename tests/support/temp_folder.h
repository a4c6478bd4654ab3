// SPDX-License-Identifier: MIT
//
// A fresh temporary folder for one test. It is removed with everything below it at the end; the test fails if it cannot
// be. Made and removed by the standard library alone, so that it works whatever state the code under test is in.
//
//   TempFolder folder;
//   folder.write("sub/a.txt", "bytes");             // makes sub, too
//   Directory::fromString(folder.text());           // \tmp\kvbase-12ab...   or   Z:\...\kvbase-12ab...
//   folder.text(KVW("sub\\a.txt"))                  // the same with \sub\a.txt behind it
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <system_error>

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace testing {

// A folder in memory where the system has one with room, for tests that need many files.
inline std::filesystem::path quickPlace() {
  namespace fs = std::filesystem;
  fs::path const memory = "/dev/shm";
  std::error_code error;
  fs::space_info const space = fs::space(memory, error);
  bool const roomy = !error && fs::is_directory(memory, error) && space.available > (std::uintmax_t(2) << 30);
  return roomy ? memory : fs::temp_directory_path();
}

class TempFolder {
 public:
  TempFolder() : TempFolder(std::filesystem::temp_directory_path()) {}
  // In a folder of the test's choice.
  explicit TempFolder(std::filesystem::path const& where) {
    namespace fs = std::filesystem;
    fs::path const parent = fs::canonical(where);
    std::random_device random;
    do {
      char name[32];
      std::snprintf(name, sizeof name, "kvbase-%08x%08x", random(), random());
      path_ = parent / name;
    } while (!fs::create_directory(path_));
  }

  ~TempFolder() {
    namespace fs = std::filesystem;
    std::error_code error;
    unlock();
    fs::remove_all(path_, error);
    if (error || fs::exists(fs::symlink_status(path_, error))) {
      ADD_FAILURE() << "temporary folder not removed: " << path_ << ": " << error.message();
    }
  }
  TempFolder(TempFolder const&) = delete;
  TempFolder& operator=(TempFolder const&) = delete;

  // The folder in the notation of the system, and an item below it.
  std::filesystem::path const& path() const { return path_; }
  std::filesystem::path path(std::filesystem::path const& below) const { return path_ / below; }

  // The folder in the notation of the library, without a separator at its end, and an item below it. `below` is
  // appended as it is, so it may hold wildcards or end in a separator.
  wstring text() const {
    std::u16string const units = path_.u16string();
    wstring text(units.begin(), units.end());
    std::replace(text.begin(), text.end(), KVW('/'), KVW('\\'));
    return text;
  }
  wstring text(wstring const& below) const { return text() + KVW('\\') + below; }

  // Makes a file with these bytes, or a folder, and the folders above it.
  void write(std::filesystem::path const& below, std::string const& bytes = std::string()) const {
    std::filesystem::create_directories(path(below).parent_path());
    std::ofstream file(path(below), std::ios::binary);
    file << bytes;
    file.close();
    if (!file) ADD_FAILURE() << "cannot write " << path(below);
  }
  void makeFolder(std::filesystem::path const& below) const { std::filesystem::create_directories(path(below)); }

 private:
  // Gives back the rights that a test has taken away, for they would keep items from being removed.
  void unlock() const {
    namespace fs = std::filesystem;
    std::error_code ignored;
    fs::permissions(path_, fs::perms::owner_all, fs::perm_options::add, ignored);
    for (fs::recursive_directory_iterator item(path_, ignored), end; item != end; item.increment(ignored)) {
      if (item->is_symlink(ignored)) continue;
      fs::permissions(item->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
    }
  }

  std::filesystem::path path_;
};

}  // namespace testing
}  // namespace KV_1_1
