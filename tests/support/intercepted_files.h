// SPDX-License-Identifier: MIT
//
// The base of the file backends for tests: asks a hook before each call, then forwards it to another backend, and keeps
// count of what has been given out and not taken back.
#pragma once

#include "kvbase/platform/file_api.h"

namespace KV_1_1 {
namespace testing {

class InterceptedFiles : public platform::FileApi {
 public:
  explicit InterceptedFiles(platform::FileApi& target) : target_(target) {}
  virtual ~InterceptedFiles() = default;
  InterceptedFiles(InterceptedFiles const&) = delete;
  InterceptedFiles& operator=(InterceptedFiles const&) = delete;

  // Searches and texts that were given out and not yet closed or released.
  int openSearches() const { return openSearches_; }
  int openTexts() const { return openTexts_; }

  ulong32 getAttributes(wchar const* path) override {
    return enter("getAttributes", path) ? target_.getAttributes(path) : platform::kInvalidAttributes;
  }
  bool getInfo(wchar const* path, platform::FileInfo& info) override {
    return enter("getInfo", path) && target_.getInfo(path, info);
  }
  platform::SearchHandle findFirst(wchar const* pattern, platform::FindData& data) override {
    if (!enter("findFirst", pattern)) return platform::invalidSearch();
    platform::SearchHandle const search = target_.findFirst(pattern, data);
    if (search != platform::invalidSearch()) ++openSearches_;
    return search;
  }
  bool findNext(platform::SearchHandle search, platform::FindData& data) override {
    return enter("findNext", nullptr) && target_.findNext(search, data);
  }
  // A search is closed even if the hook refuses: what fails is only the answer, nothing leaks.
  bool findClose(platform::SearchHandle search) override {
    bool const admitted = enter("findClose", nullptr);
    bool const closed = target_.findClose(search);
    if (closed) --openSearches_;
    return admitted && closed;
  }
  wchar* currentDirectory() override {
    return enter("currentDirectory", nullptr) ? counted(target_.currentDirectory()) : nullptr;
  }
  wchar* currentDirectoryOfDrive(int drive) override {
    wchar const letter[] = {static_cast<wchar>('A' + drive - 1), 0};
    return enter("currentDirectoryOfDrive", letter) ? counted(target_.currentDirectoryOfDrive(drive)) : nullptr;
  }
  // Releasing cannot fail, so the hook is not asked.
  void freeText(wchar* text) override {
    if (text != nullptr) --openTexts_;
    target_.freeText(text);
  }

 protected:
  // Called before each call that can fail, with the method's name and its text (null if it has none; the letter of a
  // drive). False makes the call fail with its own failure value, without asking the target.
  virtual bool enter(char const* call, wchar const* text) = 0;

 private:
  wchar* counted(wchar* text) {
    if (text != nullptr) ++openTexts_;
    return text;
  }

  platform::FileApi& target_;
  int openSearches_ = 0;
  int openTexts_ = 0;
};

}  // namespace testing
}  // namespace KV_1_1
