// SPDX-License-Identifier: MIT
//
// Payloads of UTF-8 and the UTF-8 of payloads, at the sizes at which they are built in another way: short texts, long
// texts, texts beyond a megabyte.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "kvbase/strings/internal/allocation.h"
#include "kvbase/strings/kv_string.h"
#include "tests/reference/string_encoding.h"
#include "tests/strings/string_support.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr char const* kCharacters[] = {"a", "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xFF"};

std::string repeated(char const* character, std::size_t size) {
  std::string bytes;
  while (bytes.size() < size) bytes += character;
  bytes.resize(size);
  return bytes;
}

std::string utf8Of(String const& text) {
  return text.stringUTF8();
}

void expectThereAndBack(std::string const& bytes) {
  wstring const expected = reference::fromUtf8(bytes);
  String const text = String(UTF8Interface(bytes.c_str()));
  EXPECT_EQ(text.length(), static_cast<int>(expected.size()));
  EXPECT_TRUE(testing::unitsOf(text) == expected);
  EXPECT_TRUE(utf8Of(text) == reference::toUtf8(expected));
}

TEST(StringValUtf8, EverySizeAroundTheLimits) {
  for (std::size_t const limit : {85u, 256u}) {
    for (char const* const character : kCharacters) {
      for (std::size_t size = limit - 3; size <= limit + 3; ++size) {
        SCOPED_TRACE(size);
        expectThereAndBack(repeated(character, size));
      }
    }
  }
}

TEST(StringValUtf8, OneOtherCharacterInShortAscii) {
  for (std::size_t size = 0; size <= 110; ++size) {
    expectThereAndBack(std::string(size, 'a'));
    for (std::size_t at = 0; at < size; ++at) expectThereAndBack(std::string(size, 'a').replace(at, 1, "\xC3\xA4"));
  }
}

TEST(StringValUtf8, AMegabyteAndMore) {
  for (std::size_t const size : {(1u << 20) - 1, 1u << 20}) expectThereAndBack(repeated("\xE2\x82\xAC", size));
}

TEST(StringValUtf8, RandomTextsOfEveryLength) {
  RandomText random(71);
  for (int length = 1; length <= 600; ++length) {
    std::string bytes = random.utf8(length);
    for (char& byte : bytes) byte = byte == 0 ? 'z' : byte;
    wstring const expected = reference::fromUtf8(bytes);
    String const text = String(UTF8Interface(bytes.c_str()));
    ASSERT_EQ(testing::unitsOf(text), expected) << length;
    ASSERT_EQ(utf8Of(text), reference::toUtf8(expected)) << length;
  }
}

TEST(StringValUtf8, TheFirstCharacterBeyondAsciiAtEveryPlace) {
  for (int place = 0; place < 200; ++place) {
    wstring units(200, KVW('a'));
    units[static_cast<std::size_t>(place)] = 0x20AC;
    ASSERT_EQ(utf8Of(String(units.c_str())), reference::toUtf8(units)) << place;
  }
}

// The rule of the length is that of every other page, see StringVal::construct.
TEST(StringValUtf8, CountedBytesThatAreNotAsManyUnitsGiveOneUnitLess) {
  for (std::size_t const count : {10u, 200u}) {
    std::string const bytes = repeated("\xC3\xA4", 2 * count);
    StringVal* const payload =
        StringVal::constructUsingCodepage(UTF8Interface(bytes.c_str()), static_cast<int>(bytes.size()), -1);
    EXPECT_EQ(payload->lazyLength(), static_cast<int>(count) - 1);
    EXPECT_EQ(payload->at(static_cast<int>(count) - 1), 0xE4) << "the last unit lies behind the length";
    payload->unref();
  }
}

TEST(StringValUtf8, ABlockThatCannotBeCutStaysAsItIs) {
  std::string const bytes = repeated("\xC3\xA4", 1000);
  strings::blockAllocator.cut = [](void*, std::size_t) -> void* { return nullptr; };
  String const text = String(UTF8Interface(bytes.c_str()));
  strings::blockAllocator.cut = &std::realloc;
  EXPECT_EQ(text.length(), 500);
  EXPECT_EQ(utf8Of(text), bytes);
}

TEST(StringValUtf8, ExhaustedMemoryLeavesNothingBehind) {
  for (std::size_t const size : {40u, 1000u}) {
    for (char const* const character : kCharacters) {
      std::string const bytes = repeated(character, size);
      for (AllocationSweep sweep; sweep.next();) {
        sweep.run([&] { String(UTF8Interface(bytes.c_str())); });
      }
      wstring const units = reference::fromUtf8(bytes);
      for (AllocationSweep sweep; sweep.next();) {
        sweep.run([&] { String(units.c_str()).stringUTF8(); });
      }
    }
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
