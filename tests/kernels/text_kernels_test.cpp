// SPDX-License-Identifier: MIT
//
// The inner loops of the string code: every twin gives what the slow reference gives, reads nothing outside its range
// and writes nothing it should not. The buffers are exactly as large as the text, so that a sanitizer detects any
// access outside.
#include "kvbase/kernels/text_kernels.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "tests/kernels/kernel_twins.h"
#include "tests/reference/string_search.h"
#include "tests/reference/text_kernels.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

// A text at the end of an exact block, `shift` units behind the block's start, so that it begins at any alignment.
class Block {
 public:
  explicit Block(wstring const& text, int shift = 0)
      : units_(new wchar[text.size() + static_cast<std::size_t>(shift)]), shift_(shift) {
    for (int i = 0; i < shift; ++i) units_[static_cast<std::size_t>(i)] = KVW('a');
    if (!text.empty()) std::memcpy(units_.get() + shift, text.data(), text.size() * sizeof(wchar));
  }
  wchar* text() const { return units_.get() + shift_; }

 private:
  std::unique_ptr<wchar[]> units_;
  int shift_;
};

constexpr int kAlignments = 17;
constexpr RandomUnits kKinds[] = {RandomUnits::kFew, RandomUnits::kAscii, RandomUnits::kAny, RandomUnits::kAnyWithNul};

// Runs the check for texts of every length up to 130, at every alignment and of every kind, and for some large ones.
template <class Check>
void forTexts(std::uint32_t seed, Check check) {
  RandomText random(seed);
  for (int length = 0; length <= 130; ++length) {
    for (int shift = 0; shift < kAlignments; ++shift)
      check(random, random.text(length, kKinds[(length + shift) % 4]), shift);
  }
  for (int const length : {1000, 4097, 70001}) {
    for (RandomUnits const kind : kKinds) check(random, random.text(length, kind), random.below(kAlignments));
  }
}

// The same text with some units changed, and the case of some letters.
wstring varied(RandomText& random, wstring text) {
  for (int changes = random.below(3); changes > 0 && !text.empty(); --changes) {
    text[static_cast<std::size_t>(random.below(static_cast<int>(text.size())))] = random.unit(RandomUnits::kAnyWithNul);
  }
  for (wchar& unit : text) {
    bool const letter = (unit | 32) >= KVW('a') && (unit | 32) <= KVW('z') && unit < 128;
    if (letter && random.oneIn(4)) unit = static_cast<wchar>(unit ^ 32);
  }
  return text;
}

TEST(TextKernels, ActiveOnesAreOneOfTheTwins) {
  bool known = false;
  for (Twin const& twin : twins()) known = known || twin.kernels == strings::activeKernels;
  EXPECT_TRUE(known);
  EXPECT_EQ(strings::activeKernels, twins().back().kernels) << "the best one after start-up";
}

TEST(TextKernels, Length) {
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    forTexts(11, [&twin](RandomText&, wstring const& text, int shift) {
      Block const block(text + wchar(0), shift);
      ASSERT_EQ(twin.kernels->length(block.text()), static_cast<int>(wstring(text.c_str()).size()));
    });
  }
}

TEST(TextKernels, Mismatch) {
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    forTexts(12, [&twin](RandomText& random, wstring const& text, int shift) {
      int const n = static_cast<int>(text.size());
      for (wstring const& other : {text, varied(random, text)}) {
        Block const a(text, shift);
        Block const b(other, random.below(kAlignments));
        ASSERT_EQ(twin.kernels->mismatch(a.text(), b.text(), n), reference::mismatch(text, other));
        ASSERT_EQ(twin.kernels->mismatchIgnoringCase(a.text(), b.text(), n),
                  reference::mismatchIgnoringCase(text, other));
      }
    });
  }
}

