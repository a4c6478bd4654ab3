// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/modules/elf_modules.h"

#include <link.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

#include "kvbase/platform/linux/files/wildcard.h"

namespace KV_1_1 {
namespace platform {

namespace {

constexpr char kNoteOwner[] = "KVBase";
constexpr std::uint32_t kNoteType = 1;
constexpr std::size_t kNoteHeaderSize = 12;
// A segment with more notes than this was not made by a linker; a search through it would only take time.
constexpr int kMostNotes = 4096;

std::uintptr_t addressOf(HINSTANCE module) {
  return reinterpret_cast<std::uintptr_t>(module);
}

// Where the first segment of a module begins: in a page of its own.
std::uintptr_t loadAddress(dl_phdr_info const& info) {
  static std::uintptr_t const pageSize = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  for (int i = 0; i < info.dlpi_phnum; ++i) {
    if (info.dlpi_phdr[i].p_type == PT_LOAD) return (info.dlpi_addr + info.dlpi_phdr[i].p_vaddr) & ~(pageSize - 1);
  }
  return 0;
}

// Calls `visit` for each loaded module, the program first, until it returns true. No exception may leave `visit`.
template <class Visit>
bool visitModules(Visit& visit) {
  auto const callback = [](dl_phdr_info* info, std::size_t, void* data) -> int {
    return (*static_cast<Visit*>(data))(*info) ? 1 : 0;
  };
  return dl_iterate_phdr(callback, &visit) != 0;
}

bool findImageInNotes(ByteRange const& notes, std::uint64_t alignment, ByteRange& image) {
  std::uint64_t const mask = (alignment == 8 ? 8 : 4) - 1;
  std::uint64_t at = 0;
  for (int i = 0; i < kMostNotes; ++i) {
    unsigned char const* const header = notes.at(at, kNoteHeaderSize);
    if (header == nullptr) return false;
    std::uint64_t const ownerSize = load32(header);
    std::uint64_t const size = load32(header + 4);
    bool const isType = load32(header + 8) == kNoteType;
    std::uint64_t const owner = at + kNoteHeaderSize;
    std::uint64_t const content = (owner + ownerSize + mask) & ~mask;
    if (!notes.has(content, size)) return false;
    if (isType && ownerSize == sizeof kNoteOwner) {
      unsigned char const* const text = notes.at(owner, sizeof kNoteOwner);
      if (text != nullptr && memcmp(text, kNoteOwner, sizeof kNoteOwner) == 0) {
        image = notes.part(content, size);
        return true;
      }
    }
    at = (content + size + mask) & ~mask;
  }
  return false;
}

// What a thread knows about the resources of a module. The counts of modules loaded and unloaded so far tell whether it
// is still true.
struct KnownModule {
  HINSTANCE module = nullptr;
  unsigned long long added = 0, removed = 0;
  bool hasResources = false;
  PeResources resources;
};
constexpr std::size_t kKnownCount = 8;
thread_local KnownModule knownModules[kKnownCount];

struct Path {
  char bytes[4096];
  bool assign(char const* text) {
    std::size_t const size = strlen(text);
    bool const fits = size < sizeof bytes;
    if (fits) memcpy(bytes, text, size + 1);
    return fits;
  }
};

void assign(NativePath& path, char const* text, std::size_t size) {
  path.resize(0);
  path.append(text, size);
  path.push('\0');
}

constexpr char kDeleted[] = " (deleted)";

// The kernel appends a mark to the path of a removed file, which a file may also have as a part of its name.
std::size_t sizeWithoutMark(char const* path, std::size_t size, std::uint64_t inode) {
  constexpr std::size_t kMark = sizeof kDeleted - 1;
  if (size <= kMark || memcmp(path + size - kMark, kDeleted, kMark) != 0) return size;
  struct stat named;
  bool const isName = stat(path, &named) == 0 && named.st_ino == inode;
  return isName ? size : size - kMark;
}

bool pathOfProgram(NativePath& path) {
  constexpr char kLink[] = "/proc/self/exe";
  NativePath link;
  link.resize(512);
  ssize_t size = 0;
  for (;; link.resize(2 * link.size())) {
    size = readlink(kLink, link.data(), link.size());
    if (size < 0) return false;
    if (static_cast<std::size_t>(size) < link.size()) break;
  }
  link[static_cast<std::size_t>(size)] = '\0';
  struct stat file = {};
  if (link[0] != '/' || stat(kLink, &file) != 0) return false;
  assign(path, link.data(), sizeWithoutMark(link.data(), static_cast<std::size_t>(size), file.st_ino));
  return true;
}

// The path of the file mapped at an address, as the kernel knows it: absolute, whatever the name was by which the
// module was loaded and whatever the current directory is now.
bool pathOfMapping(std::uintptr_t address, NativePath& path) {
  std::unique_ptr<FILE, int (*)(FILE*)> const maps(fopen("/proc/self/maps", "re"), &fclose);
  if (maps == nullptr) return false;
  struct Line {
    char* text = nullptr;
    std::size_t capacity = 0;
    ~Line() { free(text); }
  } line;
  while (getline(&line.text, &line.capacity, maps.get()) > 0) {
    unsigned long start = 0, inode = 0;
    int name = 0;
    bool const isWanted = sscanf(line.text, "%lx-%*x %*s %*x %*x:%*x %lu %n", &start, &inode, &name) == 2 &&
                          start == address && name > 0 && line.text[name] == '/';
    if (!isWanted) continue;
    char* const file = line.text + name;
    std::size_t const size = strcspn(file, "\n");
    file[size] = '\0';
    assign(path, file, sizeWithoutMark(file, size, inode));
    return true;
  }
  return false;
}

// Whether an absolute path leads to the same file as its text does, where two separators at the front are those of a share,
// and ".." is resolved without following the link before it.
bool isPlain(char const* path) {
  return strstr(path, "//") == nullptr && strstr(path, "/./") == nullptr && strstr(path, "/../") == nullptr;
}

// The same file in the plain path of its folder; it keeps its name, even if that is a link. False if there is no such folder
// any more. `name` is not plain, and cut behind the folder.
bool pathInPlainFolder(Path& name, NativePath& path) {
  char* const file = strrchr(name.bytes, '/') + 1;
  file[-1] = '\0';
  std::unique_ptr<char, void (*)(void*)> const folder(realpath(name.bytes, nullptr), &free);
  if (folder == nullptr) return false;
  bool const isRoot = folder.get()[1] == '\0';
  path.resize(0);
  path.append(folder.get(), isRoot ? 0 : strlen(folder.get()));
  path.push('/');
  path.append(file, strlen(file) + 1);
  return true;
}

}  // namespace

HINSTANCE programModule() {
  std::uintptr_t address = 0;
  auto visit = [&](dl_phdr_info const& info) {
    address = loadAddress(info);
    return true;
  };
  visitModules(visit);
  return reinterpret_cast<HINSTANCE>(address);
}

HINSTANCE moduleHolding(void const* address) {
  auto const wanted = reinterpret_cast<std::uintptr_t>(address);
  std::uintptr_t found = 0;
  auto visit = [&](dl_phdr_info const& info) {
    for (int i = 0; i < info.dlpi_phnum && found == 0; ++i) {
      ElfW(Phdr) const& segment = info.dlpi_phdr[i];
      std::uintptr_t const start = info.dlpi_addr + segment.p_vaddr;
      if (segment.p_type == PT_LOAD && wanted - start < segment.p_memsz) found = loadAddress(info);
    }
    return found != 0;
  };
  visitModules(visit);
  return reinterpret_cast<HINSTANCE>(found);
}

bool pathOfModule(HINSTANCE module, NativePath& path) {
  if (module == programModule()) return pathOfProgram(path);
  Path name;
  auto visit = [&](dl_phdr_info const& info) {
    return loadAddress(info) == addressOf(module) && name.assign(info.dlpi_name);
  };
  if (module == nullptr || !visitModules(visit)) return false;
  bool const isAbsolute = name.bytes[0] == '/';
  if (isAbsolute && isPlain(name.bytes)) {
    assign(path, name.bytes, strlen(name.bytes));
    return true;
  }
  return (isAbsolute && pathInPlainFolder(name, path)) || pathOfMapping(addressOf(module), path);
}

bool pathOfModuleNamed(wchar const* name, NativePath& path) {
  constexpr std::size_t kLongestName = 255;
  std::size_t const size = std::char_traits<wchar>::length(name);
  std::uintptr_t address = 0;
  auto visit = [&](dl_phdr_info const& info) {
    char const* const slash = strrchr(info.dlpi_name, '/');
    char const* const file = slash == nullptr ? info.dlpi_name : slash + 1;
    std::size_t const fileSize = strlen(file);
    if (fileSize > kLongestName) return false;
    wchar units[kLongestName];
    if (nameFromNative(file, fileSize, units) != size) return false;
    for (std::size_t i = 0; i < size; ++i) {
      if (upperCased(units[i]) != upperCased(name[i])) return false;
    }
    address = loadAddress(info);
    return true;
  };
  return size > 0 && visitModules(visit) && pathOfModule(reinterpret_cast<HINSTANCE>(address), path);
}

PeResources* resourcesOfModule(HINSTANCE module) {
  KnownModule& known = knownModules[(addressOf(module) >> 12) % kKnownCount];
  unsigned long long added = 0, removed = 0;
  auto readCounts = [&](dl_phdr_info const& info) {
    added = info.dlpi_adds;
    removed = info.dlpi_subs;
    return true;
  };
  visitModules(readCounts);
  bool const isKnown = known.module == module && known.added == added && known.removed == removed;
  if (isKnown) return known.hasResources ? &known.resources : nullptr;

  ByteRange image;
  auto findImage = [&](dl_phdr_info const& info) {
    if (loadAddress(info) != addressOf(module)) return false;
    for (int i = 0; i < info.dlpi_phnum && image.size() == 0; ++i) {
      ElfW(Phdr) const& segment = info.dlpi_phdr[i];
      if (segment.p_type != PT_NOTE) continue;
      ByteRange const notes(reinterpret_cast<void const*>(info.dlpi_addr + segment.p_vaddr), segment.p_memsz);
      findImageInNotes(notes, segment.p_align, image);
    }
    return true;
  };
  visitModules(findImage);
  known = {module, added, removed, false, PeResources()};
  known.hasResources = image.size() != 0 && known.resources.open(image);
  return known.hasResources ? &known.resources : nullptr;
}

bool findEmbeddedImage(ByteRange const& file, ByteRange& image) {
  constexpr unsigned char kStart[] = {0x7F, 'E', 'L', 'F', ELFCLASS64, ELFDATA2LSB};
  unsigned char const* const header = file.at(0, sizeof(Elf64_Ehdr));
  if (header == nullptr || memcmp(header, kStart, sizeof kStart) != 0) return false;
  std::uint64_t const table = load64(header + offsetof(Elf64_Ehdr, e_phoff));
  std::uint64_t const entrySize = load16(header + offsetof(Elf64_Ehdr, e_phentsize));
  std::uint64_t const count = load16(header + offsetof(Elf64_Ehdr, e_phnum));
  if (entrySize < sizeof(Elf64_Phdr)) return false;
  for (std::uint64_t i = 0; i < count; ++i) {
    if (!file.has(table, (i + 1) * entrySize)) return false;
    unsigned char const* const segment = file.at(table + i * entrySize, sizeof(Elf64_Phdr));
    if (segment == nullptr) return false;
    if (load32(segment + offsetof(Elf64_Phdr, p_type)) != PT_NOTE) continue;
    std::uint64_t const offset = load64(segment + offsetof(Elf64_Phdr, p_offset));
    std::uint64_t const size = load64(segment + offsetof(Elf64_Phdr, p_filesz));
    std::uint64_t const alignment = load64(segment + offsetof(Elf64_Phdr, p_align));
    if (file.has(offset, size) && findImageInNotes(file.part(offset, size), alignment, image)) return true;
  }
  return false;
}

}  // namespace platform
}  // namespace KV_1_1
