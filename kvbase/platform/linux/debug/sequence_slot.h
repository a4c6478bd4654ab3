// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace KV_1_1 {
namespace platform {

// A few words that are written seldom and read often. A reader takes no lock; it sees a complete record or none. A slot
// lies in one line of the cache.
template <std::size_t N>
class alignas(64) SequenceSlot {
 public:
  using Words = std::array<std::uint64_t, N>;

  // False if the words are being written at this moment. Acquiring each word orders it before the second look at the
  // sequence, and a word of an unfinished record makes that look see the odd number that was stored before it.
  bool load(Words& words) const {
    std::uint32_t const before = sequence_.load(std::memory_order_acquire);
    loadWords(words, std::make_index_sequence<N>());
    return (before & 1) == 0 && sequence_.load(std::memory_order_relaxed) == before;
  }

  // Writers must exclude each other.
  void store(Words const& words) {
    std::uint32_t const before = sequence_.load(std::memory_order_relaxed);
    sequence_.store(before + 1, std::memory_order_relaxed);
    for (std::size_t i = 0; i < N; ++i) words_[i].store(words[i], std::memory_order_release);
    sequence_.store(before + 2, std::memory_order_release);
  }

 private:
  template <std::size_t... I>
  void loadWords(Words& words, std::index_sequence<I...>) const {
    words = {words_[I].load(std::memory_order_acquire)...};
  }

  std::atomic<std::uint32_t> sequence_{0};
  std::array<std::atomic<std::uint64_t>, N> words_{};
};

}  // namespace platform
}  // namespace KV_1_1
