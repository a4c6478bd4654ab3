// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <thread>
#include <vector>

namespace KV_1_1 {
namespace testing {

constexpr int kThreads = 4;

// Calls work(0), work(1), ... on `count` threads that start as near to each other as they can, and waits for all.
// REQUIRES: the work throws nothing.
template <class Work>
void onThreads(int count, Work const& work) {
  std::atomic<int> waiting{count};
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&waiting, &work, i] {
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      work(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

template <class Work>
void onThreads(Work const& work) {
  onThreads(kThreads, work);
}

}  // namespace testing
}  // namespace KV_1_1
