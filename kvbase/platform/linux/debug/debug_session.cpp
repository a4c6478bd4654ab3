// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/debug_session.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "kvbase/core/lazy.h"
#include "kvbase/platform/linux/debug/debug_files.h"

namespace KV_1_1 {
namespace platform {

Dwfl_Callbacks const DebugSession::kCallbacks = {&DebugSession::findElfOf, &DebugSession::findDebugDataOf, nullptr,
                                                 nullptr};

DebugSession& DebugSession::instance() {
  static Lazy<DebugSession> session;
  return session.get();
}

DebugSession::~DebugSession() {
  if (dwfl_ != nullptr) libdw_.end(dwfl_);
  if (library_ != nullptr) dlclose(library_);
}

void DebugSession::use(LibdwFunctions const& functions) {
  if (library_ != nullptr || !functions.canList()) return;
  LibdwFunctions own;
  library_ = openLibdw(own);
  if (library_ != nullptr) libdw_ = own;
}

bool DebugSession::begin() {
  if (dwfl_ != nullptr) return true;
  if (!libdw_.canList()) return false;
  libdw_.elfVersion(EV_CURRENT);
  dwfl_ = libdw_.begin(&kCallbacks);
  return dwfl_ != nullptr;
}

void DebugSession::forgetUnloaded() {
  unsigned long long const removed = loadCounts().removed;
  if (removed == counts_.removed) return;
  ++generation_;
  if (dwfl_ != nullptr) libdw_.end(dwfl_);
  dwfl_ = nullptr;
  modules_.clear();
  counts_ = LoadCounts{0, removed};
}

DebugSession::Module* DebugSession::knownModuleAt(std::uint64_t address) {
  auto const after = std::upper_bound(modules_.begin(), modules_.end(), address,
                                      [](std::uint64_t at, auto const& module) { return at < module->loaded.start; });
  if (after == modules_.begin()) return nullptr;
  Module* const module = (after - 1)->get();
  return address < module->loaded.end ? module : nullptr;
}

DebugSession::Module* DebugSession::moduleAt(std::uint64_t address) {
  forgetUnloaded();
  if (!begin()) return nullptr;
  Module* const known = knownModuleAt(address);
  if (known != nullptr) return known;
  return report() ? knownModuleAt(address) : nullptr;
}

// Tells libdw of the modules that it does not know yet. True if there are any.
bool DebugSession::report() {
  LoadCounts const counts = loadCounts();
  if (counts.added == counts_.added) return false;
  std::vector<LoadedModule> loaded = loadedModules();
  modules_.reserve(loaded.size());
  libdw_.reportBeginAdd(dwfl_);
  bool isProgram = true;
  for (LoadedModule& each : loaded) {
    bool const isFirst = std::exchange(isProgram, false);
    if (knownModuleAt(each.start) != nullptr) continue;
    auto module = std::make_unique<Module>();
    module->loaded = std::move(each);
    module->isProgram = isFirst;
    LoadedModule const& facts = module->loaded;
    module->handle = libdw_.reportModule(dwfl_, facts.path.c_str(), facts.start, facts.end);
    auto const place = std::upper_bound(modules_.begin(), modules_.end(), facts.start,
                                        [](std::uint64_t at, auto const& other) { return at < other->loaded.start; });
    modules_.insert(place, std::move(module));
  }
  libdw_.reportEnd(dwfl_, nullptr, nullptr);
  counts_.added = counts.added;
  return true;
}

int DebugSession::findElf(std::uint64_t base, char** fileName, Elf** contents) {
  Module* const module = knownModuleAt(base);
  if (module == nullptr) return -1;
  ModuleFile const file = openModuleFile(libdw_, module->loaded, module->isProgram);
  *contents = file.contents;
  if (file.contents != nullptr) {
    *fileName = strdup(module->loaded.path.c_str());
    return file.descriptor;
  }
  module->image = imageOfModule(module->loaded.start);
  if (!module->image.empty()) *contents = libdw_.elfOfMemory(module->image.data(), module->image.size());
  return -1;
}

int DebugSession::findDebugData(Dwfl_Module* handle, char const* file, char const* link, std::uint32_t checksum,
                                char** path) {
  DebugFileRequest request;
  request.file = file == nullptr ? "" : file;
  request.link = link == nullptr ? "" : link;
  request.checksum = checksum;
  unsigned char const* bits = nullptr;
  GElf_Addr address = 0;
  int const size = libdw_.buildId(handle, &bits, &address);
  if (size > 0) request.buildId.assign(bits, bits + size);
  for (std::size_t at = 0; at < searchPath_.size();) {
    std::size_t const end = std::min(searchPath_.find(';', at), searchPath_.size());
    // What is no folder of this system, a symbol server for instance, is no place to look at.
    if (searchPath_[at] == '/') request.folders.push_back(searchPath_.substr(at, end - at));
    at = end + 1;
  }
  std::string found;
  int const descriptor = openDebugFile(libdw_, request, found);
  if (descriptor >= 0) *path = strdup(found.c_str());
  return descriptor;
}

// An exception must not cross the code of libdw; it is told that there is no file.
int DebugSession::findElfOf(Dwfl_Module*, void**, char const*, Dwarf_Addr base, char** fileName, Elf** contents) {
  try {
    return instance().findElf(base, fileName, contents);
  } catch (std::exception const&) {
    return -1;
  }
}

int DebugSession::findDebugDataOf(Dwfl_Module* handle, void**, char const*, Dwarf_Addr, char const* file,
                                  char const* link, GElf_Word checksum, char** path) {
  try {
    return instance().findDebugData(handle, file, link, checksum, path);
  } catch (std::exception const&) {
    return -1;
  }
}

void DebugSession::setSearchPath(char const* path) {
  searchPath_ = path == nullptr ? "" : path;
}

}  // namespace platform
}  // namespace KV_1_1
