// SPDX-License-Identifier: MIT
//
// The seam to the application framework of Windows programs (MFC): the instance from which it loads resources, and the
// registration of the library as one of its extensions. Without the framework, on either system, the instance is a plain
// slot and the registration succeeds and does nothing.
//
// Thread rule: the slot is process-wide; extensions come and go only while a library loads or unloads.
#pragma once

#include "kvbase/platform/backend.h"
#include "kvbase/platform/types.h"

namespace KV_1_1 {
namespace platform {

class FrameworkApi {
 public:
  // The instance from which the framework loads resources; null before it has been set.
  virtual HINSTANCE resourceInstance() = 0;
  virtual void setResourceInstance(HINSTANCE instance) = 0;

  // Clears the library's extension record, registers the instance in it and puts its resources into the framework's
  // search chain. False if the framework refuses; nothing is left behind then but what endExtension releases.
  virtual bool startExtension(HINSTANCE instance) = 0;
  // Undoes it; nothing happens to what has not been started.
  virtual void endExtension() = 0;

 protected:
  // Backends are never destroyed through this interface.
  ~FrameworkApi() = default;
};

}  // namespace platform
}  // namespace KV_1_1
