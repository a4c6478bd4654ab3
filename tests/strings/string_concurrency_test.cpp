// SPDX-License-Identifier: MIT
//
// What several threads may do at once with Strings on one payload: copy and drop them, and read the text.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "kvbase/strings/string_val.h"
#include "tests/strings/string_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 20000;

// Runs the work on several threads that start as near to each other as they can.
void onThreads(std::function<void(int thread)> const& work) {
  std::atomic<int> waiting{kThreads};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&waiting, &work, i] {
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      work(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(StringConcurrency, CountsAreRightAtTheEnd) {
  StringVal* const payload = StringVal::construct(KVW("shared"), -1, -1);
  std::atomic<int> destroyed{0};
  onThreads([payload, &destroyed](int) {
    for (int i = 0; i < kRounds; ++i) {
      payload->ref();
      if (payload->unref()) ++destroyed;
    }
  });
  EXPECT_EQ(destroyed, 0);
  EXPECT_EQ(payload->inqRefCount(), 1u);
  EXPECT_TRUE(payload->unref());
}

TEST(StringConcurrency, ExactlyOneThreadDropsTheLastReference) {
  for (int round = 0; round < 200; ++round) {
    StringVal* const payload = StringVal::construct(KVW("shared"), -1, -1);
    for (int i = 1; i < kThreads; ++i) payload->ref();
    std::atomic<int> destroyed{0};
    onThreads([payload, &destroyed](int) {
      if (payload->unref()) ++destroyed;
    });
    ASSERT_EQ(destroyed, 1);
  }
}

TEST(StringConcurrency, CopiesOfOnePayload) {
  String const text(KVW("  one payload for all threads 42 "));
  String const needle(KVW("payload"));
  std::atomic<int> wrong{0};
  onThreads([&text, &needle, &wrong](int thread) {
    std::vector<String> held;
    for (int i = 0; i < kRounds / 10; ++i) {
      String copy = text;
      held.push_back(copy);
      if (held.size() > 20) held.erase(held.begin());
      String const trimmed = copy.trim(true, true);
      if (trimmed.length() != text.length() - 3 || copy.find(needle, 0) != 6) ++wrong;
      copy[0] = static_cast<wchar>(KVW('a') + thread);
      if (copy[0] != KVW('a') + thread || copy.length() != text.length()) ++wrong;
      copy = String::EMPTY;
      if (copy.length() != 0) ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(state(text), "\"  one payload for all threads 42 \"");
  EXPECT_EQ(String::EMPTY.length(), 0);
}

TEST(StringConcurrency, NarrowCopiesMadeBeforeAreReadByAll) {
  String const text(KVW("t\x00E4xt"));
  char const* const utf8 = text.stringUTF8();
  std::atomic<int> wrong{0};
  onThreads([&text, utf8, &wrong](int) {
    for (int i = 0; i < kRounds; ++i) {
      String const copy = text;
      if (copy.stringUTF8() != utf8) ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(StringConcurrency, PrintfOnEveryThread) {
  std::atomic<int> wrong{0};
  String const name(KVW("scan"));
  onThreads([&name, &wrong](int thread) {
    for (int i = 0; i < 200; ++i) {
      String text;
      text.printf(KVW("%ls %d"), name, thread);
      if (text != name + KVW(' ') + static_cast<wchar>(KVW('0') + thread)) ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
