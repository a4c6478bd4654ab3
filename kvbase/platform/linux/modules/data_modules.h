// SPDX-License-Identifier: MIT
//
// Windows files that have been opened only for their resources.
//
// Thread rule: any function may be called from any thread; a module must not be released while another thread uses it.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include "kvbase/platform/linux/modules/pe_resources.h"
#include "kvbase/platform/module_api.h"

namespace KV_1_1 {
namespace platform {

class DataModule {
 public:
  // Opens a file. Null if it is not a Windows module; the descriptor is closed then.
  static std::unique_ptr<DataModule> open(Descriptor file);

  // Locks the module for a lookup.
  std::unique_lock<std::mutex> lock() { return std::unique_lock<std::mutex>(mutex_); }
  // The resources of the file as it is now. To be called under the lock.
  PeResources& resources();
  // The bytes of a resource. They are copied when they are first asked for; the copy stays until the module is
  // released, whatever becomes of the file. To be called under the lock.
  ResourceBytes bytesOf(PeResources::Version version);

 private:
  explicit DataModule(Descriptor file) : pages_(std::move(file)) {}

  std::mutex mutex_;
  FilePages pages_;
  PeResources resources_;
  std::map<std::pair<std::uint64_t, ulong32>, std::unique_ptr<unsigned char[]>> copies_;  // by place and size
};

// Whether a handle has the form of one of a data module: with the lowest bit set.
bool isDataModule(HINSTANCE module);
// Adds a module to those that have a handle, until it is removed.
HINSTANCE addDataModule(std::unique_ptr<DataModule> module);
// The module of a handle; null if there is none.
DataModule* findDataModule(HINSTANCE module);
std::unique_ptr<DataModule> removeDataModule(HINSTANCE module);

}  // namespace platform
}  // namespace KV_1_1
