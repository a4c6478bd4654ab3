// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/modules/pe_resources.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>

#include "kvbase/platform/linux/modules/string_block.h"
#include "kvbase/platform/module_api.h"
#include "tests/support/pe_image.h"

namespace KV_1_1 {
namespace testing {
namespace {

using platform::ByteRange;
using platform::PeResources;
using platform::resourceId;
using platform::ResourceKey;

constexpr char kNone[] = "none";

// The bytes of a version, "none" if there is no such version.
std::string find(std::string const& image, wchar const* type, wchar const* name, std::uint16_t language) {
  PeResources resources;
  PeResources::Directory versions;
  if (!resources.open(ByteRange(image.data(), image.size())) ||
      !resources.findVersions(ResourceKey(type), ResourceKey(name), versions))
    return kNone;
  PeResources::Version const version = resources.findVersion(versions, language);
  ByteRange bytes;
  if (version == 0 || !resources.bytesOf(version, bytes)) return kNone;
  std::string content(static_cast<std::size_t>(bytes.size()), '\0');
  EXPECT_TRUE(bytes.copy(0, content.size(), &content[0]));
  return content;
}

bool isImage(std::string const& bytes) {
  return PeResources().open(ByteRange(bytes.data(), bytes.size()));
}

std::set<unsigned short> languages(std::string const& image, wchar const* type, wchar const* name) {
  PeResources resources;
  PeResources::Directory versions;
  std::set<unsigned short> found;
  EXPECT_TRUE(resources.open(ByteRange(image.data(), image.size())));
  if (resources.findVersions(ResourceKey(type), ResourceKey(name), versions)) resources.addLanguages(versions, found);
  return found;
}

// One resource of each kind of key. The record 0 is that of A (texts come first).
PeImage sampleImage() {
  PeImage image;
  image.add(KVW("METADATA"), KVW("A"), 1031, "german");
  image.add(KVW("METADATA"), KVW("A"), 1033, "english");
  image.add(KVW("METADATA"), KVW("RESOURCE.H"), 1031, "#define A 1\r\n");
  image.add(KVW("METADATA"), 17, 1031, "seventeen");
  image.add(6, 7, 1033, "strings");
  return image;
}

struct Width {
  char const* name;
  bool has64Bits;
};
constexpr Width kWidths[] = {{"32 bits", false}, {"64 bits", true}};

TEST(PeResources, FindsResourcesInImagesOfBothWidths) {
  for (Width const& width : kWidths) {
    SCOPED_TRACE(width.name);
    PeImage image = sampleImage();
    image.has64Bits = width.has64Bits;
    std::string const bytes = image.build();
    EXPECT_EQ(find(bytes, KVW("METADATA"), KVW("A"), 1031), "german");
    EXPECT_EQ(find(bytes, KVW("METADATA"), KVW("A"), 1033), "english");
    EXPECT_EQ(find(bytes, KVW("METADATA"), KVW("A"), 1036), kNone);
    EXPECT_EQ(find(bytes, KVW("METADATA"), resourceId(17), 1031), "seventeen");
    EXPECT_EQ(find(bytes, KVW("METADATA"), resourceId(18), 1031), kNone);
    EXPECT_EQ(find(bytes, resourceId(6), resourceId(7), 1033), "strings");
    EXPECT_EQ(find(bytes, KVW("OTHER"), KVW("A"), 1031), kNone);
    EXPECT_EQ(find(bytes, resourceId(10), KVW("A"), 1031), kNone);
  }
}

TEST(PeResources, NamesCompareWithoutRegardToCase) {
  PeImage image;
  image.add(KVW("METADATA"), KVW("RESOURCE.H"), 1031, "ascii");
  image.add(KVW("METADATA"), KVW("\u00C4\u03A9\u0416"), 1031, "other scripts");
  image.add(KVW("METADATA"), KVW("lower.case"), 1031, "stored in lower case");
  std::string const bytes = image.build();
  EXPECT_EQ(find(bytes, KVW("metadata"), KVW("resource.h"), 1031), "ascii");
  EXPECT_EQ(find(bytes, KVW("MetaData"), KVW("Resource.H"), 1031), "ascii");
  EXPECT_EQ(find(bytes, KVW("METADATA"), KVW("\u00E4\u03C9\u0436"), 1031), "other scripts");
  EXPECT_EQ(find(bytes, KVW("METADATA"), KVW("LOWER.CASE"), 1031), "stored in lower case");
  EXPECT_EQ(find(bytes, KVW("METADATA"), KVW("RESOURCE"), 1031), kNone) << "a beginning of the name";
  EXPECT_EQ(find(bytes, KVW("METADATA"), KVW("RESOURCE.HH"), 1031), kNone) << "more than the name";
  EXPECT_EQ(find(bytes, KVW("METADATA"), KVW(""), 1031), kNone);
}

TEST(PeResources, LongNamesCompareToTheLastUnit) {
  wstring const longName(1000, KVW('N'));
  PeImage image;
  image.add(KVW("T"), longName + KVW('A'), 0, "A");
  image.add(KVW("T"), longName + KVW('B'), 0, "B");
  image.add(KVW("T"), longName, 0, "shorter");
  std::string const bytes = image.build();
  EXPECT_EQ(find(bytes, KVW("T"), (longName + KVW('a')).c_str(), 0), "A");
  EXPECT_EQ(find(bytes, KVW("T"), (longName + KVW('b')).c_str(), 0), "B");
  EXPECT_EQ(find(bytes, KVW("T"), longName.c_str(), 0), "shorter");
  EXPECT_EQ(find(bytes, KVW("T"), (longName + KVW('C')).c_str(), 0), kNone);
}

TEST(PeResources, ANumberSignMakesTheTextANumber) {
  PeImage image;
  image.add(10, 12, 0, "twelve");
  image.add(10, 0, 0, "zero");
  image.add(KVW("T"), KVW("#12"), 0, "a text");
  std::string const bytes = image.build();
  EXPECT_EQ(find(bytes, KVW("#10"), KVW("#12"), 0), "twelve");
  EXPECT_EQ(find(bytes, KVW("#10"), KVW("#012"), 0), "twelve");
  EXPECT_EQ(find(bytes, KVW("#10"), KVW("#12x"), 0), "twelve") << "only the digits count";
  EXPECT_EQ(find(bytes, KVW("#10"), KVW("#x"), 0), "zero");
  EXPECT_EQ(find(bytes, KVW("#10"), KVW("#"), 0), "zero");
  EXPECT_EQ(find(bytes, KVW("#10"), KVW("#65548"), 0), kNone) << "not 12, though the low 16 bits are";
  EXPECT_EQ(find(bytes, KVW("#10"), KVW("#99999999999999999999"), 0), kNone);
  EXPECT_EQ(find(bytes, KVW("T"), KVW("#12"), 0), kNone) << "a text that begins so cannot be asked for";
}

TEST(PeResources, AUnsortedDirectoryHidesNothing) {
  PeImage image;
  image.isSorted = false;
  for (wchar const* const name : {KVW("M"), KVW("Z"), KVW("A"), KVW("Q"), KVW("B")}) {
    image.add(KVW("ZZZ"), name, 0, bytesOf(name));
  }
  image.add(KVW("AAA"), KVW("A"), 0, "first type");
  for (int const number : {9, 1, 5, 3, 7}) image.add(5, number, 0, std::to_string(number));
  for (int const language : {1033, 7, 1031, 0, 1036}) image.add(3, 1, language, std::to_string(language));
  std::string const bytes = image.build();
  for (wchar const* const name : {KVW("M"), KVW("Z"), KVW("A"), KVW("Q"), KVW("B")})
    EXPECT_EQ(find(bytes, KVW("ZZZ"), name, 0), bytesOf(name));
  EXPECT_EQ(find(bytes, KVW("AAA"), KVW("A"), 0), "first type");
  for (unsigned const number : {9, 1, 5, 3, 7})
    EXPECT_EQ(find(bytes, resourceId(5), resourceId(number), 0), std::to_string(number));
  for (std::uint16_t const language : {1033, 7, 1031, 0, 1036})
    EXPECT_EQ(find(bytes, resourceId(3), resourceId(1), language), std::to_string(language));
  EXPECT_EQ(find(bytes, resourceId(5), resourceId(4), 0), kNone);
}

TEST(PeResources, NumbersBeforeTextsAreFoundToo) {
  // The entry of the number 17 changes places with that of a text.
  PeImage image = sampleImage();
  std::string bytes = image.build();
  std::size_t const names = image.directoryAt(1) + 16;
  std::string const first = bytes.substr(names, 8);
  bytes.replace(names, 8, bytes.substr(names + 16, 8));
  bytes.replace(names + 16, 8, first);
  EXPECT_EQ(find(bytes, KVW("METADATA"), resourceId(17), 1031), "seventeen");
  EXPECT_EQ(find(bytes, KVW("METADATA"), KVW("A"), 1031), "german");
  EXPECT_EQ(find(bytes, KVW("METADATA"), KVW("RESOURCE.H"), 1031), "#define A 1\r\n");
}

TEST(PeResources, OneReaderAnswersManyLookups) {
  PeImage image;
  image.isSorted = false;
  for (int i = 0; i < 40; ++i) image.add(5, (i * 7) % 40, 0, std::to_string((i * 7) % 40));
  std::string const bytes = image.build();
  PeResources resources;
  ASSERT_TRUE(resources.open(ByteRange(bytes.data(), bytes.size())));
  PeResources::Directory versions;
  for (unsigned int round = 0; round < 2; ++round) {
    for (unsigned int i = 0; i < 40; ++i)
      EXPECT_TRUE(resources.findVersions(ResourceKey(resourceId(5)), ResourceKey(resourceId(i)), versions)) << i;
    EXPECT_FALSE(resources.findVersions(ResourceKey(resourceId(5)), ResourceKey(resourceId(40)), versions));
  }
}

TEST(PeResources, ListsLanguagesThatAreNumbers) {
  PeImage image = sampleImage();
  image.add(KVW("METADATA"), KVW("A"), 0, "neutral");
  image.add(KVW("METADATA"), KVW("A"), KVW("KLINGON"), "a text as language");
  image.add(KVW("METADATA"), KVW("B"), KVW("KLINGON"), "only that");
  std::string const bytes = image.build();
  EXPECT_EQ(languages(bytes, KVW("METADATA"), KVW("A")), (std::set<unsigned short>{0, 1031, 1033}));
  EXPECT_EQ(languages(bytes, KVW("METADATA"), KVW("B")), std::set<unsigned short>());
  EXPECT_EQ(languages(bytes, KVW("METADATA"), KVW("C")), std::set<unsigned short>());
}

TEST(PeResources, ALanguageThatIsATextIsTheFirstVersion) {
  PeImage image;
  image.add(KVW("METADATA"), KVW("B"), KVW("KLINGON"), "only that");
  std::string const bytes = image.build();
  PeResources resources;
  PeResources::Directory versions;
  ASSERT_TRUE(resources.open(ByteRange(bytes.data(), bytes.size())));
  ASSERT_TRUE(resources.findVersions(ResourceKey(KVW("METADATA")), ResourceKey(KVW("B")), versions));
  EXPECT_EQ(resources.findVersion(versions, 0), 0u);
  EXPECT_EQ(resources.firstVersion(versions), image.recordAt(0));
}

TEST(PeResources, AResourceOfNoBytesIsFound) {
  PeImage image = sampleImage();
  image.add(KVW("METADATA"), KVW("EMPTY"), 0, "");
  std::string bytes = image.build();
  EXPECT_EQ(find(bytes, KVW("METADATA"), KVW("EMPTY"), 0), "");
  // Record 2 is that of EMPTY, behind both versions of A. A resource of no bytes may lie anywhere.
  put32(bytes, image.recordAt(2), 0xFFFFFFFF);
  EXPECT_EQ(find(bytes, KVW("METADATA"), KVW("EMPTY"), 0), "");
}

TEST(PeResources, DataMayLieInAnotherSection) {
  PeImage image = sampleImage();
  std::string bytes = image.build();
  std::string const far = "elsewhere";
  put32(bytes, image.sectionTable() + 12, 0x9000);  // the first of the other sections
  put32(bytes, image.sectionTable() + 16, far.size());
  put32(bytes, image.sectionTable() + 20, bytes.size());
  put32(bytes, image.recordAt(0), 0x9000);
  put32(bytes, image.recordAt(0) + 4, far.size());
  EXPECT_EQ(find(bytes + far, KVW("METADATA"), KVW("A"), 1031), far);
  put32(bytes, image.recordAt(0) + 4, far.size() + 1);
  EXPECT_EQ(find(bytes + far + "more", KVW("METADATA"), KVW("A"), 1031), kNone) << "it ends behind its section";
}

TEST(PeResources, HeadersThatAreNoneOfAnImage) {
  struct Row {
    char const* name;
    std::function<void(std::string&, PeImage const&)> change;
  };
  Row const rows[] = {
      {"no bytes", [](std::string& bytes, PeImage const&) { bytes.clear(); }},
      {"cut in the first header", [](std::string& bytes, PeImage const&) { bytes.resize(63); }},
      {"another first signature", [](std::string& bytes, PeImage const&) { bytes[0] = 'Z'; }},
      {"second header beyond the file", [](std::string& bytes, PeImage const&) { put32(bytes, 60, 0xFFFFFFFF); }},
      {"second header at the end of the file",
       [](std::string& bytes, PeImage const&) { put32(bytes, 60, bytes.size()); }},
      {"another second signature", [](std::string& bytes, PeImage const&) { bytes[PeImage::kStart] = 'N'; }},
      {"neither 32 nor 64 bits", [](std::string& bytes, PeImage const&) { put16(bytes, PeImage::kStart + 24, 0x107); }},
      {"cut before the data tables",
       [](std::string& bytes, PeImage const& image) { bytes.resize(image.tables() + 3); }},
      {"an ELF file",
       [](std::string& bytes, PeImage const&) {
         bytes.replace(0, 4,
                       "\x7F"
                       "ELF");
       }},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    PeImage image = sampleImage();
    std::string bytes = image.build();
    ASSERT_TRUE(isImage(bytes));
    row.change(bytes, image);
    EXPECT_EQ(isImage(bytes), false);
    EXPECT_EQ(find(bytes, KVW("METADATA"), KVW("A"), 1031), kNone);
  }
}

// Each change makes A in 1031 unreachable, and the image stays one.
TEST(PeResources, WhateverIsWrongEndsInNotFound) {
  struct Row {
    char const* name;
    std::function<void(std::string&, PeImage const&)> change;
  };
  constexpr std::size_t kHigh = 0x80000000;
  Row const rows[] = {
      {"only two data tables", [](std::string& b, PeImage const& i) { put32(b, i.tables(), 2); }},
      {"no resource table", [](std::string& b, PeImage const& i) { put32(b, i.tables() + 20, 0); }},
      {"resource table in no section", [](std::string& b, PeImage const& i) { put32(b, i.tables() + 20, 0x10); }},
      {"resource table behind its section",
       [](std::string& b, PeImage const& i) { put32(b, i.tables() + 20, 0xFFFFFFF0); }},
      {"no sections", [](std::string& b, PeImage const&) { put16(b, PeImage::kStart + 6, 0); }},
      {"section table beyond the file", [](std::string& b, PeImage const&) { put16(b, PeImage::kStart + 20, 0xFFFF); }},
      {"section beyond the file",
       [](std::string& b, PeImage const& i) { put32(b, i.sectionHeader() + 20, 0xFFFFFFFF); }},
      {"section of no bytes", [](std::string& b, PeImage const& i) { put32(b, i.sectionHeader() + 16, 0); }},
      {"file ends in the root", [](std::string& b, PeImage const& i) { b.resize(i.root() + 15); }},
      {"file ends in the entries", [](std::string& b, PeImage const& i) { b.resize(i.root() + 17); }},
      {"file ends in the names", [](std::string& b, PeImage const& i) { b.resize(i.directoryAt(1) + 20); }},
      {"file ends in a record", [](std::string& b, PeImage const& i) { b.resize(i.recordAt(0) + 15); }},
      {"file ends in the data",
       [](std::string& b, PeImage const& i) { b.resize(i.root() + get32(b, i.recordAt(0)) - i.sectionAddress + 5); }},
      {"no entries", [](std::string& b, PeImage const& i) { put32(b, i.root() + 12, 0); }},
      {"type leads to a record", [](std::string& b, PeImage const& i) { put32(b, i.root() + 20, i.recordAt(0)); }},
      {"type leads to the root", [](std::string& b, PeImage const& i) { put32(b, i.root() + 20, kHigh); }},
      {"type leads beyond the file", [](std::string& b, PeImage const& i) { put32(b, i.root() + 20, 0xFFFFFFFF); }},
      {"name leads to its own directory",
       [](std::string& b, PeImage const& i) {
         put32(b, i.directoryAt(1) + 20, kHigh | (i.directoryAt(1) - i.root()));
       }},
      {"name leads to the root", [](std::string& b, PeImage const& i) { put32(b, i.directoryAt(1) + 20, kHigh); }},
      {"name leads to a record",
       [](std::string& b, PeImage const& i) { put32(b, i.directoryAt(1) + 20, i.recordAt(0) - i.root()); }},
      {"name leads beyond the file",
       [](std::string& b, PeImage const& i) { put32(b, i.directoryAt(1) + 20, kHigh | (b.size() - i.root())); }},
      {"language leads to a directory",
       [](std::string& b, PeImage const& i) { put32(b, i.directoryAt(3) + 20, kHigh); }},
      {"language leads to its own directory",
       [](std::string& b, PeImage const& i) {
         put32(b, i.directoryAt(3) + 20, kHigh | (i.directoryAt(3) - i.root()));
       }},
      {"language leads beyond the file",
       [](std::string& b, PeImage const& i) { put32(b, i.directoryAt(3) + 20, 0x7FFFFFFF); }},
      {"text of the type beyond the file",
       [](std::string& b, PeImage const& i) { put32(b, i.root() + 16, 0xFFFFFFFF); }},
      {"text of the name beyond the file",
       [](std::string& b, PeImage const& i) { put32(b, i.directoryAt(1) + 16, kHigh | (b.size() - i.root() - 1)); }},
      {"text of the name longer than the file",
       [](std::string& b, PeImage const& i) {
         put16(b, i.root() + (get32(b, i.directoryAt(1) + 16) & ~kHigh), 0xFFFF);
       }},
      {"data before all sections", [](std::string& b, PeImage const& i) { put32(b, i.recordAt(0), 0); }},
      {"data behind all sections", [](std::string& b, PeImage const& i) { put32(b, i.recordAt(0), 0xFFFFFFFF); }},
      {"data as long as can be", [](std::string& b, PeImage const& i) { put32(b, i.recordAt(0) + 4, 0xFFFFFFFF); }},
      {"data one byte longer than the section",
       [](std::string& b, PeImage const& i) {
         std::size_t const inSection = get32(b, i.recordAt(0)) - i.sectionAddress;
         put32(b, i.recordAt(0) + 4, b.size() - i.root() - inSection + 1);
       }},
  };
  for (Width const& width : kWidths) {
    for (Row const& row : rows) {
      SCOPED_TRACE(std::string(width.name) + ": " + row.name);
      PeImage image = sampleImage();
      image.has64Bits = width.has64Bits;
      std::string bytes = image.build();
      ASSERT_EQ(find(bytes, KVW("METADATA"), KVW("A"), 1031), "german");
      row.change(bytes, image);
      EXPECT_EQ(isImage(bytes), true);
      EXPECT_EQ(find(bytes, KVW("METADATA"), KVW("A"), 1031), kNone);
    }
  }
}

TEST(PeResources, DirectoriesThatOverlapAreReadAsTheyStand) {
  // The names of type 6 are those of METADATA.
  PeImage image = sampleImage();
  std::string bytes = image.build();
  put32(bytes, image.root() + 28, get32(bytes, image.root() + 20));
  EXPECT_EQ(find(bytes, resourceId(6), KVW("A"), 1033), "english");
  EXPECT_EQ(find(bytes, resourceId(6), resourceId(7), 1033), kNone);
}

TEST(PeResources, ACountOfEntriesBeyondTheSectionIsCut) {
  PeImage image = sampleImage();
  std::string bytes = image.build();
  put32(bytes, image.root() + 12, 0xFFFFFFFF);
  EXPECT_EQ(find(bytes, KVW("METADATA"), KVW("A"), 1031), "german") << "found one by one";
  EXPECT_EQ(find(bytes, KVW("MISSING"), KVW("A"), 1031), kNone);
}

TEST(PeResources, EveryLengthOfTheFileIsSafe) {
  std::string const bytes = sampleImage().build();
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    // Memory of exactly this size, so that the sanitizer sees a read behind it.
    std::string const cut(bytes.data(), size);
    std::string const found = find(cut, KVW("METADATA"), KVW("A"), 1031);
    EXPECT_TRUE(found == kNone || found == "german") << size;
  }
}

TEST(PeResources, EveryValueOfEachByteIsSafe) {
  std::string const original = sampleImage().build();
  for (std::size_t at = 0; at < original.size(); ++at) {
    std::string bytes = original;
    for (unsigned const value : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
      bytes[at] = static_cast<char>(value);
      find(bytes, KVW("METADATA"), KVW("RESOURCE.H"), 1031);
      EXPECT_LE(find(bytes, resourceId(6), resourceId(7), 1033).size(), bytes.size());
    }
  }
}

TEST(PeResources, AForgedVersionStaysInTheImage) {
  std::string const bytes = sampleImage().build();
  PeResources resources;
  ASSERT_TRUE(resources.open(ByteRange(bytes.data(), bytes.size())));
  ByteRange range;
  EXPECT_FALSE(resources.bytesOf(bytes.size(), range));
  EXPECT_FALSE(resources.bytesOf(bytes.size() - 15, range));
  EXPECT_FALSE(resources.bytesOf(~PeResources::Version(0), range));
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    if (!resources.bytesOf(at, range)) continue;
    EXPECT_TRUE(range.memory() >= reinterpret_cast<unsigned char const*>(bytes.data()) &&
                range.memory() + range.size() <= reinterpret_cast<unsigned char const*>(bytes.data()) + bytes.size())
        << at;
  }
}

std::string entry(std::string const& block, unsigned int index) {
  wstring text = KVW("unchanged");
  bool const found = platform::readStringBlockEntry(ByteRange(block.data(), block.size()), index, text);
  EXPECT_EQ(found, text != KVW("unchanged"));
  return std::string(text.begin(), text.end());
}

TEST(StringBlock, GivesTheTextAtAnIndex) {
  std::string const block = stringBlock({{0, KVW("first")}, {4, KVW("fifth")}, {15, KVW("last")}});
  EXPECT_EQ(entry(block, 0), "first");
  EXPECT_EQ(entry(block, 4), "fifth");
  EXPECT_EQ(entry(block, 15), "last");
  EXPECT_EQ(entry(block, 1), "unchanged") << "an empty text is none";
}

TEST(StringBlock, ABlockThatIsCutEndsInNotFound) {
  std::string const block = stringBlock({{0, KVW("first")}, {15, KVW("last")}});
  for (std::size_t size = 0; size < block.size(); ++size)
    EXPECT_EQ(entry(std::string(block.data(), size), 15), "unchanged") << size;
  std::string lying = block;
  put16(lying, 0, 0xFFFF);
  EXPECT_EQ(entry(lying, 0), "unchanged") << "the text is longer than the block";
  EXPECT_EQ(entry(lying, 15), "unchanged") << "a text before it is longer than the block";
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
