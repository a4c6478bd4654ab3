// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <memory>

namespace KV_1_1 {
namespace testing {

// The folder for files that the programs of a machine share, for a scope; its subfolder "Scan Works", that of the fixtures, is
// removed at the end. On Windows this is the real folder; elsewhere it is one of the test's own.
class CommonFiles {
 public:
  CommonFiles();
  ~CommonFiles();
  CommonFiles(CommonFiles const&) = delete;
  CommonFiles& operator=(CommonFiles const&) = delete;

  std::filesystem::path path() const;

 private:
  struct Place;
  std::unique_ptr<Place> const place_;
};

}  // namespace testing
}  // namespace KV_1_1
