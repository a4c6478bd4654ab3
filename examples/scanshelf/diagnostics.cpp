// SPDX-License-Identifier: MIT
#include <filesystem>
#include <fstream>

#include "scanshelf.h"

// Like assert of the standard library, with a comment and the report of KVBase, after which the user may go on.
#define SCANSHELF_ASSERT(condition, comment) \
  ((condition) ? static_cast<void>(0) : __assert_fail_x(#condition, comment, __FILE__, __LINE__, __func__))

namespace scanshelf {

namespace {

constexpr char kScanSignature[] = "SCAN";

// Prints the frames, and nothing of how they are found.
class StackPrinter : public StackWalker {
 public:
  explicit StackPrinter(std::ostream& out) : out_(out) {}

 protected:
  void OnSymInit(char const*, ulong32, char const*) override {}
  void OnLoadModule(char const*, char const*, unsigned long long, ulong32, ulong32, char const*, char const*,
                    unsigned long long) override {}
  void OnDbgHelpErr(char const*, ulong32, unsigned long long) override {}
  void OnOutput(char const* text) override { out_ << text; }

 private:
  std::ostream& out_;
};

// The first bytes of the file; fewer if it is short or cannot be read.
std::string beginningOf(File const& file) {
  std::ifstream stream(std::filesystem::path(file.getFullNameUnix().stringPath()), std::ios::binary);
  std::string bytes(std::size(kScanSignature) - 1, '\0');
  stream.read(&bytes[0], static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(stream.gcount()));
  return bytes;
}

}  // namespace

void printStack(std::ostream& out) {
  StackPrinter walker(out);
  bool const walked = walker.ShowCallstack(GetCurrentThread(), nullptr, nullptr, nullptr) != 0;
  if (!walked) throw Error(textOf(IDS_NO_STACK));
}

void checkHeaders(Survey const& found) {
  for (auto const& [file, bytes] : found.files) {
    if (!file->getName().endsWith(KVW(".dat"), /*ignoreCase=*/true)) continue;
    std::string const signature = beginningOf(*file);
    if (signature != kScanSignature) throw InvalidHeader{file->getFullName(), signature};
  }
}

void reportHeader(InvalidHeader const& header) {
  std::string const& signature = header.signature;
  SCANSHELF_ASSERT(signature == kScanSignature, header.file.stringAnsi());
}

}  // namespace scanshelf
