// SPDX-License-Identifier: MIT
//
// The default callbacks: one line of text each.
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>

#include "kvbase/diagnostics/internal/narrow_copy.h"
#include "kvbase/diagnostics/stack_walker.h"
#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/pointer_text.h"

namespace platform = KV_1_1::platform;
using KV_1_1::ulong32;
using KV_1_1::diagnostics::copyText;
using KV_1_1::diagnostics::readText;
using platform::PointerText;

namespace {

using Line = char[platform::kDebugTextCapacity];

// The system's own width, so that one format serves both.
unsigned int number(ulong32 value) {
  return static_cast<unsigned int>(value);
}

// One of the four parts of a file version, counted from the lowest.
unsigned int versionPart(unsigned long long version, int part) {
  return static_cast<unsigned int>(version >> (16 * part)) & 0xFFFF;
}

// A line that is put together part by part and cut like those of snprintf, in a fraction of its time: a walk makes one of
// each frame without a source line, whether anybody reads it or not.
class PlainLine {
 public:
  PlainLine& operator<<(char const* text) {
    if (text == nullptr) text = "(null)";
    std::size_t const size = std::min(std::strlen(text), sizeof line_ - 1 - length_);
    std::memcpy(line_ + length_, text, size);
    length_ += size;
    return *this;
  }
  PlainLine& operator<<(unsigned int value) {
    char digits[16];
    *std::to_chars(digits, digits + sizeof digits - 1, value).ptr = 0;
    return *this << digits;
  }
  char const* get() {
    line_[length_] = 0;
    return line_;
  }

 private:
  Line line_;
  std::size_t length_ = 0;
};

}  // namespace

void StackWalker::OnSymInit(char const* searchPath, ulong32 symOptions, char const* userName) {
  Line line;
  std::snprintf(line, sizeof line, "SymInit: Symbol-SearchPath: '%s', symOptions: %u, UserName: '%s'\n", searchPath,
                number(symOptions), userName);
  OnOutput(line);
  platform::SystemVersion version;
  if (!readText([&] { return platform::debug().systemVersion(version); })) return;
  std::snprintf(line, sizeof line, "OS-Version: %u.%u.%u (%s) 0x%x-0x%x\n", number(version.major),
                number(version.minor), number(version.build), version.servicePack.c_str(), unsigned{version.suiteMask},
                unsigned{version.productType});
  OnOutput(line);
}

void StackWalker::OnLoadModule(char const* image, char const* module, unsigned long long base, ulong32 size,
                               ulong32 result, char const* symType, char const* pdbName,
                               unsigned long long fileVersion) {
  Line line;
  PointerText const address(base);
  if (fileVersion == 0) {
    std::snprintf(line, sizeof line, "%s:%s (%s), size: %u (result: %u), SymType: '%s', PDB: '%s'\n", image, module,
                  address.get(), number(size), number(result), symType, pdbName);
  } else {
    std::snprintf(line, sizeof line,
                  "%s:%s (%s), size: %u (result: %u), SymType: '%s', PDB: '%s', fileVersion: %u.%u.%u.%u\n", image,
                  module, address.get(), number(size), number(result), symType, pdbName, versionPart(fileVersion, 3),
                  versionPart(fileVersion, 2), versionPart(fileVersion, 1), versionPart(fileVersion, 0));
  }
  OnOutput(line);
}

void StackWalker::OnCallstackEntry(CallstackEntryType type, CallstackEntry& entry) {
  if (type == EntryLast || entry.address == 0) return;
  if (entry.name[0] == 0) copyText(entry.name, "(function-name not available)");
  if (entry.undecoratedName[0] != 0) copyText(entry.name, entry.undecoratedName);
  if (entry.undecoratedFullName[0] != 0) copyText(entry.name, entry.undecoratedFullName);
  Line line;
  if (entry.lineFileName[0] != 0) {
    std::snprintf(line, sizeof line, "%s (%u): %s\n", entry.lineFileName, unsigned{entry.lineNumber}, entry.name);
  } else {
    copyText(entry.lineFileName, "(filename not available)");
    if (entry.moduleName[0] == 0) copyText(entry.moduleName, "(module-name not available)");
    std::snprintf(line, sizeof line, "%s (%s): %s: %s\n", PointerText(entry.address).get(), entry.moduleName,
                  entry.lineFileName, entry.name);
  }
  OnOutput(line);
}

void StackWalker::OnDbgHelpErr(char const* function, ulong32 lastError, unsigned long long address) {
  PlainLine line;
  line << "ERROR: " << function << ", GetLastError: " << number(lastError)
       << " (Address: " << PointerText(address).get() << ")\n";
  OnOutput(line.get());
}

void StackWalker::OnOutput(char const* text) {
  platform::debug().output(text);
}
