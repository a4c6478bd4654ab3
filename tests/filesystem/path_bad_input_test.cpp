// SPDX-License-Identifier: MIT
//
// Paths of absurd size and content.
#include <gtest/gtest.h>

#include <string>

#include "tests/filesystem/path_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr std::size_t kMega = 1 << 20;

wstring repeated(wstring const& piece, std::size_t times) {
  wstring text;
  text.reserve(piece.size() * times);
  for (std::size_t i = 0; i < times; ++i) text += piece;
  return text;
}
std::size_t lengthOf(String const& text) {
  return static_cast<std::size_t>(text.length());
}

TEST(PathBadInput, OneLevelOfAMegabyte) {
  wstring const level(kMega, KVW('a'));
  SmartPtr<Directory const> const directory = directoryAt((KVW("C:\\") + level).c_str());
  EXPECT_EQ(lengthOf(directory->getFullName()), kMega + 4);
  EXPECT_EQ(lengthOf(directory->getName()), kMega);
  EXPECT_EQ(directory->equals(directoryAt((KVW("c:/") + wstring(kMega, KVW('A'))).c_str())), FileSystemItem::Equal);
  EXPECT_TRUE(directory->contains(*directory));
}

TEST(PathBadInput, AFileNameOfAMegabyte) {
  SmartPtr<File const> const file = fileAt((KVW("C:\\") + wstring(kMega, KVW('a')) + KVW(".b")).c_str());
  EXPECT_EQ(lengthOf(file->getBaseName()), kMega);
  EXPECT_EQ(lengthOf(file->getFullNameUnicode()), kMega + 9);
}

TEST(PathBadInput, HalfAMillionLevels) {
  SmartPtr<Directory const> const directory = directoryAt((KVW("C:/") + repeated(KVW("a/"), kMega / 2)).c_str());
  EXPECT_EQ(lengthOf(directory->getFullName()), kMega + 3);
  EXPECT_EQ(lengthOf(directory->getFullNameUnix()), kMega + 3);
  EXPECT_EQ(fullName(directory->makeRelative(directory)), ".\\");
}

TEST(PathBadInput, TenThousandLevelsAndBack) {
  constexpr std::size_t kLevels = 10000;
  wstring const down = repeated(KVW("dir\\"), kLevels);
  wstring const up = repeated(KVW("..\\"), kLevels);
  SmartPtr<Directory const> const deep = directoryAt((KVW("C:\\") + down).c_str());
  SmartPtr<Directory const> const back = directoryAt(up.c_str());
  EXPECT_EQ(fullName(directoryAt((KVW("C:\\") + down + up).c_str())), "C:\\");
  EXPECT_EQ(fullName(deep->appendPath(*back)), "C:\\");
  EXPECT_EQ(fullName(directoryAt(KVW("C:\\"))->makeRelative(deep)), narrow(up));
  EXPECT_EQ(fullName(deep->makeRelative(directoryAt(KVW("C:\\")))), narrow(down));

  CollectedMessages messages;
  EXPECT_EQ(Directory::fromString(String((KVW("C:\\") + down + up + KVW("..")).c_str())), nullptr);
  EXPECT_EQ(messages.take().size(), 1u);
}

TEST(PathBadInput, AMegabyteOfSeparators) {
  for (wchar const separator : {KVW('\\'), KVW('/')}) {
    wstring const separators(kMega, separator);
    EXPECT_EQ(fullName(directoryAt((KVW("a") + separators + KVW("b") + separators).c_str())), "a\\b\\");
    EXPECT_EQ(fullName(directoryAt((KVW("C:") + separators).c_str())), "C:\\");
    CollectedMessages messages;
    EXPECT_EQ(Directory::fromString(String(separators.c_str())), nullptr);
    EXPECT_EQ(messages.take().size(), 1u);
  }
}

TEST(PathBadInput, AMegabyteOfDotsAndSeparators) {
  EXPECT_EQ(fullName(directoryAt((KVW("C:\\") + repeated(KVW(".\\"), kMega / 2)).c_str())), "C:\\");
  EXPECT_EQ(fullName(directoryAt((KVW("\\") + repeated(KVW("a\\..\\"), kMega / 5)).c_str())), "\\");
}

// A message has room for 32768 units; a longer one ends there.
TEST(PathBadInput, AMessageAboutAMegabyteIsCut) {
  wstring const text = wstring(kMega, KVW('a')) + KVW('*');
  CollectedMessages messages;
  EXPECT_EQ(Directory::fromString(String(text.c_str())), nullptr);
  Texts const all = messages.take();
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0], ("The path or file name '" + std::string(32768, 'a')).substr(0, 32768));
}

// Texts of a path are arguments of a message and never its format.
TEST(PathBadInput, PercentSignsArePlainText) {
  CollectedMessages messages;
  EXPECT_EQ(Directory::fromString(String(KVW("%ls%n%d*"))), nullptr);
  EXPECT_EQ(messages.take(), Texts{invalidName("%ls%n%d*")});
  EXPECT_EQ(Directory::fromString(String(KVW("%:%s"))), nullptr);
  EXPECT_EQ(messages.take(), Texts{invalidDrive("%:%s")});
  EXPECT_EQ(fullName(directoryAt(KVW("%ls\\%n"))), "%ls\\%n\\");
}

TEST(PathBadInput, LoneSurrogatesAndNoncharactersPassThrough) {
  for (unsigned int const unit : {0xD800u, 0xDBFFu, 0xDC00u, 0xDFFFu, 0xFFFEu, 0xFFFFu, 0xFEFFu, 0xE000u, 0xF05Cu}) {
    wstring const name = KVW("a") + wstring(1, static_cast<wchar>(unit)) + KVW("b");
    SmartPtr<Directory const> const directory = directoryAt((KVW("C:\\") + name).c_str());
    EXPECT_EQ(shown(directory->getName()), narrow(name));
    EXPECT_EQ(shown(directory->getFullNameUnix()), "C:/" + narrow(name) + "/");
    EXPECT_EQ(shown(fileAt(name.c_str())->getName()), narrow(name));
  }
}

// Every unit as the text before a colon: twice 26 letters are drives.
TEST(PathBadInput, EveryUnitAsDriveLetter) {
  int drives = 0;
  for (unsigned int unit = 1; unit <= 0xFFFF; ++unit) {
    wstring const text = wstring(1, static_cast<wchar>(unit)) + KVW(":\\a");
    SmartPtr<Directory const> const directory = Directory::fromString(String(text.c_str()));
    bool const letter = (unit >= 'A' && unit <= 'Z') || (unit >= 'a' && unit <= 'z');
    ASSERT_EQ(directory != nullptr, letter) << unit;
    if (!letter) continue;
    ++drives;
    ASSERT_EQ(shown(directory->getRoot()), std::string(1, static_cast<char>(unit & ~0x20u)) + ":");
  }
  EXPECT_EQ(drives, 52);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
