// SPDX-License-Identifier: MIT
#include "sample_tree.h"

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <random>
#include <system_error>

namespace scanshelf {

namespace fs = std::filesystem;
using KV_1_1::Directory;
using KV_1_1::SmartPtr;

namespace {

struct SampleFile {
  char16_t const* name;
  std::uintmax_t size;
};

constexpr SampleFile kFiles[] = {
    {u"scan001.dat", 1'572'864},
    {u"scan002.dat", 1'310'720},
    {u"scan003.DAT", 917'504},
    {u"Übersicht.txt", 2'417},
    {u"checksums", 640},
    {u".scanner", 96},
    {u"Ärztehaus/Plan.pdf", 48'200},
    {u"Ärztehaus/Erdgeschoß/scan101.dat", 3'145'728},
    {u"Ärztehaus/Erdgeschoß/scan102.dat", 2'883'584},
    {u"Ärztehaus/Dach/scan201.dat", 655'360},
    {u"Ärztehaus/Dach/scan201.preview.jpg", 20'480},
    {u"塔/scan301.dat", 786'432},
    {u"Archive 2024/January/Town hall/Second floor, corridor and adjoining rooms/Before cleaning/scan009.dat", 524'288},
    {u"Archive 2024/January/scan001.txt", 1'023},
};

constexpr char16_t const* kEmptyFolder = u"To be scanned";

void makeFile(fs::path const& path, std::uintmax_t size) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary).close();
  fs::resize_file(path, size);
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
  fs::path const parent = fs::canonical(fs::temp_directory_path());
  std::random_device random;
  do {
    char name[32];
    std::snprintf(name, sizeof name, "scanshelf-%08x", static_cast<unsigned>(random()));
    path_ = parent / name;
  } while (!fs::create_directory(path_));
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;  // nobody is left to tell
  fs::remove_all(path_, ignored);
}

SampleTree::SampleTree() {
  for (SampleFile const& file : kFiles) makeFile(root_.path() / fs::path(file.name), file.size);
  fs::create_directory(root_.path() / fs::path(kEmptyFolder));
}

SmartPtr<Directory const> SampleTree::folder() const {
  return Directory::fromUTF8(root_.path().u8string());
}

}  // namespace scanshelf