TEST(TextKernels, MismatchAtEveryPlace) {
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    for (int n = 1; n <= 100; ++n) {
      wstring const text(static_cast<std::size_t>(n), KVW('x'));
      for (int place = 0; place < n; ++place) {
        wstring other = text;
        other[static_cast<std::size_t>(place)] = KVW('Y');
        Block const a(text);
        Block const b(other);
        ASSERT_EQ(twin.kernels->mismatch(a.text(), b.text(), n), place) << n;
        ASSERT_EQ(twin.kernels->mismatchIgnoringCase(a.text(), b.text(), n), place) << n;
      }
    }
  }
}

// The vectors of a long text begin at aligned places.
TEST(TextKernels, LongTextsFromEveryPlaceInMemory) {
  wstring const needle = KVW("5yy");
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    for (int n : {511, 512, 513, 600}) {
      for (int shift = 0; shift < kAlignments; ++shift) {
        Block const plain(wstring(static_cast<std::size_t>(n), KVW('y')), (shift + 5) % kAlignments);
        Block const block(wstring(static_cast<std::size_t>(n), KVW('y')), shift);
        // At the front, where the first vectors overlap, and at the end.
        for (int place = 0; place <= n; place += place == 90 ? n - 180 : 1) {
          SCOPED_TRACE(place);
          if (place < n) block.text()[place] = KVW('5');
          ASSERT_EQ(twin.kernels->mismatch(block.text(), plain.text(), n), place);
          ASSERT_EQ(twin.kernels->mismatchIgnoringCase(block.text(), plain.text(), n), place);
          ASSERT_EQ(twin.kernels->findUnit(block.text(), KVW('5'), n), place);
          ASSERT_EQ(twin.kernels->findRange(block.text(), n, KVW('0'), KVW('9')), place);
          ASSERT_EQ(twin.kernels->findText(block.text(), n, needle.data(), 3), place + 3 <= n ? place : -1);
          if (place < n) block.text()[place] = KVW('y');
        }
      }
    }
  }
}

TEST(TextKernels, FindUnit) {
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    forTexts(13, [&twin](RandomText& random, wstring const& text, int shift) {
      int const n = static_cast<int>(text.size());
      Block const block(text, shift);
      for (wchar const unit : {KVW('a'), wchar(0), random.unit(RandomUnits::kAny), wchar(0xFFFF)}) {
        ASSERT_EQ(twin.kernels->findUnit(block.text(), unit, n), reference::findUnit(text, unit));
        ASSERT_EQ(twin.kernels->findLastUnit(block.text(), unit, n), reference::findLastUnit(text, unit));
      }
    });
  }
}

TEST(TextKernels, FindRange) {
  struct Range {
    wchar low, high;
  } const ranges[] = {{KVW('0'), KVW('9')}, {KVW('-'), KVW('9')}, {KVW('b'), KVW('b')}, {0x01, 0x1F}};
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    forTexts(17, [&twin, &ranges](RandomText&, wstring const& text, int shift) {
      Block const block(text, shift);
      for (Range const& range : ranges) {
        ASSERT_EQ(twin.kernels->findRange(block.text(), static_cast<int>(text.size()), range.low, range.high),
                  reference::findRange(text, range.low, range.high));
      }
    });
  }
}

TEST(TextKernels, EveryUnitIsFoundAndFolded) {
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    for (wchar const unit : sampledUnits()) {
      int const value = unit;
      wstring text(40, static_cast<wchar>(value == 1 ? 2 : value - 1));
      text[33] = unit;
      ASSERT_EQ(twin.kernels->findUnit(text.data(), unit, 40), 33) << value;
      ASSERT_EQ(twin.kernels->findLastUnit(text.data(), unit, 40), 33) << value;
      wstring folded(40, unit);
      folded[20] = static_cast<wchar>(unit ^ 32);
      ASSERT_EQ(twin.kernels->mismatchIgnoringCase(wstring(40, unit).data(), folded.data(), 40),
                reference::mismatchIgnoringCase(wstring(40, unit), folded))
          << value;
    }
  }
}

