// SPDX-License-Identifier: MIT
//
// An application framework that exists only in the test: a slot for the instance, and a log of the calls.
//
//   ScriptedFramework framework;
//   framework.refuses = true;                     // the extension is not accepted
//   platform::ScopedBackend<platform::FrameworkApi> scope(framework);
#pragma once

#include <string>
#include <vector>

#include "kvbase/platform/framework_api.h"

namespace KV_1_1 {
namespace testing {

class ScriptedFramework : public platform::FrameworkApi {
 public:
  using Log = std::vector<std::string>;

  virtual ~ScriptedFramework() = default;

  Log log;                         // the names of the calls that change something
  HINSTANCE current = nullptr;     // the slot
  std::vector<HINSTANCE> set;      // what it was set to, in the order of the calls
  std::vector<HINSTANCE> started;  // the instances of the extensions
  bool refuses = false;

  HINSTANCE resourceInstance() override { return current; }
  void setResourceInstance(HINSTANCE instance) override {
    log.push_back("setResourceInstance");
    set.push_back(instance);
    current = instance;
  }
  bool startExtension(HINSTANCE instance) override {
    log.push_back("startExtension");
    started.push_back(instance);
    return !refuses;
  }
  void endExtension() override { log.push_back("endExtension"); }
};

}  // namespace testing
}  // namespace KV_1_1
