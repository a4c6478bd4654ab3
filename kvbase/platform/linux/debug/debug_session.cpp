// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/debug_session.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "kvbase/core/lazy.h"
#include "kvbase/platform/linux/debug/debug_files.h"

namespace KV_1_1 {
namespace platform {

namespace {

// The file name without folder and ending: KVBase for /lib/KVBase.so, libc for libc.so.6.
std::string_view shortName(std::string_view path) {
  std::size_t const slash = path.rfind('/');
  std::string_view const file = slash == std::string_view::npos ? path : path.substr(slash + 1);
  std::size_t const library = file.find(".so");
  bool const isLibrary = library != std::string_view::npos && (library + 3 == file.size() || file[library + 3] == '.');
  std::size_t const end = isLibrary ? library : file.rfind('.');
  return end == std::string_view::npos || end == 0 ? file : file.substr(0, end);
}

debug_help::ModuleInfo64 recordOf(LoadedModule const& module) {
  debug_help::ModuleInfo64 info = {};
  info.sizeOfStruct = sizeof info;
  info.baseOfImage = module.start;
  info.imageSize = static_cast<ulong32>(module.end - module.start);
  shortName(module.path).copy(info.moduleName, sizeof info.moduleName - 1);
  module.path.copy(info.imageName, sizeof info.imageName - 1);
  module.path.copy(info.loadedImageName, sizeof info.loadedImageName - 1);
  return info;
}

}  // namespace

Dwfl_Callbacks const DebugSession::kCallbacks = {&DebugSession::findElfOf, &DebugSession::findDebugDataOf, nullptr,
                                                 nullptr};

DebugSession& DebugSession::instance() {
  static Lazy<DebugSession> session;
  return session.get();
}

DebugSession::~DebugSession() {
  if (others_ != nullptr) libdw_.end(others_);
  if (permanent_ != nullptr) libdw_.end(permanent_);
  if (library_ != nullptr) dlclose(library_);
}

void DebugSession::use(LibdwFunctions const& functions) {
  if (library_ != nullptr || !functions.canList()) return;
  LibdwFunctions own;
  library_ = openLibdw(own);
  if (library_ != nullptr) libdw_ = own;
}

bool DebugSession::begin() {
  if (permanent_ != nullptr) return true;
  if (!libdw_.canList()) return false;
  libdw_.elfVersion(EV_CURRENT);
  permanent_ = libdw_.begin(&kCallbacks);
  return permanent_ != nullptr;
}

void DebugSession::forgetUnloaded() {
  unsigned long long const removed = loadCounts().removed;
  if (removed == counts_.removed) return;
  ++generation_;
  if (others_ != nullptr) libdw_.end(others_);
  others_ = nullptr;
  auto const isForgotten = [](auto const& module) { return !module->loaded.isPermanent; };
  modules_.erase(std::remove_if(modules_.begin(), modules_.end(), isForgotten), modules_.end());
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

// Tells libdw of the modules that it does not know yet. True if there may be any.
bool DebugSession::report() {
  LoadCounts const counts = loadCounts();
  if (counts.added == counts_.added) return false;
  std::vector<LoadedModule> loaded = loadedModules();
  if (others_ == nullptr) others_ = libdw_.begin(&kCallbacks);
  if (others_ == nullptr) throw std::bad_alloc();
  report(loaded, true);
  report(loaded, false);
  counts_.added = counts.added;
  return true;
}

void DebugSession::report(std::vector<LoadedModule>& loaded, bool permanent) {
  Dwfl* const session = permanent ? permanent_ : others_;
  modules_.reserve(modules_.size() + loaded.size());
  libdw_.reportBeginAdd(session);
  for (LoadedModule& each : loaded) {
    if (each.isPermanent != permanent || knownModuleAt(each.start) != nullptr) continue;
    auto module = std::make_unique<Module>();
    module->isProgram = &each == loaded.data();
    module->loaded = std::move(each);
    LoadedModule const& facts = module->loaded;
    module->record = recordOf(facts);
    module->session = session;
    module->handle = libdw_.reportModule(session, facts.path.c_str(), facts.start, facts.end);
    auto const place = std::upper_bound(modules_.begin(), modules_.end(), facts.start,
                                        [](std::uint64_t at, auto const& other) { return at < other->loaded.start; });
    modules_.insert(place, std::move(module));
  }
  libdw_.reportEnd(session, nullptr, nullptr);
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
