// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace KV_1_1 {
namespace platform {

// Copies memory of this process, whatever the address is. False if not all of it can be read; `count` says how much
// was.
//
// Thread rule: any thread. Bytes that another thread changes meanwhile are copied as they are found.
bool readOwnMemory(std::uint64_t address, void* buffer, std::size_t size, std::size_t& count);

}  // namespace platform
}  // namespace KV_1_1
