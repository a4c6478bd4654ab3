// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include <atomic>

namespace KV_1_1 {
namespace platform {

namespace {

// Programs without the framework: nobody else reads the slot.
std::atomic<HINSTANCE> currentInstance{nullptr};

}  // namespace

HINSTANCE NativeFramework::resourceInstance() {
  return currentInstance.load(std::memory_order_relaxed);
}

void NativeFramework::setResourceInstance(HINSTANCE instance) {
  currentInstance.store(instance, std::memory_order_relaxed);
}

bool NativeFramework::startExtension(HINSTANCE) {
  return true;
}

void NativeFramework::endExtension() {}

}  // namespace platform
}  // namespace KV_1_1
