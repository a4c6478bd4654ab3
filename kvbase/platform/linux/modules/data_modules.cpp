// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/modules/data_modules.h"

namespace KV_1_1 {
namespace platform {

namespace {

struct Registered {
  DataModule* module;
  Registered* next;
};

// Constant-initialised and never destroyed, so that modules can be used and released at any time.
std::mutex registryMutex;
Registered* registry = nullptr;

HINSTANCE handleOf(DataModule const* module) {
  return reinterpret_cast<HINSTANCE>(reinterpret_cast<std::uintptr_t>(module) | 1);
}

}  // namespace

std::unique_ptr<DataModule> DataModule::open(Descriptor file) {
  std::unique_ptr<DataModule> module(new DataModule(std::move(file)));
  module->pages_.refresh();
  if (!module->resources_.open(ByteRange(module->pages_))) module.reset();
  return module;
}

PeResources& DataModule::resources() {
  if (pages_.refresh()) resources_.open(ByteRange(pages_));
  return resources_;
}

ResourceBytes DataModule::bytesOf(PeResources::Version version) {
  static unsigned char none;
  ByteRange range;
  if (!resources().bytesOf(version, range)) return ResourceBytes();
  if (range.size() == 0) return {&none, 0};
  auto const size = static_cast<ulong32>(range.size());
  auto const known = copies_.find({range.start(), size});
  if (known != copies_.end()) return {known->second.get(), size};
  std::unique_ptr<unsigned char[]> copy(new unsigned char[size]);
  if (!range.copy(0, size, copy.get())) return ResourceBytes();
  unsigned char* const bytes = copy.get();
  copies_.emplace(std::make_pair(range.start(), size), std::move(copy));
  return {bytes, size};
}

bool isDataModule(HINSTANCE module) {
  return (reinterpret_cast<std::uintptr_t>(module) & 1) != 0;
}

HINSTANCE addDataModule(std::unique_ptr<DataModule> module) {
  std::unique_ptr<Registered> entry(new Registered{module.get(), nullptr});
  std::lock_guard<std::mutex> const guard(registryMutex);
  entry->next = registry;
  registry = entry.release();
  return handleOf(module.release());
}

DataModule* findDataModule(HINSTANCE module) {
  std::lock_guard<std::mutex> const guard(registryMutex);
  for (Registered const* entry = registry; entry != nullptr; entry = entry->next) {
    if (handleOf(entry->module) == module) return entry->module;
  }
  return nullptr;
}

std::unique_ptr<DataModule> removeDataModule(HINSTANCE module) {
  std::lock_guard<std::mutex> const guard(registryMutex);
  for (Registered** link = &registry; *link != nullptr; link = &(*link)->next) {
    if (handleOf((*link)->module) != module) continue;
    std::unique_ptr<Registered> const entry(*link);
    *link = entry->next;
    return std::unique_ptr<DataModule>(entry->module);
  }
  return nullptr;
}

}  // namespace platform
}  // namespace KV_1_1
