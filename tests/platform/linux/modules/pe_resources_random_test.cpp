// SPDX-License-Identifier: MIT
//
// Random images against a plain map of their resources: in memory and in a file, of both widths, sorted or not.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "kvbase/platform/linux/modules/pe_resources.h"
#include "kvbase/platform/module_api.h"
#include "tests/support/pe_image.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Random = std::mt19937;
using Place = std::tuple<PeImage::Key, PeImage::Key, int>;

int below(Random& random, unsigned int limit) {
  return static_cast<int>(random() % limit);
}

PeImage::Key randomKey(Random& random, unsigned int variety) {
  int const number = below(random, variety);
  if (below(random, 2) == 0) return number;
  wstring text = KVW("NAME");
  for (int rest = number; rest > 0; rest /= 4) text += static_cast<wchar>(KVW('A') + rest % 4);
  return text;
}

struct Model {
  PeImage image;
  std::map<Place, std::string> contents;
};

Model randomModel(Random& random) {
  Model model;
  model.image.has64Bits = below(random, 2) == 0;
  model.image.isSorted = below(random, 2) == 0;
  model.image.otherSections = static_cast<std::uint32_t>(below(random, 4));
  model.image.padding = static_cast<std::size_t>(below(random, 10000));
  for (int i = below(random, 200); i > 0; --i) {
    Place const place(randomKey(random, 3), randomKey(random, 60), 1024 * below(random, 3) + below(random, 4));
    std::string content(static_cast<std::size_t>(below(random, 5000)), static_cast<char>(i));
    if (!model.contents.emplace(place, content).second) continue;
    model.image.add(std::get<0>(place), std::get<1>(place), std::get<2>(place), content);
  }
  return model;
}

platform::ResourceKey keyOf(PeImage::Key const& key) {
  return platform::ResourceKey(key.isText ? key.text.c_str() : platform::resourceId(key.number));
}

std::string contentAt(platform::PeResources& resources, Place const& place) {
  platform::PeResources::Directory versions;
  if (!resources.findVersions(keyOf(std::get<0>(place)), keyOf(std::get<1>(place)), versions)) return "none";
  platform::PeResources::Version const version =
      resources.findVersion(versions, static_cast<std::uint16_t>(std::get<2>(place)));
  platform::ByteRange bytes;
  if (version == 0 || !resources.bytesOf(version, bytes)) return "none";
  std::string content(static_cast<std::size_t>(bytes.size()), '\0');
  EXPECT_TRUE(bytes.copy(0, content.size(), &content[0]));
  return content;
}

TEST(PeResourcesRandom, MemoryAndFileGiveWhatTheModelHas) {
  TempFolder const folder;
  Random random(20250611);
  for (int round = 0; round < 60; ++round) {
    SCOPED_TRACE(round);
    Model model = randomModel(random);
    std::string const bytes = model.image.build();
    folder.write("image.dll", bytes);
    platform::FilePages pages(platform::Descriptor(open(folder.path("image.dll").c_str(), O_RDONLY | O_CLOEXEC)));
    ASSERT_TRUE(pages.refresh());
    platform::PeResources inMemory, inFile;
    ASSERT_TRUE(inMemory.open(platform::ByteRange(bytes.data(), bytes.size())));
    ASSERT_TRUE(inFile.open(platform::ByteRange(pages)));
    for (auto const& resource : model.contents) {
      EXPECT_EQ(contentAt(inMemory, resource.first), resource.second);
      EXPECT_EQ(contentAt(inFile, resource.first), resource.second);
    }
    for (int i = 0; i < 200; ++i) {
      Place const place(randomKey(random, 4), randomKey(random, 80), 1024 * below(random, 4) + below(random, 5));
      auto const expected = model.contents.find(place);
      std::string const content = expected == model.contents.end() ? "none" : expected->second;
      EXPECT_EQ(contentAt(inMemory, place), content);
      EXPECT_EQ(contentAt(inFile, place), content);
    }
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
