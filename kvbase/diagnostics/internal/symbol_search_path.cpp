// SPDX-License-Identifier: MIT
#include "kvbase/diagnostics/internal/symbol_search_path.h"

#include <cstring>
#include <initializer_list>
#include <string>

#include "kvbase/platform/debug_api.h"

namespace KV_1_1 {
namespace diagnostics {

namespace {

constexpr std::size_t kCapacity = 4096;
constexpr char kPublicServer[] = "https://msdl.microsoft.com/download/symbols";

// Appends to a buffer of kCapacity bytes.
class PathText {
 public:
  explicit PathText(char* buffer) : buffer_(buffer) { buffer_[0] = 0; }

  // An element that consists of the parts.
  void add(std::initializer_list<char const*> parts) {
    for (char const* const part : parts) append(part, std::strlen(part));
    append(";", 1);
  }

 private:
  void append(char const* text, std::size_t length) {
    length = std::min(length, kCapacity - 1 - length_);
    std::memcpy(buffer_ + length_, text, length);
    length_ += length;
    buffer_[length_] = 0;
  }

  char* buffer_;
  std::size_t length_ = 0;
};

bool readVariable(char const* name, std::string& value) {
  return readText([&] { return platform::debug().environmentVariable(name, value); });
}

void addProgramFolder(PathText& path) {
  std::string program;
  if (!readText([&] { return platform::debug().programPath(program); })) return;
  std::size_t const separator = program.find_last_of("\\/:");
  if (separator == std::string::npos || separator == 0) return;
  program.resize(separator);
  path.add({program.c_str()});
}

}  // namespace

HeapText composeSymbolSearchPath(char const* symbolPath) {
  HeapText buffer = allocateText(kCapacity);
  if (buffer == nullptr) return buffer;
  PathText path(buffer.get());
  std::string value;
  if (symbolPath != nullptr) path.add({symbolPath});
  path.add({"."});
  if (readText([&] { return platform::debug().currentDirectory(value); })) path.add({value.c_str()});
  addProgramFolder(path);
  if (readVariable("_NT_SYMBOL_PATH", value)) path.add({value.c_str()});
  if (readVariable("_NT_ALTERNATE_SYMBOL_PATH", value)) path.add({value.c_str()});
  if (readVariable("SYSTEMROOT", value)) {
    path.add({value.c_str()});
    path.add({value.c_str(), "\\system32"});
  }
  bool const hasDrive = readVariable("SYSTEMDRIVE", value);
  path.add({"SRV*", hasDrive ? value.c_str() : "c:", "\\websymbols*", kPublicServer});
  return buffer;
}

}  // namespace diagnostics
}  // namespace KV_1_1
