// SPDX-License-Identifier: MIT
#pragma once

#include <stdlib.h>

#include <string>

namespace KV_1_1 {
namespace testing {

// Sets a variable of the environment for a scope, or takes it away (null).
class EnvironmentVariable {
 public:
  EnvironmentVariable(char const* name, char const* value) : name_(name) {
    char const* const previous = getenv(name);
    wasSet_ = previous != nullptr;
    if (wasSet_) previous_ = previous;
    assign(value);
  }
  ~EnvironmentVariable() { assign(wasSet_ ? previous_.c_str() : nullptr); }

  EnvironmentVariable(EnvironmentVariable const&) = delete;
  EnvironmentVariable& operator=(EnvironmentVariable const&) = delete;

 private:
  void assign(char const* value) {
    if (value == nullptr) {
      unsetenv(name_);
    } else {
      setenv(name_, value, 1);
    }
  }

  char const* const name_;
  bool wasSet_;
  std::string previous_;
};

}  // namespace testing
}  // namespace KV_1_1
