// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/demangle.h"

#include <cxxabi.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

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

// What stands behind the parameters of a method, from the last part to the first.
void cutQualifiers(std::string& text) {
  for (std::string_view const part : {" &&", " &", " volatile", " const"}) {
    bool const hasPart = text.size() > part.size() && text.compare(text.size() - part.size(), part.size(), part) == 0;
    if (hasPart) text.resize(text.size() - part.size());
  }
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
    cutQualifiers(result);
    return result;
  }
  return name;
}

}  // namespace platform
}  // namespace KV_1_1
