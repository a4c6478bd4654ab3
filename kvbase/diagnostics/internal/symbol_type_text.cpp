// SPDX-License-Identifier: MIT
#include "kvbase/diagnostics/internal/symbol_type_text.h"

namespace KV_1_1 {
namespace diagnostics {

namespace {

constexpr char kUnknown[] = "-unknown-";

struct Texts {
  char const* whileLoading;
  char const* ofFrame;
};

// By value.
constexpr Texts kTexts[] = {
    {"-nosymbols-", "-nosymbols-"},
    {"COFF", "COFF"},
    {"CV", "CV"},
    {"PDB", "PDB"},
    {"-exported-", "-exported-"},
    {"-deferred-", "-deferred-"},
    {"SYM", "SYM"},
    {kUnknown, "DIA"},
    {"Virtual", "Virtual"},
    {"DIA", nullptr},
};
constexpr int kCount = sizeof kTexts / sizeof kTexts[0];

Texts textsOf(int symbolType) {
  return symbolType >= 0 && symbolType < kCount ? kTexts[symbolType] : Texts{kUnknown, nullptr};
}

}  // namespace

char const* symbolTypeWhileLoading(int symbolType) {
  return textsOf(symbolType).whileLoading;
}

char const* symbolTypeOfFrame(int symbolType) {
  return textsOf(symbolType).ofFrame;
}

}  // namespace diagnostics
}  // namespace KV_1_1