TEST(TextKernels, FindText) {
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    forTexts(14, [&twin](RandomText& random, wstring const& text, int shift) {
      int const n = static_cast<int>(text.size());
      Block const block(text, shift);
      for (int m : {1, 2, 3, random.between(1, 40), random.between(1, 40)}) {
        // A piece of the text in most cases; some other text in the rest.
        bool const piece = n > m && !random.oneIn(4);
        wstring wanted = piece ? text.substr(static_cast<std::size_t>(random.below(n - m)), static_cast<std::size_t>(m))
                               : random.text(m, RandomUnits::kFew);
        wanted = wstring(wanted.c_str());
        if (wanted.empty()) continue;
        m = static_cast<int>(wanted.size());
        Block const needle(wanted, random.below(kAlignments));
        int const expected = reference::find(wstring(text.c_str()), wanted, 0);
        ASSERT_EQ(twin.kernels->findText(block.text(), n, needle.text(), m), expected);
      }
    });
  }
}

TEST(TextKernels, FindTextOfManyFalseStarts) {
  RandomText random(15);
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    for (int round = 0; round < 1000; ++round) {
      wstring text(static_cast<std::size_t>(random.between(1, 400)), KVW('a'));
      for (int i = random.below(6); i > 0; --i)
        text[static_cast<std::size_t>(random.below(static_cast<int>(text.size())))] = KVW('b');
      // No match counts behind a NUL.
      if (random.oneIn(3)) text[static_cast<std::size_t>(random.below(static_cast<int>(text.size())))] = 0;
      wstring wanted(static_cast<std::size_t>(random.between(1, 60)), KVW('a'));
      if (random.oneIn(2)) wanted[static_cast<std::size_t>(random.below(static_cast<int>(wanted.size())))] = KVW('b');
      Block const block(text);
      Block const needle(wanted);
      ASSERT_EQ(twin.kernels->findText(block.text(), static_cast<int>(text.size()), needle.text(),
                                       static_cast<int>(wanted.size())),
                reference::find(wstring(text.c_str()), wanted, 0))
          << round;
    }
  }
}

TEST(TextKernels, FindTextTakesLinearTime) {
  constexpr int n = 1 << 20;
  wstring const text(n, KVW('a'));
  wstring inTheMiddle(n / 2, KVW('a'));
  inTheMiddle[n / 4] = KVW('b');
  wstring const atTheFront = KVW('b') + wstring(n / 2, KVW('a'));
  wstring const atTheEnd = wstring(n / 2, KVW('a')) + KVW('b');
  for (Twin const& twin : twins()) {
    // The scalar twin is the definition, and quadratic.
    if (twin.kernels == &strings::kScalarKernels) continue;
    SCOPED_TRACE(twin.name);
    for (wstring const& wanted : {inTheMiddle, atTheFront, atTheEnd}) {
      EXPECT_EQ(twin.kernels->findText(text.data(), n, wanted.data(), static_cast<int>(wanted.size())), -1);
    }
  }
}

TEST(TextKernels, ReplaceUnit) {
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    forTexts(16, [&twin](RandomText& random, wstring const& text, int shift) {
      int const n = static_cast<int>(text.size());
      wchar const from = random.oneIn(2) ? KVW('a') : random.unit(RandomUnits::kAny);
      for (wchar const to : {KVW('x'), wchar(0), from}) {
        Block const block(text, shift);
        wstring expected = text;
        ASSERT_EQ(twin.kernels->replaceUnit(block.text(), n, from, to), reference::replaceUnit(expected, from, to));
        ASSERT_EQ(expected, wstring(block.text(), text.size()));
      }
    });
  }
}

TEST(TextKernels, ReplaceUnitCountsBeyondAnyLane) {
  constexpr int n = 3 << 20;
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    wstring text(n, KVW('a'));
    EXPECT_EQ(twin.kernels->replaceUnit(&text[0], n, KVW('a'), KVW('b')), n);
    EXPECT_EQ(wstring(n, KVW('b')), text);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
