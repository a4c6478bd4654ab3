// SPDX-License-Identifier: MIT
//
// Model of a module's table of symbols: the definitions in the order in which they were accepted, searched from the
// front. The bytes of a header are its units (code page 28591).
#pragma once

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/reference/string_parse_model.h"
#include "tests/reference/string_search.h"
#include "tests/reference/text_kernels.h"

namespace KV_1_1 {
namespace reference {

class SymbolTableModel {
 public:
  using Definition = std::pair<wstring, unsigned int>;

  std::vector<Definition> definitions;

  unsigned int lookup(wstring const& name) const {
    for (Definition const& definition : definitions)
      if (lowerCase(definition.first) == lowerCase(name)) return definition.second;
    return 0xFFFFFFFF;
  }

  // Names with that number by their lower-case forms.
  std::vector<wstring> namesOf(unsigned int value) const {
    std::vector<wstring> names;
    for (Definition const& definition : definitions)
      if (definition.second == value) names.push_back(definition.first);
    std::sort(names.begin(), names.end(),
              [](wstring const& a, wstring const& b) { return lowerCase(a) < lowerCase(b); });
    return names;
  }

  // What the two containers of a table hold.
  std::vector<Definition> byName() const {
    std::vector<Definition> sorted = definitions;
    std::sort(sorted.begin(), sorted.end(),
              [](Definition const& a, Definition const& b) { return lowerCase(a.first) < lowerCase(b.first); });
    return sorted;
  }
  std::vector<Definition> byValue() const {
    std::vector<Definition> sorted = definitions;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](Definition const& a, Definition const& b) { return a.second < b.second; });
    return sorted;
  }

  bool parse(std::string const& bytes) {
    bool faultless = true;
    for (std::size_t at = 0; at < bytes.size();) {
      std::size_t const end = std::min(bytes.find('\n', at), bytes.size());
      std::string const line = bytes.substr(at, end - at);
      if (line.size() >= 255) return false;
      if (!parseLine(upToNul(line))) faultless = false;
      at = end + 1;
    }
    return faultless;
  }

  bool parseLine(wstring const& line) {
    static wstring const word = KVW("#define");
    int const define = find(line, word, 0);
    if (define < 0) return true;
    int const behind = define + 7;
    int const nameStart = findFirst(line, behind, isGraphic);
    if (nameStart < 0 || nameStart == behind) return false;
    int const nameEnd = findFirst(line, nameStart, isBlank);
    wstring const name = cut(line, nameStart, nameEnd);
    if (name.substr(0, 4) == wstring(KVW("_APS"))) return true;

    int const start = findFirst(line, nameEnd + 1, isGraphic);
    int const end = findFirst(line, start, isBlank);
    wstring const token = cut(line, start, end);
    Text rest = token;
    unsigned int value = take(rest, static_cast<unsigned int*>(nullptr));
    if (*rest == token) {
      value = lookup(token);
      if (value == 0xFFFFFFFF) return false;
    }
    for (Definition const& definition : definitions)
      if (lowerCase(definition.first) == lowerCase(name)) return false;
    definitions.emplace_back(name, value);
    return true;
  }

 private:
  static bool isBlank(wchar unit) { return !isGraphic(unit); }
  static wstring cut(wstring const& line, int start, int end) {
    std::size_t const from = start < 0 ? 0 : static_cast<std::size_t>(start);
    return end < 0 ? line.substr(from) : line.substr(from, static_cast<std::size_t>(end) - from);
  }
  static wstring upToNul(std::string const& bytes) {
    wstring units;
    for (std::size_t i = 0; i < bytes.size() && bytes[i] != 0; ++i)
      units += static_cast<wchar>(static_cast<unsigned char>(bytes[i]));
    return units;
  }
};

}  // namespace reference
}  // namespace KV_1_1
