// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/files/search_registry.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <utility>

namespace KV_1_1 {
namespace platform {

namespace {

using Searches = std::map<SearchHandle, std::unique_ptr<DirectorySnapshot>>;

std::mutex mutex;
// Exists only while a search is running, so there is nothing to construct at start and nothing to destroy at exit.
Searches* running = nullptr;
std::uintptr_t lastHandle = 0;  // counts up, so a handle is never used twice

}  // namespace

SearchHandle registerSearch(std::unique_ptr<DirectorySnapshot> search) {
  std::lock_guard<std::mutex> const lock(mutex);
  auto first = running == nullptr ? std::make_unique<Searches>() : nullptr;
  auto const handle = reinterpret_cast<SearchHandle>(++lastHandle);
  (first ? *first : *running).emplace(handle, std::move(search));
  if (first) running = first.release();
  return handle;
}

DirectorySnapshot* searchOf(SearchHandle handle) {
  std::lock_guard<std::mutex> const lock(mutex);
  if (running == nullptr) return nullptr;
  auto const entry = running->find(handle);
  return entry == running->end() ? nullptr : entry->second.get();
}

std::unique_ptr<DirectorySnapshot> removeSearch(SearchHandle handle) {
  std::lock_guard<std::mutex> const lock(mutex);
  auto search = running != nullptr ? running->extract(handle) : Searches::node_type();
  if (search.empty()) return nullptr;
  if (running->empty()) delete std::exchange(running, nullptr);
  return std::move(search.mapped());
}

}  // namespace platform
}  // namespace KV_1_1
