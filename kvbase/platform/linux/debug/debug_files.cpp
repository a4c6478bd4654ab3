// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/debug_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "kvbase/platform/linux/files/descriptor.h"

namespace KV_1_1 {
namespace platform {

namespace {

constexpr char kDebugRoot[] = "/usr/lib/debug";

bool hasBuildId(LibdwFunctions const& libdw, Elf* contents, std::vector<unsigned char> const& buildId) {
  void const* found = nullptr;
  ssize_t const size = libdw.buildIdOfElf(contents, &found);
  return size == static_cast<ssize_t>(buildId.size()) && memcmp(found, buildId.data(), buildId.size()) == 0;
}

constexpr std::array<std::uint32_t, 256> checksumTable() {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t value = byte;
    for (int bit = 0; bit < 8; ++bit) value = (value & 1) != 0 ? 0xEDB88320 ^ (value >> 1) : value >> 1;
    table[byte] = value;
  }
  return table;
}

// Of the whole file, as the link to a debug file has it. The descriptor is read from its start.
bool hasChecksum(int descriptor, std::uint32_t expected) {
  static constexpr std::array<std::uint32_t, 256> kTable = checksumTable();
  std::uint32_t value = 0xFFFFFFFF;
  unsigned char bytes[16384];
  for (off_t at = 0;;) {
    ssize_t const count = pread(descriptor, bytes, sizeof bytes, at);
    if (count < 0) return false;
    if (count == 0) return ~value == expected;
    for (ssize_t i = 0; i < count; ++i) value = kTable[(value ^ bytes[i]) & 0xFF] ^ (value >> 8);
    at += count;
  }
}

bool belongs(LibdwFunctions const& libdw, int descriptor, DebugFileRequest const& request) {
  if (request.buildId.empty()) return request.checksum != 0 && hasChecksum(descriptor, request.checksum);
  Elf* const contents = libdw.elfBegin(descriptor, ELF_C_READ_MMAP, nullptr);
  if (contents == nullptr) return false;
  bool const result = hasBuildId(libdw, contents, request.buildId);
  libdw.elfEnd(contents);
  return result;
}

// The usual name of a debug file below the root, by the build id of its module.
std::string nameOfBuildId(std::vector<unsigned char> const& buildId) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string name = "/.build-id/";
  for (std::size_t i = 0; i < buildId.size(); ++i) {
    name += kDigits[buildId[i] >> 4];
    name += kDigits[buildId[i] & 15];
    if (i == 0) name += '/';
  }
  return name + ".debug";
}

std::vector<std::string> candidates(DebugFileRequest const& request) {
  std::vector<std::string> paths;
  if (request.buildId.size() > 1) {
    std::string const name = nameOfBuildId(request.buildId);
    paths.push_back(kDebugRoot + name);
    for (std::string const& folder : request.folders) paths.push_back(folder + name);
  }
  if (request.link.empty()) return paths;
  if (request.link[0] == '/') {
    paths.push_back(request.link);
    return paths;
  }
  std::string const folder = request.file.substr(0, request.file.rfind('/') + 1);
  if (!folder.empty()) {
    paths.push_back(folder + request.link);
    paths.push_back(folder + ".debug/" + request.link);
    paths.push_back(kDebugRoot + folder + request.link);
  }
  for (std::string const& extra : request.folders) paths.push_back(extra + '/' + request.link);
  return paths;
}

}  // namespace

ModuleFile openModuleFile(LibdwFunctions const& libdw, LoadedModule const& module, bool isProgram) {
  ModuleFile file;
  // The link leads to the program even when its file has been removed or renamed.
  char const* const path = isProgram ? "/proc/self/exe" : module.path.c_str();
  if (path[0] != '/') return file;
  Descriptor descriptor(open(path, O_RDONLY | O_CLOEXEC));
  if (!descriptor) return file;
  Elf* const contents = libdw.elfBegin(descriptor.get(), ELF_C_READ_MMAP, nullptr);
  if (contents == nullptr) return file;
  if (!module.buildId.empty() && !hasBuildId(libdw, contents, module.buildId)) {
    libdw.elfEnd(contents);
    return file;
  }
  file.descriptor = descriptor.release();
  file.contents = contents;
  return file;
}

int openDebugFile(LibdwFunctions const& libdw, DebugFileRequest const& request, std::string& path) {
  for (std::string const& candidate : candidates(request)) {
    // A module whose link names the file itself would be taken as its own debug data.
    if (candidate == request.file) continue;
    Descriptor descriptor(open(candidate.c_str(), O_RDONLY | O_CLOEXEC));
    if (!descriptor || !belongs(libdw, descriptor.get(), request)) continue;
    path = candidate;
    return descriptor.release();
  }
  return -1;
}

}  // namespace platform
}  // namespace KV_1_1
