// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/loaded_modules.h"

#include <elf.h>
#include <link.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "kvbase/platform/linux/debug/own_memory.h"
#include "kvbase/platform/linux/files/name_mapping.h"
#include "kvbase/platform/linux/modules/elf_modules.h"

namespace KV_1_1 {
namespace platform {

namespace {

// Calls `visit` for each module until it returns true. No exception may leave `visit`.
template <class Visit>
void visitModules(Visit visit) {
  auto const callback = [](dl_phdr_info* info, std::size_t, void* data) -> int {
    return (*static_cast<Visit*>(data))(*info) ? 1 : 0;
  };
  dl_iterate_phdr(callback, &visit);
}

std::uint64_t pageMask() {
  return static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) - 1;
}

// The range of whole pages from the first to the last segment that is loaded.
bool rangeOf(dl_phdr_info const& info, std::uint64_t mask, LoadedModule& module) {
  bool found = false;
  for (int i = 0; i < info.dlpi_phnum; ++i) {
    ElfW(Phdr) const& segment = info.dlpi_phdr[i];
    if (segment.p_type != PT_LOAD) continue;
    if (!found) module.start = (info.dlpi_addr + segment.p_vaddr) & ~mask;
    module.end = (info.dlpi_addr + segment.p_vaddr + segment.p_memsz + mask) & ~mask;
    found = true;
  }
  return found;
}

void findBuildId(dl_phdr_info const& info, LoadedModule& module) {
  for (int i = 0; i < info.dlpi_phnum; ++i) {
    ElfW(Phdr) const& segment = info.dlpi_phdr[i];
    if (segment.p_type != PT_NOTE) continue;
    std::uint64_t const mask = (segment.p_align == 8 ? 8 : 4) - 1;
    std::uint64_t const start = info.dlpi_addr + segment.p_vaddr;
    for (std::uint64_t at = 0; at + sizeof(ElfW(Nhdr)) <= segment.p_memsz;) {
      ElfW(Nhdr) note;
      memcpy(&note, reinterpret_cast<void const*>(start + at), sizeof note);
      std::uint64_t const content = (at + sizeof note + note.n_namesz + mask) & ~mask;
      if (content > segment.p_memsz || note.n_descsz > segment.p_memsz - content) break;
      auto const* const owner = reinterpret_cast<char const*>(start + at + sizeof note);
      if (note.n_type == NT_GNU_BUILD_ID && note.n_namesz == 4 && memcmp(owner, "GNU", 4) == 0) {
        auto const* const bytes = reinterpret_cast<unsigned char const*>(start + content);
        module.buildId.assign(bytes, bytes + note.n_descsz);
        return;
      }
      at = (content + note.n_descsz + mask) & ~mask;
    }
  }
}

// Makes a relative path absolute. The program has no name here. A name without a folder is that of the code which the
// system itself maps into each process: there is no file.
void completePath(LoadedModule& module) {
  bool const isRelative = !module.path.empty() && module.path[0] != '/' && module.path.find('/') != std::string::npos;
  if (!module.path.empty() && !isRelative) return;
  NativePath path;
  if (pathOfModule(reinterpret_cast<HINSTANCE>(module.start), path)) module.path.assign(path.data(), path.size() - 1);
}

bool contains(LoadedModule const& module, std::uint64_t address) {
  return address >= module.start && address < module.end;
}

// The loader never unloads what has been loaded together with the program, and it lists those modules first: whatever
// stands before the C library or the loader itself is one of them. Elsewhere than in the program's own list, which starts
// with the program, only the module of this code is sure to stay.
void markPermanent(std::vector<LoadedModule>& modules) {
  std::uint64_t const never[] = {reinterpret_cast<std::uint64_t>(&dl_iterate_phdr), getauxval(AT_BASE)};
  bool const isProgramsList = !modules.empty() && contains(modules[0], getauxval(AT_PHDR));
  bool isPermanent = false;
  for (auto module = modules.rbegin(); module != modules.rend(); ++module) {
    for (std::uint64_t const address : never)
      isPermanent = isPermanent || (isProgramsList && contains(*module, address));
    module->isPermanent = isPermanent || contains(*module, reinterpret_cast<std::uint64_t>(&markPermanent));
  }
}

}  // namespace

LoadCounts loadCounts() {
  LoadCounts counts;
  visitModules([&counts](dl_phdr_info const& info) {
    counts.added = info.dlpi_adds;
    counts.removed = info.dlpi_subs;
    return true;
  });
  return counts;
}

std::vector<LoadedModule> loadedModules() {
  std::vector<LoadedModule> modules;
  std::uint64_t const mask = pageMask();
  bool complete = true;
  visitModules([&](dl_phdr_info const& info) {
    // The loader's code is on the way, and an exception must not cross it.
    try {
      LoadedModule module;
      if (!rangeOf(info, mask, module)) return false;
      module.path = info.dlpi_name;
      findBuildId(info, module);
      modules.push_back(std::move(module));
    } catch (std::bad_alloc const&) {
      complete = false;
    }
    return !complete;
  });
  if (!complete) throw std::bad_alloc();
  for (LoadedModule& module : modules) completePath(module);
  markPermanent(modules);
  return modules;
}

std::vector<char> imageOfModule(std::uint64_t start) {
  std::vector<char> image;
  std::uint64_t const mask = pageMask();
  bool complete = true;
  visitModules([&](dl_phdr_info const& info) {
    LoadedModule module;
    if (!rangeOf(info, mask, module) || module.start != start) return false;
    std::uint64_t size = 0;
    for (int i = 0; i < info.dlpi_phnum; ++i) {
      ElfW(Phdr) const& segment = info.dlpi_phdr[i];
      if (segment.p_type == PT_LOAD) size = std::max<std::uint64_t>(size, segment.p_offset + segment.p_filesz);
    }
    try {
      image.resize(size);
    } catch (std::exception const&) {
      complete = false;
      return true;
    }
    for (int i = 0; i < info.dlpi_phnum; ++i) {
      ElfW(Phdr) const& segment = info.dlpi_phdr[i];
      bool const isReadable = segment.p_type == PT_LOAD && (segment.p_flags & PF_R) != 0;
      if (!isReadable || segment.p_filesz == 0) continue;
      std::size_t count = 0;
      readOwnMemory(info.dlpi_addr + segment.p_vaddr, image.data() + segment.p_offset, segment.p_filesz, count);
    }
    return true;
  });
  if (!complete) throw std::bad_alloc();
  if (image.size() < sizeof(ElfW(Ehdr))) return {};
  // The table of sections is not a part of the memory image.
  auto* const header = reinterpret_cast<ElfW(Ehdr)*>(image.data());
  std::uint64_t const sectionBytes = std::uint64_t{header->e_shentsize} * header->e_shnum;
  if (header->e_shoff > image.size() || sectionBytes > image.size() - header->e_shoff) {
    header->e_shoff = 0;
    header->e_shnum = 0;
    header->e_shstrndx = 0;
  }
  return image;
}

}  // namespace platform
}  // namespace KV_1_1
