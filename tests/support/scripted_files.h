// SPDX-License-Identifier: MIT
//
// A file backend that returns what the test says and never reaches the disk. Any item that the script does not name is
// missing. It records each call like RecordingFiles.
//
//   ScriptedFiles files;
//   files.script.attributes[KVW("\\\\?\\C:\\a\\")] = platform::kAttributeDirectory;
//   files.script.infos[KVW("\\\\?\\C:\\a\\x.txt")] = {platform::kAttributeNormal, 42};
//   files.script.searches[KVW("C:\\a\\*")] = {{platform::kAttributeDirectory, KVW(".")},
//                                              {platform::kAttributeNormal, KVW("x")}};
//   files.script.directory = KVW("C:\\work");
//   files.script.driveDirectories[4] = KVW("D:\\data");
//   files.script.errors["moveFile"] = 32;      // moveFile fails with this error; by default every change succeeds
//   platform::ScopedBackend<platform::FileApi> scope(files);
//
// Texts are compared unit by unit.
#pragma once

#include <iterator>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "tests/support/recording_files.h"

namespace KV_1_1 {
namespace testing {

struct ScriptedEntry {
  ulong32 attributes;
  wstring name;  // at most 259 units
};

// The backend that ScriptedFiles records.
class FileScript : public platform::FileApi {
 public:
  virtual ~FileScript() = default;

  std::map<wstring, ulong32> attributes;
  std::map<wstring, platform::FileInfo> infos;
  std::map<wstring, std::vector<ScriptedEntry>> searches;  // an empty list matches nothing
  std::map<int, wstring> driveDirectories;
  wstring directory;  // empty if there is none

  std::map<std::string, ulong32> errors;         // by the name of the call
  ulong32 openLeaves = platform::kNoError;       // the last error after openFile has succeeded
  platform::FileHandle const opened = &opened_;  // the result of openFile
  std::map<wstring, struct _stat64i32> statuses;
  std::map<wstring, int> emptyDirectories;                       // the result of isDirectoryEmpty
  std::vector<std::pair<std::int64_t, std::int64_t>> copySteps;  // the arguments of each call of the progress callback
  std::vector<ulong32> copyAnswers;                              // the results of the progress callback
  std::uint64_t now = 0;
  std::vector<std::uint64_t> lastWriteTimes;  // in the order of the calls

  bool setAttributes(wchar const*, ulong32) override { return succeeds("setAttributes"); }
  int getStatus(wchar const* path, struct _stat64i32& status) override {
    auto const found = statuses.find(path);
    if (found == statuses.end()) return -1;
    status = found->second;
    return 0;
  }
  int isDirectoryEmpty(wchar const* path) override {
    auto const found = emptyDirectories.find(path);
    return found == emptyDirectories.end() ? 0 : found->second;
  }
  platform::FileHandle openFile(wchar const*, ulong32, ulong32, ulong32, ulong32) override {
    if (!succeeds("openFile")) return platform::invalidFile();
    platform::errors().setLastError(openLeaves);
    return opened;
  }
  bool closeFile(platform::FileHandle file) override { return file == opened && succeeds("closeFile"); }
  bool setLastWriteTime(platform::FileHandle, std::uint64_t time) override {
    lastWriteTimes.push_back(time);
    return succeeds("setLastWriteTime");
  }
  std::uint64_t systemTime() override { return now; }
  int openDescriptor(wchar const*, int, int, int) override { return succeeds("openDescriptor") ? 7 : -1; }
  int commitDescriptor(int descriptor) override { return descriptor == 7 && succeeds("commitDescriptor") ? 0 : -1; }
  int closeDescriptor(int descriptor) override { return descriptor == 7 && succeeds("closeDescriptor") ? 0 : -1; }
  bool copyFile(wchar const*, wchar const*, platform::CopyProgress progress, void* data, ulong32) override {
    if (progress != nullptr) {
      for (auto const& step : copySteps) copyAnswers.push_back(progress(step.first, step.second, data));
    }
    return succeeds("copyFile");
  }
  bool moveFile(wchar const*, wchar const*) override { return succeeds("moveFile"); }
  bool deleteFile(wchar const*) override { return succeeds("deleteFile"); }
  bool createDirectory(wchar const*) override { return succeeds("createDirectory"); }
  bool removeDirectory(wchar const*) override { return succeeds("removeDirectory"); }

  ulong32 getAttributes(wchar const* path) override {
    auto const found = attributes.find(path);
    return found == attributes.end() ? platform::kInvalidAttributes : found->second;
  }
  bool getInfo(wchar const* path, platform::FileInfo& info) override {
    auto const found = infos.find(path);
    if (found == infos.end()) return false;
    info = found->second;
    return true;
  }
  platform::SearchHandle findFirst(wchar const* pattern, platform::FindData& data) override {
    auto const found = searches.find(pattern);
    if (found == searches.end() || found->second.empty()) return platform::invalidSearch();
    auto* const search = new Search{found->second, 0};
    running_.insert(search);
    findNext(search, data);
    return search;
  }
  bool findNext(platform::SearchHandle handle, platform::FindData& data) override {
    auto* const search = static_cast<Search*>(handle);
    if (running_.count(search) == 0 || search->next == search->entries.size()) return false;
    ScriptedEntry const& entry = search->entries[search->next++];
    data.attributes = entry.attributes;
    data.name[entry.name.copy(data.name, std::size(data.name) - 1)] = 0;
    return true;
  }
  bool findClose(platform::SearchHandle handle) override {
    auto* const search = static_cast<Search*>(handle);
    if (running_.erase(search) == 0) return false;
    delete search;
    return true;
  }
  bool currentDirectory(wstring& path) override {
    if (!directory.empty()) path = directory;
    return !directory.empty();
  }
  bool currentDirectoryOfDrive(int drive, wstring& path) override {
    auto const found = driveDirectories.find(drive);
    if (found != driveDirectories.end()) path = found->second;
    return found != driveDirectories.end();
  }

 private:
  struct Search {
    std::vector<ScriptedEntry> entries;
    std::size_t next;
  };

  bool succeeds(char const* call) const {
    auto const found = errors.find(call);
    if (found == errors.end()) return true;
    platform::errors().setLastError(found->second);
    return false;
  }

  char opened_ = 0;
  std::set<Search*> running_;  // a search that is not closed stays allocated, so the leak checker finds it
};

class ScriptedFiles final : public RecordingFiles {
 public:
  ScriptedFiles() : RecordingFiles(script) {}

  FileScript script;
};

}  // namespace testing
}  // namespace KV_1_1
