// SPDX-License-Identifier: MIT
//
// The path logic against a slow and obvious one, on random texts.
#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>

#include "kvbase/filesystem/internal/path_names.h"
#include "tests/filesystem/path_support.h"
#include "tests/reference/path_algebra_model.h"
#include "tests/support/scripted_files.h"

namespace KV_1_1 {
namespace testing {
namespace {

using reference::DirectoryModel;
using reference::FileModel;
using reference::PathWorld;

std::string shownOptional(std::optional<wstring> const& text) {
  return text ? narrow(*text) : "NIL";
}

std::string described(DirectoryModel const& path) {
  std::string text = (path.absolute ? "abs " : "rel ") + shownOptional(path.root);
  if (!path.levels.empty()) text += ' ';
  for (wstring const& level : path.levels) text += '[' + narrow(level) + ']';
  return text;
}
std::string described(FileModel const& file) {
  return described(file.directory) + " | " + narrow(file.base) + " | " + narrow(file.extension);
}
template <class Model>
std::string described(std::optional<Model> const& model) {
  return model ? described(*model) : "null";
}
using KV_1_1::testing::described;

// All texts of a path, or of its model, in one.
template <class Path>
std::string textsOf(SmartPtr<Path> const& path) {
  if (path == nullptr) return "null";
  return shown(path->getFullName()) + " " + shown(path->getFullNameUnicode()) + " " + shown(path->getFullNameUnix()) +
         " " + shown(path->getName());
}
template <class Model>
std::string textsOf(std::optional<Model> const& path) {
  if (!path) return "null";
  return narrow(fullName(*path)) + " " + narrow(fullNameUnicode(*path)) + " " + narrow(fullNameUnix(*path)) + " " +
         narrow(nameOf(*path));
}

// Texts made of what paths are made of: pieces that are likely to mean something, and single units of a small alphabet.
class RandomTexts {
 public:
  explicit RandomTexts(unsigned int seed) : random_(seed) {}

  wstring path() {
    static wstring const fronts[] = {KVW(""),
                                     KVW(""),
                                     KVW("\\"),
                                     KVW("/"),
                                     KVW("C:"),
                                     KVW("c:\\"),
                                     KVW("D:/"),
                                     KVW("\\\\"),
                                     KVW("//"),
                                     KVW("\\\\s\\t\\"),
                                     KVW("//S/t/"),
                                     KVW("\\\\?\\"),
                                     KVW("//?/"),
                                     KVW("\\\\?\\C:\\"),
                                     KVW("\\\\?\\UNC\\"),
                                     KVW("//?/UNC/s/t/"),
                                     KVW("\\\\?\\unc\\"),
                                     KVW("1:"),
                                     KVW("z:")};
    static wstring const pieces[] = {KVW("\\"),    KVW("/"),    KVW("."),    KVW(".."), KVW("a"),
                                     KVW("A"),     KVW("b"),    KVW("\\"),   KVW("/"),  KVW("\\..\\"),
                                     KVW("\\.\\"), KVW("/../"), KVW("ab.c"), KVW("B.C")};
    wstring text = fronts[below(std::size(fronts))];
    for (std::size_t i = below(9); i > 0; --i) {
      text += below(6) == 0 ? wstring(1, unit()) : pieces[below(std::size(pieces))];
    }
    return text;
  }

  wstring name() {
    wstring text;
    for (std::size_t i = below(5); i > 0; --i) text += unit();
    return text;
  }

  // True once in `times`.
  bool oneIn(std::size_t times) { return below(times) == 0; }

 private:
  std::size_t below(std::size_t end) { return random_() % end; }
  wchar unit() {
    static wchar const alphabet[] = {'\\', '/', '.', '.', ':', 'a', 'A', 'b', 'B',  'z',  ' ',  '*',    '?',
                                     '<',  '"', '|', '_', '[', '1', 0,   1,   0x1F, 0xE4, 0xC4, 0xD800, 0xFFFF};
    return alphabet[below(std::size(alphabet))];
  }

