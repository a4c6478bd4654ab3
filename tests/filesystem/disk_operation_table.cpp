// SPDX-License-Identifier: MIT
#include "tests/filesystem/disk_operation_table.h"

#include <algorithm>
#include <memory>
#include <sstream>

#include "kvbase/filesystem/file_system_iterator.h"

namespace KV_1_1 {
namespace testing {

namespace {

// --- Results as texts ------------------------------------------------------------------------------------------------

std::string textOf(bool value) {
  return value ? "true" : "false";
}
std::string textOf(int value) {
  return std::to_string(value);
}

// The result of a query; says so if a failing one changed its output.
std::string sizeOf(SmartPtr<File const> const& file) {
  ULARGE_INTEGER size;
  size.QuadPart = 77;
  bool const told = file->getFileSize(size);
  return told ? std::to_string(size.QuadPart) : size.QuadPart == 77 ? "false" : "false, but changed";
}
std::string timeOf(SmartPtr<FileSystemItem const> const& item, bool (FileSystemItem::*query)(FILETIME*) const) {
  FILETIME time;
  time.dwLowDateTime = time.dwHighDateTime = 7;
  bool const told = ((*item).*query)(&time);
  return (time.dwHighDateTime == 7) == !told ? textOf(told) : "false, but changed";
}
std::string statOf(SmartPtr<FileSystemItem const> const& item) {
  struct _stat64i32 status;
  return textOf(item->stat(status));
}

// Names in order, separated by blanks.
std::string joined(Texts names) {
  std::sort(names.begin(), names.end());
  std::string text;
  for (std::string const& name : names) text += (text.empty() ? "" : " ") + name;
  return text;
}
template <class Items>
std::string namesOf(Items const& items) {
  Texts names;
  for (auto const& item : items) names.push_back(shown(item->getName()));
  return joined(names);
}
template <class Iterator>
std::string namesOf(SmartPtr<Iterator> const& iterator) {
  Texts names;
  while (auto const item = iterator->getNext()) names.push_back(shown(item->getName()));
  return joined(names);
}
// Leaves the search in the middle.
template <class Iterator>
std::string firstOf(SmartPtr<Iterator> const& iterator) {
  auto const item = iterator->getNext();
  return item == nullptr ? "" : shown(item->getName());
}

String all() {
  return String(KVW("*"));
}

// Keeps nothing: a callback must not throw.
class SilentProgress final : public IProgress {
 public:
  void setProgress(double) override {}
};

// --- What faults lead to ---------------------------------------------------------------------------------------------

enum After { kBefore, kFirstLevel, kDone };

// What a failing call leads to.
struct Settled {
  char const* call;  // how the line of the log starts
  ulong32 error;     // 0: any
  std::string result;
  After after;  // the tree: as before, with the folder n in it, or as after success
  // Empty: none. {fault} stands for the text of the error, {any} at the end for any text.
  std::string message;
};

// Judges a fault by the first row that fits.
Judge by(std::vector<Settled> const& rows) {
  return [rows](Fault const& fault) {
    auto const row = std::find_if(rows.begin(), rows.end(), [&](Settled const& settled) {
      bool const isError = settled.error == 0 || settled.error == fault.error;
      return isError && fault.line.rfind(filled(settled.call, fault.root), 0) == 0;
    });
    ASSERT_NE(row, rows.end()) << "nothing is settled";
    EXPECT_EQ(fault.result, row->result);
    Tree after = row->after == kDone ? fault.done : fault.before;
    if (row->after == kFirstLevel) after["n/"];
    EXPECT_EQ(fault.after, after);
    if (row->message.empty()) {
      EXPECT_EQ(fault.messages, Texts());
      return;
    }
    ASSERT_EQ(fault.messages.size(), 1u);
    std::string const message = filled(row->message, fault.root);
    std::size_t const front = std::min(message.find("{fault}"), message.find("{any}"));
    EXPECT_EQ(fault.messages[0].substr(0, front), message.substr(0, front));
    if (message.find("{any}") == std::string::npos && front != std::string::npos) {
      EXPECT_EQ(fault.messages[0].substr(front), fault.reason);
    }
  };
}

Judge const kRefused = by({{"closeFile", 0, "true", kBefore, ""}, {"", 0, "false", kBefore, ""}});
Judge const kCopyFails = by({{"copyFile", 112, "221", kBefore, ""}, {"copyFile", 0, "18", kBefore, ""}});
Judge const kNullCopy = by({{"copyFile", 0, "null", kBefore, ""}});
Judge const kTouchFails = by({{"openFile", 0, "false", kBefore, ""},
                              {"setLastWriteTime", 0, "false", kBefore, ""},
                              {"", 0, "true", kDone, ""}});  // the flush does not count
Judge const kReadOnlyFails = by({{"getAttributes", 0, "168", kBefore, ""}, {"setAttributes", 0, "0", kBefore, ""}});

std::string const kNotCreated = "Failed to create the directory '{d}/n/'.\r\nWindows error message: ";
std::string const kNotCreatedBelow = "Failed to create the directory '{d}/n/m/'.\r\nWindows error message: ";

// Common to removals: an item that cannot be removed ends them with its own message; a search that fails finds nothing,
// so the directory is then not empty.
void judgeRemoval(Fault const& fault) {
  if (fault.call == "deleteFile" || fault.call == "removeDirectory") {
    EXPECT_EQ(fault.result, "false");
    EXPECT_EQ(fault.messages, Texts{fault.call == "deleteFile" ? notDeleted(fault.path(), fault.reason)
                                                               : notRemoved(fault.path(), fault.reason)});
  } else if (fault.call == "findClose") {
    EXPECT_EQ(fault.result, "true");
    EXPECT_EQ(fault.after, fault.done);
  } else if (fault.number == 1) {
    EXPECT_EQ(fault.result, "true") << "what cannot be asked counts as removed";
    EXPECT_EQ(fault.after, fault.before);
  }
  ASSERT_EQ(fault.messages.size(), fault.result == "true" ? 0u : 1u);
  if (fault.result == "false" && fault.call != "deleteFile") {
    std::string const start = "Failed to remove directory '";
    EXPECT_EQ(fault.messages[0].substr(0, start.size()), start);
  }
}
void judgeRemovalOfTree(Fault const& fault) {
  judgeRemoval(fault);
  if (fault.number > 1) EXPECT_EQ(fault.result, textOf(fault.after.count("s/") == 0));
}
void judgeRemovalOfContents(Fault const& fault) {
  judgeRemoval(fault);
  EXPECT_EQ(fault.after.count("s/"), 1u);
}
void judgeRemovalOfFiles(Fault const& fault) {
  judgeRemoval(fault);
  EXPECT_EQ(fault.result, textOf(fault.call != "deleteFile"));
}
void judgeRelativeRemoval(Fault const& fault) {
  bool const isLost = fault.call == "currentDirectory";
  EXPECT_EQ(fault.result, textOf(fault.call != "deleteFile"));
  EXPECT_EQ(fault.messages.size(), isLost || fault.call == "deleteFile" ? 1u : 0u);
  if (isLost) EXPECT_EQ(fault.messages, Texts{kNoCurrentDirectory});
}

// A search that fails gives fewer items, and no message.
void judgeSearch(std::string const& complete, Fault const& fault) {
  auto const split = [](std::string const& text) {
    std::istringstream words(text);
    Texts names;
    for (std::string name; words >> name;) names.push_back(name);
    return names;
  };
  Texts const whole = split(complete), part = split(fault.result);
  EXPECT_TRUE(std::includes(whole.begin(), whole.end(), part.begin(), part.end())) << fault.result;
  if (fault.call == "findClose") EXPECT_EQ(part, whole);
  if (fault.call == "findFirst" && fault.number == 1) EXPECT_LT(part.size(), whole.size());
  EXPECT_EQ(fault.messages, Texts());
  EXPECT_EQ(fault.after, fault.before);
}
Judge search(char const* complete) {
  return [complete](Fault const& fault) { judgeSearch(complete, fault); };
}

void judgeCopy(std::string const& target, bool recursive, bool overwrite, Fault const& fault) {
  int copied = 0;
  for (auto const& item : fault.before) {
    if (item.first.compare(0, 2, "s/") != 0 || item.first.back() == '/') continue;
    auto const found = fault.after.find(target + item.first.substr(1));
    copied += found != fault.after.end() && found->second == item.second;
  }
  EXPECT_EQ(fault.copied, copied);

  bool const makes = fault.call == "createDirectory", isRace = makes && fault.error == 183;
  EXPECT_EQ(fault.messages, makes && !isRace ? Texts{notCreated(fault.path(), fault.reason)} : Texts());
  if (makes) {
    EXPECT_EQ(fault.result, textOf(!recursive && (overwrite || isRace)));
  } else if (fault.call == "copyFile") {
    EXPECT_EQ(fault.result, "false");
  } else if (fault.call == "findClose") {
    EXPECT_EQ(fault.after, fault.done);
    EXPECT_EQ(fault.result, "true");
  } else if (fault.call == "getAttributes") {
    if (fault.number <= 2) EXPECT_EQ(fault.after, fault.before);
    if (fault.number <= 2) EXPECT_EQ(fault.result, "false");
    if (fault.result == "true") EXPECT_EQ(fault.after, fault.done);
  } else {
    EXPECT_EQ(fault.result, "true") << "a search that fails is one without items";
  }
}

// s into the empty u, or with `overwrite` over the filled t.
DiskOperation copyContents(char const* name, bool recursive, bool overwrite, Log const& calls) {
  char const* const target = overwrite ? "t" : "u";
  return {name, "true",
          [=](DiskItems& i) {
            i.progress.count = 0;
            return textOf(i.directory("s")->copyContents(i.directory(target), recursive, overwrite, &i.progress));
          },
          calls, [=](Fault const& fault) { judgeCopy(target, recursive, overwrite, fault); }};
}

// --- The table -------------------------------------------------------------------------------------------------------

std::vector<DiskOperation> const kQueries = {
    {"FileSystemItem::access: of a file",
     "true",
     [](DiskItems& i) { return textOf(i.file("one.txt")->access(6)); },
     {"getAttributes {D}/one.txt", "getAttributes {D}/one.txt", "openFile {D}/one.txt c0000000 7 3 0", "closeFile"},
     kRefused},
    {"FileSystemItem::access: of a directory",
     "true",
     [](DiskItems& i) { return textOf(i.directory("u")->access(4)); },
     {"getAttributes {D}/u/", "getAttributes {D}/u/", "openFile {D}/u/ 80000000 7 3 2000000", "closeFile"},
     kRefused},
    {"FileSystemItem::stat: of a file",
     {"true", "false"},
     [](DiskItems& i) { return statOf(i.file("one.txt")); },
     {"getStatus {d}/one.txt"},
     kRefused},
    {"FileSystemItem::stat: of a directory",
     {"true", "false"},
     [](DiskItems& i) { return statOf(i.directory("u")); },
     {"getStatus {d}/u"},
     kRefused},
    {"FileSystemItem::getCreationTime",
     "true",
     [](DiskItems& i) { return timeOf(i.file("one.txt"), &FileSystemItem::getCreationTime); },
     {"getInfo {D}/one.txt"},
     kRefused},
    {"FileSystemItem::getLastWriteTime",
     "true",
     [](DiskItems& i) { return timeOf(i.directory("u"), &FileSystemItem::getLastWriteTime); },
     {"getInfo {D}/u/"},
     kRefused},
    {"Directory::exists",
     "true",
     [](DiskItems& i) { return textOf(i.directory("u")->exists()); },
     {"getAttributes {D}/u/"},
     kRefused},
    {"Directory::isDirectory",
     "true",
     [](DiskItems& i) { return textOf(i.directory("u")->isDirectory()); },
     {"getAttributes {D}/u/"},
     kRefused},
    {"Directory::isEmpty",
     "true",
     [](DiskItems& i) { return textOf(i.directory("u")->isEmpty()); },
     {"isDirectoryEmpty {D}/u/"},
     kRefused},
    {"File::exists",
     "true",
     [](DiskItems& i) { return textOf(i.file("one.txt")->exists()); },
     {"getAttributes {D}/one.txt"},
     kRefused},
    {"File::getFileSize",
     "1",
     [](DiskItems& i) { return sizeOf(i.file("one.txt")); },
     {"getInfo {D}/one.txt"},
     kRefused},
    {"File::hasEqualSize",
     "true",
     [](DiskItems& i) { return textOf(i.file("one.txt")->hasEqualSize(i.file("two.txt"))); },
     {"getInfo {D}/one.txt", "getInfo {D}/two.txt"},
     kRefused},
    {"File::isReadOnly",
     {"false", "true"},
     [](DiskItems& i) { return textOf(i.file("one.txt")->isReadOnly()); },
     {"getAttributes {d}/one.txt"},
     by({{"getAttributes", 0, "true", kBefore, ""}})},
};

std::vector<DiskOperation> const kFiles = {
    {"File::copy(SmartPtr<File const>, bool)",
     "0",
     [](DiskItems& i) { return textOf(i.file("one.txt")->copy(i.file("new.txt"), false)); },
     {"copyFile {D}/one.txt -> {D}/new.txt 1"},
     kCopyFails},
    {"File::copy(SmartPtr<File const>, bool): over a file",
     "0",
     [](DiskItems& i) { return textOf(i.file("one.txt")->copy(i.file("two.txt"), true)); },
     {"copyFile {D}/one.txt -> {D}/two.txt 0"},
     kCopyFails},
    {"File::copy(SmartPtr<File const>, bool, std::shared_ptr<IProgress>)",
     "0",
     [](DiskItems& i) {
       return textOf(i.file("one.txt")->copy(i.file("two.txt"), true, std::make_shared<SilentProgress>()));
     },
     {"copyFile {D}/one.txt -> {D}/two.txt 0 progress"},
     kCopyFails},
    {"File::copy(SmartPtr<Directory const>, bool)",
     "{d}/u/one.txt",
     [](DiskItems& i) { return fullName(i.file("one.txt")->copy(i.directory("u"), false)); },
     {"copyFile {D}/one.txt -> {D}/u/one.txt 1"},
     kNullCopy},
    {"File::copy(SmartPtr<Directory const>, bool): of a read-only file",
     "{d}/u/locked.txt",
     [](DiskItems& i) { return fullName(i.file("locked.txt")->copy(i.directory("u"), true)); },
     {"copyFile {D}/locked.txt -> {D}/u/locked.txt 0"},
     kNullCopy},
    {"File::move",
     "true",
     [](DiskItems& i) { return textOf(i.file("one.txt")->move(i.file("new.txt"))); },
     {"moveFile {D}/one.txt -> {D}/new.txt"},
     by({{"moveFile", 0, "false", kBefore, notMoved("{d}/one.txt", "{d}/new.txt", "{fault}")}})},
    {"File::remove",
     "true",
     [](DiskItems& i) { return textOf(i.file("one.txt")->remove()); },
     {"getAttributes {D}/one.txt", "deleteFile {D}/one.txt"},
     by({{"getAttributes", 0, "true", kBefore, ""},
         {"deleteFile", 0, "false", kBefore, notDeleted("{d}/one.txt", "{fault}")}})},
    {"File::touch",
     "true",
     [](DiskItems& i) { return textOf(i.file("one.txt")->touch()); },
     {"openFile {D}/one.txt 40000000 3 4 80", "setLastWriteTime", "closeFile", "openDescriptor {d}/one.txt 2 40 180",
      "commitDescriptor", "closeDescriptor"},
     kTouchFails},
    {"File::touch: of a missing file",
     "true",
     [](DiskItems& i) { return textOf(i.file("new.txt")->touch()); },
     {"openFile {D}/new.txt 40000000 3 4 80", "closeFile", "openDescriptor {d}/new.txt 2 40 180", "commitDescriptor",
      "closeDescriptor"},
     kTouchFails},
    {"File::setAsReadOnly",
     {"0", "168"},
     [](DiskItems& i) { return textOf(i.file("one.txt")->setAsReadOnly()); },
     {"getAttributes {d}/one.txt", "setAttributes {d}/one.txt"},
     kReadOnlyFails},
    {"File::unsetAsReadOnly",
     {"0", "168"},
     [](DiskItems& i) { return textOf(i.file("locked.txt")->unsetAsReadOnly()); },
     {"getAttributes {d}/locked.txt", "setAttributes {d}/locked.txt"},
     kReadOnlyFails},
    {"File::setReadOnly",
     {"0", "168"},
     [](DiskItems& i) { return textOf(i.file("one.txt")->setReadOnly(true)); },
     {"getAttributes {d}/one.txt", "setAttributes {d}/one.txt"},
     kReadOnlyFails},
    {"File::openWithDefaultApp()",
     "true",
     [](DiskItems& i) { return textOf(i.file("one.txt")->openWithDefaultApp()); },
     {"open (null) {d}/one.txt %HOMEPATH% 1"}},
    {"File::openWithDefaultApp(String const&)",
     "true",
     [](DiskItems&) { return textOf(File::openWithDefaultApp(String(KVW("mailto:x")))); },
     {"open (null) mailto:x %HOMEPATH% 1"}},
    {"File::showInExplorer",
     "true",
     [](DiskItems& i) { return textOf(i.file("one.txt")->showInExplorer()); },
     {"getAttributes {D}/one.txt", "itemListFromPath {D}/one.txt", "showItem", "freeItemList"},
     kRefused},
    {"File::createParentDirectories",
     "true",
     [](DiskItems& i) { return textOf(i.file("n/m/f.txt")->createParentDirectories()); },
     {"getAttributes {D}/", "getAttributes {D}/n/", "getAttributes {D}/n/", "getAttributes {D}/",
      "createDirectory {D}/n/", "getAttributes {D}/n/m/", "getAttributes {D}/n/m/", "getAttributes {D}/n/",
      "createDirectory {D}/n/m/"},
     by({{"getAttributes", 0, "true", kDone, ""},
         {"createDirectory {D}/n/m/", 183, "true", kFirstLevel, ""},
         {"createDirectory {D}/n/m/", 0, "false", kFirstLevel, kNotCreatedBelow + "{fault}"},
         {"createDirectory {D}/n/", 183, "true", kDone, ""},  // the next level asks again
         {"createDirectory {D}/n/", 0, "false", kBefore, kNotCreated + "{fault}"}})},
};

// Removing and copying trees: first the directories in each, then the files.
std::vector<DiskOperation> const kDirectories = {
    {"Directory::create",
     "true",
     [](DiskItems& i) { return textOf(i.directory("n/m")->create()); },
     {"getAttributes {D}/n/m/", "getAttributes {D}/n/", "getAttributes {D}/", "createDirectory {D}/n/",
      "createDirectory {D}/n/m/"},
     by({{"getAttributes", 0, "true", kDone, ""},
         {"createDirectory {D}/n/m/", 183, "true", kFirstLevel, ""},
         {"createDirectory {D}/n/m/", 0, "false", kFirstLevel, kNotCreatedBelow + "{fault}"},
         {"createDirectory {D}/n/", 183, "false", kBefore, kNotCreatedBelow + "{any}"},
         {"createDirectory {D}/n/", 0, "false", kBefore, kNotCreated + "{fault}"}})},
    {"Directory::create: where it is there",
     "true",
     [](DiskItems& i) { return textOf(i.directory("s/sub")->create()); },
     {"getAttributes {D}/s/sub/"},
     by({{"getAttributes", 0, "true", kBefore, ""}})},
    {"Directory::create: relative",
     "true",
     [](DiskItems&) { return textOf(Directory::fromUTF8("n")->create()); },
     {"currentDirectory", "getAttributes {D}/n/", "getAttributes {D}/", "createDirectory {D}/n/"},
     by({{"currentDirectory", 0, "false", kBefore, kNoCurrentDirectory},
         {"createDirectory", 183, "true", kBefore, ""},
         {"createDirectory", 0, "false", kBefore, kNotCreated + "{fault}"},
         {"", 0, "true", kDone, ""}})},
    {"Directory::remove: recursive",
     {"true", "false"},
     [](DiskItems& i) { return textOf(i.directory("s")->remove(true)); },
     {"getAttributes {D}/s/", "getAttributes {D}/s/", "findFirst {d}/s/*", "getAttributes {D}/s/sub/",
      "getAttributes {D}/s/sub/", "findFirst {d}/s/sub/*", "findFirst {d}/s/sub/*", "getAttributes {D}/s/sub/c.txt",
      "deleteFile {D}/s/sub/c.txt", "removeDirectory {D}/s/sub/", "findFirst {d}/s/*", "getAttributes {D}/s/a.txt",
      "deleteFile {D}/s/a.txt", "removeDirectory {D}/s/"},
     judgeRemovalOfTree},
    {"Directory::remove: empty",
     "true",
     [](DiskItems& i) { return textOf(i.directory("u")->remove(false)); },
     {"getAttributes {D}/u/", "removeDirectory {D}/u/"},
     judgeRemoval},
    {"Directory::removeContents: recursive",
     "true",
     [](DiskItems& i) { return textOf(i.directory("s")->removeContents(true)); },
     {"getAttributes {D}/s/", "findFirst {d}/s/*", "getAttributes {D}/s/sub/", "getAttributes {D}/s/sub/",
      "findFirst {d}/s/sub/*", "findFirst {d}/s/sub/*", "getAttributes {D}/s/sub/c.txt", "deleteFile {D}/s/sub/c.txt",
      "removeDirectory {D}/s/sub/", "findFirst {d}/s/*", "getAttributes {D}/s/a.txt", "deleteFile {D}/s/a.txt"},
     judgeRemovalOfContents},
    {"Directory::removeContents: not recursive",
     "true",
     [](DiskItems& i) { return textOf(i.directory("s")->removeContents(false)); },
     {"getAttributes {D}/s/", "findFirst {d}/s/*", "getAttributes {D}/s/a.txt", "deleteFile {D}/s/a.txt"},
     judgeRemovalOfFiles},
    {"Directory::removeContents: relative",
     "true",
     [](DiskItems&) { return textOf(Directory::fromUTF8("s/sub")->removeContents(true)); },
     {"getAttributes s/sub/", "currentDirectory", "findFirst {d}/s/sub/*", "currentDirectory", "findFirst {d}/s/sub/*",
      "getAttributes {D}/s/sub/c.txt", "deleteFile {D}/s/sub/c.txt"},
     judgeRelativeRemoval},
    copyContents(
        "Directory::copyContents: recursive", true, false,
        {"getAttributes {D}/s/", "getAttributes {D}/u/", "findFirst {d}/s/*", "getAttributes {D}/u/sub/",
         "getAttributes {D}/u/", "createDirectory {D}/u/sub/", "getAttributes {D}/s/sub/", "getAttributes {D}/u/sub/",
         "findFirst {d}/s/sub/*", "findFirst {d}/s/sub/*", "copyFile {D}/s/sub/c.txt -> {D}/u/sub/c.txt 1",
         "findFirst {d}/s/*", "copyFile {D}/s/a.txt -> {D}/u/a.txt 1"}),
    copyContents(
        "Directory::copyContents: recursive, overwriting", true, true,
        {"getAttributes {D}/s/", "getAttributes {D}/t/", "findFirst {d}/s/*", "getAttributes {D}/t/sub/",
         "getAttributes {D}/t/", "createDirectory {D}/t/sub/", "getAttributes {D}/s/sub/", "getAttributes {D}/t/sub/",
         "findFirst {d}/s/sub/*", "findFirst {d}/s/sub/*", "copyFile {D}/s/sub/c.txt -> {D}/t/sub/c.txt 0",
         "findFirst {d}/s/*", "copyFile {D}/s/a.txt -> {D}/t/a.txt 0"}),
    copyContents("Directory::copyContents: one level", false, false,
                 {"getAttributes {D}/s/", "getAttributes {D}/u/", "findFirst {d}/s/*", "getAttributes {D}/u/sub/",
                  "getAttributes {D}/u/", "createDirectory {D}/u/sub/", "findFirst {d}/s/*",
                  "copyFile {D}/s/a.txt -> {D}/u/a.txt 1"}),
    copyContents("Directory::copyContents: one level, overwriting", false, true,
                 {"getAttributes {D}/s/", "getAttributes {D}/t/", "findFirst {d}/s/*", "getAttributes {D}/t/sub/",
                  "getAttributes {D}/t/", "createDirectory {D}/t/sub/", "findFirst {d}/s/*",
                  "copyFile {D}/s/a.txt -> {D}/t/a.txt 0"}),
    {"Directory::openInExplorer",
     "true",
     [](DiskItems& i) { return textOf(i.directory("s")->openInExplorer()); },
     {"getAttributes {D}/s/", "open open {D}/s/ (null) 10"},
     kRefused},
};

std::vector<DiskOperation> const kSearches = {
    {"Directory::findContents",
     {"a.txt sub", ""},
     [](DiskItems& i) { return namesOf(i.directory("s")->findContents(all())); },
     {"findFirst {d}/s/*"},
     search("a.txt sub")},
    {"Directory::findDirectories",
     {"sub", ""},
     [](DiskItems& i) { return namesOf(i.directory("s")->findDirectories(all())); },
     {"findFirst {d}/s/*"},
     search("sub")},
    {"Directory::findFiles",
     {"a.txt", ""},
     [](DiskItems& i) { return namesOf(i.directory("s")->findFiles(all())); },
     {"findFirst {d}/s/*"},
     search("a.txt")},
    {"FileSystemIterator::getNext",
     {"c.txt", ""},
     [](DiskItems& i) { return firstOf(i.directory("s/sub")->findContents(all())); },
     {"findFirst {d}/s/sub/*"},
     search("c.txt")},
    {"DirectoryIterator::getNext",
     {"sub", ""},
     [](DiskItems& i) { return firstOf(i.directory("s")->findDirectories(all())); },
     {"findFirst {d}/s/*"},
     search("sub")},
    {"FileIterator::getNext",
     {"a.txt", ""},
     [](DiskItems& i) { return firstOf(i.directory("s")->findFiles(all())); },
     {"findFirst {d}/s/*"},
     search("a.txt")},
    {"Directory::collectContents: one level",
     {"a.txt sub", ""},
     [](DiskItems& i) { return namesOf(i.directory("s")->collectContents(all(), false)); },
     {"findFirst {d}/s/*", "findFirst {d}/s/*"},
     search("a.txt sub")},
    {"Directory::collectContents: recursive",
     {"a.txt c.txt sub", ""},
     [](DiskItems& i) { return namesOf(i.directory("s")->collectContents(all(), true)); },
     {"findFirst {d}/s/*", "findFirst {d}/s/*", "findFirst {d}/s/*", "findFirst {d}/s/sub/*", "findFirst {d}/s/sub/*",
      "findFirst {d}/s/sub/*"},
     search("a.txt c.txt sub")},
    {"Directory::collectDirectories: recursive",
     {"sub", ""},
     [](DiskItems& i) { return namesOf(i.directory("s")->collectDirectories(all(), true)); },
     {"findFirst {d}/s/*", "findFirst {d}/s/*", "findFirst {d}/s/sub/*", "findFirst {d}/s/sub/*"},
     search("sub")},
    {"Directory::collectFiles: recursive",
     {"a.txt c.txt", ""},
     [](DiskItems& i) { return namesOf(i.directory("s")->collectFiles(all(), true)); },
     {"findFirst {d}/s/*", "findFirst {d}/s/*", "findFirst {d}/s/sub/*", "findFirst {d}/s/sub/*"},
     search("a.txt c.txt")},
};

}  // namespace

std::vector<DiskOperation> const& diskOperations() {
  static std::vector<DiskOperation> const all = [] {
    std::vector<DiskOperation> rows;
    for (auto const* part : {&kQueries, &kFiles, &kDirectories, &kSearches}) {
      rows.insert(rows.end(), part->begin(), part->end());
    }
    return rows;
  }();
  return all;
}

std::string filled(std::string text, wstring const& root) {
  std::replace(text.begin(), text.end(), '/', '\\');
  std::string const plain = narrow(root);
  for (auto const& value : {std::make_pair("{d}", plain), std::make_pair("{D}", R"(\\?\)" + plain)}) {
    for (std::size_t at; (at = text.find(value.first)) != std::string::npos;) text.replace(at, 3, value.second);
  }
  return text;
}

}  // namespace testing
}  // namespace KV_1_1
