// SPDX-License-Identifier: MIT
#pragma once

#include <new>

#include "kvbase/diagnostics/vg_stack_walker.h"

namespace KV_1_1 {
namespace testing {

// Puts a fresh walker in the place of the global one for a scope, by means of shallow copies.
class FreshGlobalWalker {
 public:
  FreshGlobalWalker() {
    new (saved_) VgStackWalker(VgStackWalker::globalStackWalker);
    VgStackWalker::globalStackWalker = fresh_;
  }
  ~FreshGlobalWalker() {
    // The copy is never destroyed: the global object owns what both refer to.
    VgStackWalker::globalStackWalker = *std::launder(reinterpret_cast<VgStackWalker*>(saved_));
  }
  FreshGlobalWalker(FreshGlobalWalker const&) = delete;
  FreshGlobalWalker& operator=(FreshGlobalWalker const&) = delete;

 private:
  VgStackWalker fresh_;
  alignas(VgStackWalker) unsigned char saved_[sizeof(VgStackWalker)];
};

}  // namespace testing
}  // namespace KV_1_1