  std::mt19937 random_;
};

// Both sides in the same process: in C:\work\Now, with D:\ as the current directory of D and no other drive.
class PathDifferential : public ::testing::Test {
 protected:
  PathDifferential() {
    world.currentDirectory = KVW("C:\\work\\Now");
    world.driveDirectories[2] = KVW("C:\\work\\Now");
    world.driveDirectories[3] = KVW("D:\\");
    files.script.directory = *world.currentDirectory;
    files.script.driveDirectories[3] = *world.driveDirectories[2];
    files.script.driveDirectories[4] = *world.driveDirectories[3];
  }

  // The messages of both sides since the last call must be the same.
  void expectSameMessages() {
    Texts expected;
    for (wstring const& message : world.messages) expected.push_back(narrow(message));
    world.messages.clear();
    ASSERT_EQ(messages.take(), expected);
  }

  ScriptedFiles files;
  platform::ScopedBackend<platform::FileApi> scope{files};
  CollectedMessages messages;
  PathWorld world;
};

constexpr int kPathRounds = 3000;

// A random text behind a given one that gives a path; the path comes with it.
template <class Path>
wstring validText(RandomTexts& random, SmartPtr<Path const>& path, wstring const& front = wstring()) {
  for (;;) {
    wstring const text = front + random.path();
    path = Path::fromString(counted(text));
    if (path != nullptr) return text;
  }
}

TEST_F(PathDifferential, Names) {
  RandomTexts random(1);
  for (int round = 0; round < kPathRounds; ++round) {
    wstring const text = random.name();
    SCOPED_TRACE(narrow(text));
    ASSERT_EQ(isValidItemName(counted(text)), reference::isValidItemName(text));
    ASSERT_EQ(isValidSearchPattern(counted(text)), reference::isValidSearchPattern(text));
  }
}

TEST_F(PathDifferential, DirectoriesFromTexts) {
  RandomTexts random(2);
  int valid = 0;
  for (int round = 0; round < kPathRounds; ++round) {
    wstring const text = random.path();
    SCOPED_TRACE(narrow(text));
    SmartPtr<Directory const> const path = Directory::fromString(counted(text));
    auto const model = reference::directoryFromText(text, world);
    ASSERT_EQ(described(path), described(model));
    ASSERT_EQ(textsOf(path), textsOf(model));
    ASSERT_NO_FATAL_FAILURE(expectSameMessages());
    if (path != nullptr) ++valid;
  }
  // The texts are worth the effort only if both sorts come up often.
  EXPECT_GT(valid, kPathRounds / 5);
  EXPECT_LT(valid, kPathRounds * 4 / 5);
}

TEST_F(PathDifferential, FilesFromTexts) {
  RandomTexts random(3);
  int valid = 0;
  for (int round = 0; round < kPathRounds; ++round) {
    wstring const text = random.path();
    SCOPED_TRACE(narrow(text));
    SmartPtr<File const> const file = File::fromString(counted(text));
    auto const model = reference::fileFromText(text, world);
    ASSERT_EQ(described(file), described(model));
    ASSERT_EQ(textsOf(file), textsOf(model));
    ASSERT_NO_FATAL_FAILURE(expectSameMessages());
    if (file != nullptr) ++valid;
  }
  EXPECT_GT(valid, kPathRounds / 10);
}

TEST_F(PathDifferential, Algebra) {
  RandomTexts random(4);
  for (int round = 0; round < kPathRounds; ++round) {
    SmartPtr<Directory const> one;
    SmartPtr<Directory const> other;
    wstring const oneText = validText(random, one);
    wstring const otherText = validText(random, other, random.oneIn(4) ? oneText : wstring());
    SCOPED_TRACE(narrow(oneText) + "   " + narrow(otherText));
    messages.take();
    DirectoryModel const a = *reference::directoryFromText(oneText, world);
    DirectoryModel const b = *reference::directoryFromText(otherText, world);
    wstring const level = random.name();

    ASSERT_EQ(described(one->appendLevel(counted(level))), described(reference::appendLevel(a, level, world)));
    ASSERT_NO_FATAL_FAILURE(expectSameMessages());
    ASSERT_EQ(described(one->appendPath(*other)), described(reference::appendPath(a, b, world)));
    ASSERT_NO_FATAL_FAILURE(expectSameMessages());
    ASSERT_EQ(described(one->combine(other)), described(reference::combine(a, b, world)));
    ASSERT_NO_FATAL_FAILURE(expectSameMessages());
    ASSERT_EQ(described(one->makeAbsolute()), described(reference::makeAbsolute(a, world)));
    ASSERT_NO_FATAL_FAILURE(expectSameMessages());
    ASSERT_EQ(static_cast<int>(one->equals(other)), reference::equals(a, b, world));
    ASSERT_NO_FATAL_FAILURE(expectSameMessages());
    ASSERT_EQ(one->contains(*other), reference::contains(a, fullName(b)));

    bool const bothKnown = reference::makeAbsolute(a, world) && reference::makeAbsolute(b, world);
    world.messages.clear();
    SmartPtr<Directory const> const relative = one->makeRelative(other);
    ASSERT_EQ(described(relative), described(reference::makeRelative(a, b, world)));
    if (bothKnown) {
      ASSERT_NO_FATAL_FAILURE(expectSameMessages());
    } else {
      // Whether the second path is still asked for when the first has failed is open; the last message is not.
      ASSERT_EQ(messages.take().back(), kNoAbsolutePaths);
      world.messages.clear();
    }
  }
}

TEST_F(PathDifferential, FilesInAlgebra) {
  RandomTexts random(5);
  for (int round = 0; round < kPathRounds; ++round) {
    SmartPtr<File const> one;
    SmartPtr<File const> other;
    SmartPtr<Directory const> directory;
    wstring const oneText = validText(random, one);
    wstring const otherText = random.oneIn(3) ? oneText : validText(random, other);
    if (other == nullptr) other = one;
    wstring const directoryText = validText(random, directory);
    SCOPED_TRACE(narrow(oneText) + "   " + narrow(otherText) + "   " + narrow(directoryText));
    messages.take();
    FileModel const a = *reference::fileFromText(oneText, world);
    FileModel const b = *reference::fileFromText(otherText, world);
    DirectoryModel const d = *reference::directoryFromText(directoryText, world);

    ASSERT_EQ(described(directory->combine(one)), described(reference::combine(d, a, world)));
    ASSERT_NO_FATAL_FAILURE(expectSameMessages());
    ASSERT_EQ(static_cast<int>(one->equals(other)), reference::equals(a, b, world));
    ASSERT_NO_FATAL_FAILURE(expectSameMessages());
    ASSERT_EQ(directory->contains(*one), reference::contains(d, fullName(a)));
    auto const relative = reference::makeRelative(a.directory, d, world);
    std::string const expected = relative ? described(reference::fileInDirectory(*relative, nameOf(a))) : "null";
    ASSERT_EQ(described(one->makeRelative(directory)), expected);
    messages.take();
    world.messages.clear();
  }
}

// A full name read anew is the same path, whichever of its three texts is taken, unless levels of dots are in the way.
TEST_F(PathDifferential, TextsLeadBackToThePath) {
  RandomTexts random(6);
  for (int round = 0; round < kPathRounds; ++round) {
    wstring const text = random.path();
    SCOPED_TRACE(narrow(text));
    SmartPtr<Directory const> const path = Directory::fromString(counted(text));
    if (path == nullptr || (path->getParent() == nullptr && !path->isAbsolute())) continue;
    ASSERT_EQ(described(Directory::fromString(path->getFullName())), described(path));
    ASSERT_EQ(described(Directory::fromString(path->getFullNameUnicode())), described(path));
    ASSERT_EQ(described(Directory::fromString(path->getFullNameUnix())), described(path));
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
