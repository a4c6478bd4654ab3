// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/demangle.h"

#include <cxxabi.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace KV_1_1 {
namespace platform {

namespace {

using Text = std::unique_ptr<char, void (*)(void*)>;

// Null if the name is not mangled. Throws std::bad_alloc.
Text demangle(char const* name) {
  int status = 0;
  Text text(abi::__cxa_demangle(name, nullptr, nullptr, &status), &free);
  constexpr int kNoMemory = -1;
  if (status == kNoMemory) throw std::bad_alloc();
  return text;
}

bool isMangled(char const* name) {
  return name[0] == '_' && name[1] == 'Z';
}

void cut(std::string& text, char const* part) {
  std::size_t const at = text.find(part);
  if (at != std::string::npos) text.erase(at, strlen(part));
}

}  // namespace

std::string demangledName(char const* name) {
  if (!isMangled(name)) return name;
  Text const text = demangle(name);
  return text == nullptr ? name : text.get();
}

// A mangled name is a nested name and the types of the parameters behind it, and the former demangles by itself. So the
// shortest prefix that does is the name, unless template arguments, which start with an I, follow it.
std::string demangledNameOnly(char const* name) {
  if (!isMangled(name)) return name;
  std::size_t const size = strlen(name);
  std::string prefix(name, 2);
  for (std::size_t i = 2; i < size; ++i) {
    prefix += name[i];
    if (name[i + 1] == 'I') continue;
    Text const text = demangle(prefix.c_str());
    if (text == nullptr) continue;
    std::string result = text.get();
    cut(result, "[abi:cxx11]");
    constexpr char kConst[] = " const";
    constexpr std::size_t kConstSize = sizeof kConst - 1;
    bool const endsInConst =
        result.size() > kConstSize && result.compare(result.size() - kConstSize, kConstSize, kConst) == 0;
    if (endsInConst) result.resize(result.size() - kConstSize);
    return result;
  }
  return name;
}

}  // namespace platform
}  // namespace KV_1_1
