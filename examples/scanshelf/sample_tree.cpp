// SPDX-License-Identifier: MIT
#include "sample_tree.h"

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <random>

#include "complaint.h"

namespace scanshelf {

namespace fs = std::filesystem;
using KV_1_1::Directory;
using KV_1_1::File;
using KV_1_1::getWindowsError;
using KV_1_1::SmartPtr;
using KV_1_1::wchar;

namespace {

struct SampleFile {
  wchar const* name;  // with backslashes
  std::uintmax_t size;
};

constexpr SampleFile kFiles[] = {
    {KVW("scan001.dat"), 1'572'864},
    {KVW("scan002.dat"), 1'310'720},
    {KVW("scan003.DAT"), 917'504},
    {KVW("Übersicht.txt"), 2'417},
    {KVW("checksums"), 640},
    {KVW(".scanner"), 96},
    {KVW("Ärztehaus\\Plan.pdf"), 48'200},
    {KVW("Ärztehaus\\Erdgeschoß\\scan101.dat"), 3'145'728},
    {KVW("Ärztehaus\\Erdgeschoß\\scan102.dat"), 2'883'584},
    {KVW("Ärztehaus\\Dach\\scan201.dat"), 655'360},
    {KVW("Ärztehaus\\Dach\\scan201.preview.jpg"), 20'480},
    {KVW("塔\\scan301.dat"), 786'432},
    {KVW("Archive 2024\\January\\Town hall\\Second floor, corridor and adjoining rooms\\Before cleaning\\scan009.dat"),
     524'288},
    {KVW("Archive 2024\\January\\scan001.txt"), 1'023},
};

constexpr wchar const* kFolder = KVW("Scans");
constexpr wchar const* kCopyFolder = KVW("Copy of scans");
constexpr wchar const* kEmptyFolder = KVW("To be scanned");

// What cannot be made is told by the size, which cannot be set then.
void makeFile(SmartPtr<Directory const> const& folder, SampleFile const& sample) {
  SmartPtr<File const> const file = folder->combine(File::fromString(sample.name));
  file->createParentDirectories();
  fs::path const path = static_cast<wchar const*>(file->getFullNameUnix());
  std::ofstream(path, std::ios::binary).close();
  fs::resize_file(path, sample.size);
}

}  // namespace

// The library takes a folder that is there for one that it has made, so the standard library finds the new name.
TemporaryFolder::TemporaryFolder() {
  fs::path const parent = fs::canonical(fs::temp_directory_path());
  if (!Directory::fromUTF8(parent.u8string())) {
    throw Complaint(KVW("The folder for temporary files has a name that is not one for every system."));
  }
  std::random_device random;
  do {
    char name[32];
    std::snprintf(name, sizeof name, "scanshelf-%08x", static_cast<unsigned>(random()));
    path_ = parent / name;
  } while (!fs::create_directory(path_));
}

TemporaryFolder::~TemporaryFolder() {
  folder()->remove(/*recursive=*/true);
}

void TemporaryFolder::remove() {
  if (folder()->remove(/*recursive=*/true)) return;
  throw Complaint(KVW("The temporary folder '") + folder()->getFullName() + KVW("' could not be removed: ") +
                  getWindowsError());
}

SmartPtr<Directory const> TemporaryFolder::folder() const {
  return Directory::fromUTF8(path_.u8string());
}

SampleTree::SampleTree() {
  for (SampleFile const& file : kFiles) makeFile(folder(), file);
  folder()->appendLevel(kEmptyFolder)->create();
}

SmartPtr<Directory const> SampleTree::folder() const {
  return root_.folder()->appendLevel(kFolder);
}

SmartPtr<Directory const> SampleTree::copyFolder() const {
  return root_.folder()->appendLevel(kCopyFolder);
}

}  // namespace scanshelf
