// SPDX-License-Identifier: MIT
//
// The input is a table of lines; its second half serves as the texts that it names. What is found lies in the table's rows
// and in its texts, wherever it is asked.
#include "fuzzers/fuzz_input.h"

#include "kvbase/platform/linux/debug/line_table.h"

using namespace KV_1_1;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  platform::Bytes const all(data, size);
  platform::LineSections const sections = {all, all.substr(size / 2), all.substr(size / 2)};
  auto const table = platform::LineTable::read(sections, 0, "/unit");
  if (!table.has_value()) return 0;
  std::uint64_t const addresses[] = {0, 1, 0x1000, 0x1010, 0x12345, ~std::uint64_t{0} - 1, ~std::uint64_t{0}};
  for (std::uint64_t const address : addresses) {
    auto const row = table->find(address);
    if (!row.has_value()) continue;
    fuzzing::require(row->address <= address, "a row starts at its address or below");
    auto const again = table->find(row->address);
    fuzzing::require(again.has_value() && again->line == row->line, "a row is found by its own address");
    auto const file = table->file(row->file);
    fuzzing::require(!file.has_value() || file->size() <= 2 * size + 8, "a path consists of two texts");
  }
  return 0;
}
