// SPDX-License-Identifier: MIT
//
// The calls of the system that the start of a module with a translation has to make.
#pragma once

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>

#include "benchmarks/support.h"

namespace KV_1_1 {
namespace bench {

// The calls of each step as a program in C would make them: nothing is kept from one step to the next, because a file may
// change in between, and nothing is done with what they give.
class StartCalls {
 public:
  StartCalls() {
    Dl_info library;
    require(dladdr(&String::EMPTY, &library) != 0, "the library is a file");
    path_ = library.dli_fname;
    folder_ = path_.substr(0, path_.rfind('/') + 1);
  }

  bool operator()() {
    modulePath();
    longPath();
    for (Data data : {Data::kSize, Data::kAll}) queryVersion(data);
    modulePath();
    forcedLanguage();
    userLanguages();
    bool const absent = find(folder_, kWanted).empty();
    std::string const languages = folder_ + "languages/";
    std::string const translation = find(languages, kWanted);
    bool const readable = faccessat(AT_FDCWD, translation.c_str(), R_OK, AT_EACCESS) == 0;
    for (Data data : {Data::kSize, Data::kAll}) {
      find(languages, kWanted);
      readVersion(translation.c_str(), data);
    }
    find(languages, kWanted);
    int const loaded = load(translation.c_str());
    modulePath();
    longPath();
    close(loaded);
    return absent && readable && loaded >= 0;
  }

 private:
  static constexpr char const* kWanted = "KVBaseDEU.dll";

  void modulePath() { fstatat(AT_FDCWD, path_.c_str(), &status_, AT_SYMLINK_NOFOLLOW); }
  void longPath() { stat(path_.c_str(), &status_); }
  void programPath() {
    require(readlink("/proc/self/exe", buffer_.data(), buffer_.size()) > 0, "the program has a path");
    stat("/proc/self/exe", &status_);
  }

  // Version data is asked for twice: for its size, and for all of it, which is read by its own length.
  enum class Data { kSize, kAll };
  void queryVersion(Data data) {
    longPath();
    readVersion(path_.c_str(), data);
  }
  void readVersion(char const* path, Data data) {
    int const file = load(path);
    if (data == Data::kAll) {
      require(pread(file, buffer_.data(), 6, 1024) == 6, "the version block has a length");
      require(pread(file, buffer_.data(), 376, 1024) == 376, "the version block is there");
    }
    close(file);
  }
  int load(char const* path) {
    int const file = open(path, O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    require(fstat(file, &status_) == 0 && pread(file, buffer_.data(), 4096, 0) > 0, "the module is a file");
    return file;
  }

  // The product names the key of the settings, after the command line.
  void forcedLanguage() {
    programPath();
    queryVersion(Data::kSize);
    programPath();
    queryVersion(Data::kAll);
    readText("/proc/self/cmdline");
    programPath();
    modulePath();
    char const* const home = getenv("HOME");
    std::string const settings =
        std::string(home != nullptr ? home : "") + "/.config/kvbase/registry/HKEY_CURRENT_USER/Software/";
    int const folder = open(settings.c_str(), O_RDONLY | O_CLOEXEC | O_PATH | O_DIRECTORY);
    if (folder >= 0) close(folder);
  }
  // The user's is in the environment; the system's is asked for twice, as a language and as a locale.
  void userLanguages() {
    for (int i = 0; i < 2; ++i) {
      readText("/etc/locale.conf");
      readText("/etc/default/locale");
    }
  }
  void readText(char const* path) {
    int const file = open(path, O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) return;
    fstat(file, &status_);
    while (read(file, buffer_.data(), 4096) > 0) {
    }
    close(file);
  }

  // The file of that name, or the one that differs only in case: translations come from a system that does not tell.
  std::string find(std::string const& folder, char const* name) {
    std::string const path = folder + name;
    if (stat(path.c_str(), &status_) == 0) return path;
    std::string found;
    DIR* const entries = opendir(folder.c_str());
    while (dirent const* const entry = readdir(entries)) {
      if (strcasecmp(entry->d_name, name) == 0) found = folder + entry->d_name;
    }
    if (!found.empty()) stat(found.c_str(), &status_);
    closedir(entries);
    return found;
  }

  std::string path_;
  std::string folder_;
  struct stat status_;
  std::array<char, 4096> buffer_;
};

// While it lives, the user's language is German.
class GermanUser {
 public:
  GermanUser() { setenv("LC_ALL", "de_DE.UTF-8", 1); }
  ~GermanUser() { unsetenv("LC_ALL"); }
  GermanUser(GermanUser const&) = delete;
  GermanUser& operator=(GermanUser const&) = delete;
};

}  // namespace bench
}  // namespace KV_1_1
