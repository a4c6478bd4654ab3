// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include "kvbase/platform/backend.h"
#include "tests/filesystem/path_support.h"
#include "tests/support/scripted_errors.h"
#include "tests/support/scripted_files.h"
#include "tests/support/scripted_shell.h"

namespace KV_1_1 {
namespace testing {

// The base of tests in which a script stands in the place of the whole system: its files, its desktop, its reasons for
// failures. Whatever was given out has to be back at the end.
template <class Files>
class ScriptedSystem : public ::testing::Test {
 protected:
  ~ScriptedSystem() override {
    EXPECT_EQ(files.openInAll(), 0);
    EXPECT_EQ(shell.openItems, 0);
  }

  ScriptedErrors errors;
  platform::ScopedBackend<platform::ErrorApi> errorsScope{errors};
  Files files;
  platform::ScopedBackend<platform::FileApi> filesScope{files};
  ScriptedShell shell;
  platform::ScopedBackend<platform::ShellApi> shellScope{shell};
  CollectedMessages messages;
};

}  // namespace testing
}  // namespace KV_1_1
