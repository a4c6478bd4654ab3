// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/modules/version_block.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "kvbase/platform/module_api.h"
#include "tests/support/pe_image.h"

namespace KV_1_1 {
namespace testing {
namespace {

using platform::ByteRange;
using platform::VersionBlock;

enum Type { kBinary, kText };

std::string padded(std::string bytes) {
  bytes.resize((bytes.size() + 3) / 4 * 4);
  return bytes;
}

// A block with a value of any bytes, which is said to have `valueLength` bytes or units.
std::string block(wstring const& key, std::string const& value, std::size_t valueLength, Type type,
                  std::vector<std::string> const& children = {}) {
  std::string bytes(6, '\0');
  bytes = padded(bytes + bytesOf(key + wchar(0))) + value;
  for (std::string const& child : children) bytes = padded(bytes) + child;
  put16(bytes, 0, bytes.size());
  put16(bytes, 2, valueLength);
  put16(bytes, 4, type);
  return bytes;
}
std::string text(wstring const& key, wstring const& value) {
  return block(key, bytesOf(value + wchar(0)), value.size() + 1, kText);
}
std::string group(wstring const& key, std::vector<std::string> const& children) {
  return block(key, "", 0, kText, children);
}
std::string root(std::vector<std::string> const& children) {
  std::string fixed(52, '\0');
  put32(fixed, 0, 0xFEEF04BD);
  put32(fixed, 8, 0x000A0000);
  put32(fixed, 12, 0x00002521);
  return block(KVW("VS_VERSION_INFO"), fixed, 52, kBinary, children);
}
std::string rootOfStrings(std::vector<std::string> const& strings) {
  return root({group(KVW("StringFileInfo"), {group(KVW("040904b0"), strings)})});
}
std::string sampleBlock() {
  return root({group(KVW("StringFileInfo"), {group(KVW("040704b0"), {text(KVW("CompanyName"), KVW("German"))}),
                                             group(KVW("040904b0"), {text(KVW("CompanyName"), KVW("VOLQ Fabrication")),
                                                                     text(KVW("ProductName"), KVW("Tool"))})}),
               group(KVW("VarFileInfo"), {block(KVW("Translation"), std::string("\x09\x04\xb0\x04", 4), 4, kBinary)})});
}

struct Answer {
  bool found;
  std::string bytes;  // of a text without terminator
  ulong32 length;
};
bool operator==(Answer const& a, Answer const& b) {
  return a.found == b.found && a.bytes == b.bytes && a.length == b.length;
}
std::ostream& operator<<(std::ostream& out, Answer const& answer) {
  return out << (answer.found ? "found " : "none ") << ::testing::PrintToString(answer.bytes) << ' ' << answer.length;
}
Answer const kNothing = {false, "", 77};
Answer found(wstring const& value) {
  return {true, bytesOf(value), static_cast<ulong32>(value.size() + 1)};
}

Answer query(std::string const& bytes, wchar const* path, bool isText = true) {
  // Memory of exactly this size, so that the sanitizer sees a read behind it.
  std::vector<char> const memory(bytes.begin(), bytes.end());
  void const* value = nullptr;
  ulong32 length = 77;
  if (!VersionBlock(memory.data(), memory.size()).query(path, value, length)) {
    EXPECT_EQ(value, nullptr) << "unchanged";
    return {false, "", length};
  }
  auto const* const start = static_cast<char const*>(value);
  EXPECT_TRUE(start >= memory.data() && start <= memory.data() + memory.size());
  std::size_t const size = !isText ? length : length == 0 ? 0 : 2 * (length - 1);
  return {true, std::string(start, size), length};
}
constexpr wchar kCompany[] = KVW("\\StringFileInfo\\040904b0\\CompanyName");
constexpr wchar kTranslation[] = KVW("\\VarFileInfo\\Translation");

TEST(VersionBlock, GivesTheFixedPart) {
  Answer const answer = query(sampleBlock(), KVW("\\"), /*isText=*/false);
  ASSERT_EQ(answer.length, 52u);
  EXPECT_EQ(get32(answer.bytes, 0), 0xFEEF04BDu);
  EXPECT_EQ(get32(answer.bytes, 8), 0x000A0000u);
  EXPECT_EQ(get32(answer.bytes, 12), 0x00002521u);
  EXPECT_EQ(query(sampleBlock(), KVW(""), /*isText=*/false), answer);
}

TEST(VersionBlock, GivesTheTranslations) {
  EXPECT_EQ(query(sampleBlock(), kTranslation, /*isText=*/false),
            (Answer{true, std::string("\x09\x04\xb0\x04", 4), 4}));
}

TEST(VersionBlock, TextsCountUnitsWithTheTerminator) {
  EXPECT_EQ(query(sampleBlock(), kCompany), found(KVW("VOLQ Fabrication")));
  EXPECT_EQ(query(sampleBlock(), KVW("\\StringFileInfo\\040904b0\\ProductName")), found(KVW("Tool")));
  EXPECT_EQ(query(sampleBlock(), KVW("\\StringFileInfo\\040704b0\\CompanyName")), found(KVW("German")));
}

TEST(VersionBlock, KeysCompareWithoutRegardToCase) {
  EXPECT_EQ(query(sampleBlock(), KVW("\\stringfileinfo\\040904B0\\COMPANYNAME")), found(KVW("VOLQ Fabrication")));
  EXPECT_EQ(query(sampleBlock(), KVW("\\varfileinfo\\translation"), false).length, 4u);
}

TEST(VersionBlock, EmptyKeysOfThePathAreSkipped) {
  EXPECT_EQ(query(sampleBlock(), KVW("StringFileInfo\\\\040904b0\\CompanyName\\")), found(KVW("VOLQ Fabrication")));
}

TEST(VersionBlock, WhatIsMissingIsNotFound) {
  EXPECT_EQ(query(sampleBlock(), KVW("\\StringFileInfo\\040904b0\\LegalCopyright")), kNothing);
  EXPECT_EQ(query(sampleBlock(), KVW("\\StringFileInfo\\040c04b0\\CompanyName")), kNothing);
  EXPECT_EQ(query(sampleBlock(), KVW("\\StringFileInfo\\040904b0\\Company")), kNothing);
  EXPECT_EQ(query(sampleBlock(), KVW("\\StringFileInfo\\040904b0\\CompanyName\\More")), kNothing);
  EXPECT_EQ(query(root({}), kTranslation), kNothing);
}

TEST(VersionBlock, ATranslationTableWithoutEntriesIsFoundWithLengthZero) {
  std::string const bytes = root({group(KVW("VarFileInfo"), {block(KVW("Translation"), "", 0, kBinary)})});
  EXPECT_EQ(query(bytes, kTranslation, false), (Answer{true, "", 0}));
}

TEST(VersionBlock, ATextWithoutAnyUnitHasLengthZero) {
  EXPECT_EQ(query(rootOfStrings({block(KVW("CompanyName"), "", 0, kText)}), kCompany), (Answer{true, "", 0}));
}

TEST(VersionBlock, ATextThatIsOneTerminatorHasLengthOne) {
  EXPECT_EQ(query(rootOfStrings({text(KVW("CompanyName"), KVW(""))}), kCompany), found(KVW("")));
}

TEST(VersionBlock, ATextWithALengthInBytesEndsAtItsTerminator) {
  wstring const value = KVW("VOLQ");
  std::string const bytes = block(KVW("CompanyName"), bytesOf(value + wchar(0)), 10, kText);
  EXPECT_EQ(query(rootOfStrings({bytes}), kCompany), found(value));
  EXPECT_EQ(query(rootOfStrings({bytes, text(KVW("ProductName"), KVW("Tool"))}), kCompany), found(value));
}

TEST(VersionBlock, ATextThatIsMarkedAsBinaryIsATextBelowStringFileInfo) {
  wstring const value = KVW("VOLQ");
  std::string const bytes = block(KVW("CompanyName"), bytesOf(value + wchar(0)), 10, kBinary);
  EXPECT_EQ(query(rootOfStrings({bytes}), kCompany), (Answer{true, bytesOf(value), 5}));
}

TEST(VersionBlock, ATextWithAnInnerTerminatorKeepsItsLength) {
  wstring const value(KVW("a\0b"), 3);
  EXPECT_EQ(query(rootOfStrings({text(KVW("CompanyName"), value)}), kCompany), found(value));
}

TEST(VersionBlock, ATextWithoutTerminatorIsNotFound) {
  std::string const bytes = block(KVW("CompanyName"), bytesOf(KVW("VOLQ")), 4, kText);
  EXPECT_EQ(query(rootOfStrings({bytes}), kCompany), kNothing);
  EXPECT_EQ(query(rootOfStrings({bytes, text(KVW("ProductName"), KVW("Tool"))}), kCompany), kNothing)
      << "not even where another block follows";
}

TEST(VersionBlock, AFixedPartThatIsNotCompleteIsNotFound) {
  std::string const value(51, 'x');
  EXPECT_EQ(query(block(KVW("VS_VERSION_INFO"), value, 51, kBinary), KVW("\\")), kNothing);
  EXPECT_EQ(query(block(KVW("VS_VERSION_INFO"), value, 52, kBinary), KVW("\\")), kNothing);
  EXPECT_EQ(query(block(KVW("VS_VERSION_INFO"), "", 0, kBinary), KVW("\\")), kNothing);
}

TEST(VersionBlock, ATextIsNoFixedPart) {
  EXPECT_EQ(query(block(KVW("VS_VERSION_INFO"), std::string(104, '\0'), 52, kText), KVW("\\")), kNothing);
}

TEST(VersionBlock, AKeyWithoutTerminatorIsNone) {
  std::string bytes = rootOfStrings({block(KVW("CompanyName"), "", 0, kText)});
  ASSERT_EQ(query(bytes, kCompany), (Answer{true, "", 0}));
  std::size_t const company = 40 + 52 + 36 + 24;
  put16(bytes, company, 6 + 2 * 11);
  EXPECT_EQ(query(bytes, kCompany), kNothing);
}

TEST(VersionBlock, LengthsThatLieEndInNotFound) {
  struct Row {
    char const* name;
    std::size_t at, value;
  };
  std::string const good = rootOfStrings({text(KVW("CompanyName"), KVW("VOLQ"))});
  std::size_t const strings = 40 + 52;            // the block StringFileInfo
  std::size_t const company = strings + 36 + 24;  // the block CompanyName
  ASSERT_EQ(query(good, kCompany), found(KVW("VOLQ")));
  Row const rows[] = {
      {"outermost block without a length", 0, 0},
      {"outermost block smaller than its header", 0, 5},
      {"outermost block without an end of its key", 0, 20},
      {"value of the outermost block beyond it", 2, 0xFFFF},
      {"block of length 0", strings, 0},
      {"block smaller than its header", strings, 5},
      {"block that ends in its key", strings, 20},
      {"value before the children beyond the block", strings + 2, 0x7FFF},
      {"text block without a length", company, 0},
      {"text block that ends before its terminator", company, 6 + 24 + 2 + 8},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    std::string bytes = good;
    put16(bytes, row.at, row.value);
    EXPECT_EQ(query(bytes, kCompany), kNothing);
  }
}

TEST(VersionBlock, ALengthBeyondTheBytesIsCut) {
  std::string bytes = sampleBlock();
  put16(bytes, 0, 0xFFFF);
  EXPECT_EQ(query(bytes, kCompany), found(KVW("VOLQ Fabrication")));
}

TEST(VersionBlock, EveryLengthIsSafe) {
  std::string const bytes = sampleBlock();
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    query(bytes.substr(0, size), kCompany);
    query(bytes.substr(0, size), KVW("\\"), false);
    EXPECT_EQ(query(bytes.substr(0, size), kTranslation, false), kNothing) << size;
  }
}

TEST(VersionBlock, EveryValueOfEachByteIsSafe) {
  std::string const original = sampleBlock();
  for (std::size_t at = 0; at < original.size(); ++at) {
    std::string bytes = original;
    for (unsigned const value : {0x00, 0x01, 0x05, 0x7F, 0x80, 0xFF}) {
      bytes[at] = static_cast<char>(value);
      query(bytes, kCompany);
      query(bytes, kTranslation, false);
      query(bytes, KVW("\\"), false);
    }
  }
}

// What copyVersionBlock hands out is asked without its size.
std::string copied(std::string const& resource, std::size_t size, wchar const* path) {
  std::vector<unsigned char> out(size, 0xAA);
  if (!platform::copyVersionBlock(ByteRange(resource.data(), resource.size()), out.data(), size)) {
    EXPECT_EQ(out, std::vector<unsigned char>(size, 0xAA)) << "nothing is written";
    return "no copy";
  }
  EXPECT_EQ(platform::load32(out.data() + size - 4), 0u) << "padding";
  void const* value = nullptr;
  ulong32 length = 0;
  if (!platform::nativeModules().queryVersion(out.data(), path, value, length)) return "none";
  auto const* const start = static_cast<unsigned char const*>(value);
  EXPECT_TRUE(start >= out.data() && start + 4 <= out.data() + size) << "the first pair can be read";
  return std::string(reinterpret_cast<char const*>(start), length);
}

TEST(CopyVersionBlock, ACompleteCopyAnswersLikeTheResource) {
  std::string const bytes = sampleBlock();
  EXPECT_EQ(copied(bytes, bytes.size() + 4, kTranslation), std::string("\x09\x04\xb0\x04", 4));
  EXPECT_EQ(copied(bytes, bytes.size() + 1000, kTranslation), std::string("\x09\x04\xb0\x04", 4));
}

TEST(CopyVersionBlock, ALyingLengthDoesNotLeadBehindTheCopy) {
  std::string bytes = sampleBlock();
  put16(bytes, 0, 0xFFFF);
  EXPECT_EQ(copied(bytes, bytes.size() + 4, kTranslation), std::string("\x09\x04\xb0\x04", 4));
  std::string const empty = root({group(KVW("VarFileInfo"), {block(KVW("Translation"), "", 0, kBinary)})});
  EXPECT_EQ(copied(empty, empty.size() + 4, kTranslation), "");
}

TEST(CopyVersionBlock, AnyRoomIsSafe) {
  std::string const bytes = sampleBlock();
  for (std::size_t room = 0; room < bytes.size() + 4; ++room) {
    std::string const value = copied(bytes, room, kTranslation);
    EXPECT_EQ(value, room < 10 ? "no copy" : "none") << room;
  }
}

TEST(CopyVersionBlock, AResourceSmallerThanAHeaderIsNotCopied) {
  EXPECT_EQ(copied(std::string("\x05\0\0\0\0", 5), 100, KVW("\\")), "no copy");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
