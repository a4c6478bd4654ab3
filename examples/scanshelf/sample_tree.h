// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <random>
#include <utility>

#include "scanshelf.h"

namespace scanshelf {

constexpr std::pair<wchar const*, std::uintmax_t> kSampleFiles[] = {
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
    {KVW("Archive 2024\\January\\scan001.txt"), 1'023}};

// A sample of scans in a temporary folder, and room for its copy beside it. Both are removed with the object.
class SampleTree {
 public:
  // Throws std::filesystem::filesystem_error or an Error, and leaves nothing behind then: the other constructor has
  // finished when the files are made, so the destructor runs.
  SampleTree() : SampleTree(makeTemporaryFolder()) {
    for (auto const& [name, size] : kSampleFiles) {
      SmartPtr<File const> const file = folder()->combine(File::fromString(name));
      file->createParentDirectories();
      file->touch();
      std::filesystem::resize_file(file->getFullNameUnix().stringPath(), size);  // throws if there is none
    }
    folder()->appendLevel(KVW("To be scanned"))->create();
  }
  ~SampleTree() { root_->remove(/*recursive=*/true); }
  SampleTree(SampleTree&&) = delete;

  SmartPtr<Directory const> folder() const { return root_->appendLevel(KVW("Scans")); }
  // Does not exist yet.
  SmartPtr<Directory const> copyFolder() const { return root_->appendLevel(KVW("Copy of scans")); }

  // Removes the sample and its copy now. Throws an Error if something is left.
  void remove() const {
    if (root_->remove(/*recursive=*/true)) return;
    String const reason = getWindowsError();
    throw Error(textOf(IDS_TEMPORARY_NOT_REMOVED, root_->getFullName(), reason));
  }

 private:
  explicit SampleTree(SmartPtr<Directory const> root) : root_(std::move(root)) {}

  // Made by the standard library, because Directory::create does not tell whether the folder was there before.
  static SmartPtr<Directory const> makeTemporaryFolder() {
    namespace fs = std::filesystem;
    fs::path const parent = fs::canonical(fs::temp_directory_path());
    if (!Directory::fromUTF8(parent.u8string())) {
      throw Error(textOf(IDS_TEMPORARY_NAME_INVALID));
    }
    std::random_device random;
    fs::path path = parent;
    while (!fs::create_directory(path)) path = parent / ("scanshelf-" + std::to_string(random()));
    return Directory::fromUTF8(path.u8string());
  }

  SmartPtr<Directory const> root_;
};

}  // namespace scanshelf
