// SPDX-License-Identifier: MIT
//
// The input is a Windows image or an ELF file that carries one. Each lookup in memory gives what it gives in the same
// bytes as a file, and each byte that is found can be read.
#include "fuzzers/fuzz_input.h"

#include <sys/mman.h>
#include <unistd.h>

#include <set>
#include <vector>

#include "kvbase/platform/linux/modules/elf_modules.h"
#include "kvbase/platform/linux/modules/pe_resources.h"
#include "kvbase/platform/linux/modules/string_block.h"
#include "kvbase/platform/linux/modules/version_choice.h"
#include "kvbase/platform/module_api.h"
#include "tests/support/scripted_locales.h"

using namespace KV_1_1;
using platform::ByteRange;
using platform::PeResources;
using platform::ResourceKey;

namespace {

std::vector<unsigned char> contentOf(ByteRange const& range) {
  std::vector<unsigned char> bytes(static_cast<std::size_t>(range.size()) + 1);
  fuzzing::require(range.copy(0, bytes.size() - 1, bytes.data()), "all bytes of a resource can be read");
  return bytes;
}

// All that a resource lookup tells about an image.
struct Answers {
  bool isImage = false;
  std::vector<PeResources::Version> versions;
  std::set<unsigned short> languages;
  std::vector<std::vector<unsigned char>> contents;
  std::vector<wstring> strings;

  bool operator==(Answers const& other) const {
    return isImage == other.isImage && versions == other.versions && languages == other.languages &&
           contents == other.contents && strings == other.strings;
  }
};

// Fixed languages: those of the user would make the runs differ.
platform::LocaleApi& locales() {
  static testing::ScriptedLocales* const fixed = new testing::ScriptedLocales;
  return *fixed;
}

void look(PeResources& resources, wchar const* type, wchar const* name, Answers& answers) {
  PeResources::Directory versions;
  if (!resources.findVersions(ResourceKey(type), ResourceKey(name), versions)) return;
  resources.addLanguages(versions, answers.languages);
  for (std::uint16_t const language : {0, 7, 12, 1031, 1033, 1036}) {
    PeResources::Version const version = platform::chooseVersion(resources, versions, language, locales());
    answers.versions.push_back(version);
    ByteRange bytes;
    if (version == 0 || !resources.bytesOf(version, bytes)) continue;
    answers.contents.push_back(contentOf(bytes));
    for (unsigned int i = 0; i < platform::kStringBlockEntries; ++i) {
      wstring text;
      if (platform::readStringBlockEntry(bytes, i, text)) answers.strings.push_back(text);
    }
  }
}

Answers answersOf(ByteRange const& file) {
  static wchar const* const types[] = {platform::resourceId(platform::kStringTableType),
                                       platform::resourceId(platform::kVersionType), KVW("metadata"), KVW("#10")};
  static wchar const* const names[] = {platform::resourceId(1), platform::resourceId(7), KVW("resource.h"), KVW("b")};
  Answers answers;
  PeResources resources;
  ByteRange image = file;
  answers.isImage = resources.open(image);
  if (!answers.isImage && platform::findEmbeddedImage(file, image)) answers.isImage = resources.open(image);
  for (wchar const* const type : types) {
    for (wchar const* const name : names) look(resources, type, name, answers);
  }
  // Records are handed out to callers, who may give back anything.
  ByteRange bytes;
  for (PeResources::Version const version : {0u, 64u, 513u, 0xFFFFFFF0u}) {
    if (resources.bytesOf(version, bytes)) answers.contents.push_back(contentOf(bytes));
  }
  return answers;
}

int emptyFile() {
  static int const file = memfd_create("image", MFD_CLOEXEC);
  fuzzing::require(file >= 0 && ftruncate(file, 0) == 0, "there is a file in memory");
  return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  // A block of exactly this size, so that a read beyond it is seen.
  std::vector<unsigned char> const memory(data, data + size);
  ByteRange const inMemory(memory.data(), size);
  Answers const answers = answersOf(inMemory);

  int const file = emptyFile();
  fuzzing::require(pwrite(file, data, size, 0) == static_cast<ssize_t>(size), "the file takes the bytes");
  platform::FilePages pages{platform::Descriptor(dup(file))};
  pages.refresh();
  fuzzing::require(answersOf(ByteRange(pages)) == answers, "a file gives the same as memory");
  return 0;
}
