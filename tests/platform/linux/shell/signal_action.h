// SPDX-License-Identifier: MIT
#pragma once

#include <signal.h>

namespace KV_1_1 {
namespace testing {

// Sets the action of a signal for a scope.
class SignalAction {
 public:
  SignalAction(int number, void (*handler)(int)) : number_(number) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigaction(number_, &action, &previous_);
  }
  ~SignalAction() { sigaction(number_, &previous_, nullptr); }
  SignalAction(SignalAction const&) = delete;
  SignalAction& operator=(SignalAction const&) = delete;

 private:
  int const number_;
  struct sigaction previous_;
};

}  // namespace testing
}  // namespace KV_1_1
