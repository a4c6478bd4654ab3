// SPDX-License-Identifier: MIT
//
// Path operations that do not access the disk. Of the peers only Poco::Path stores the parts of a path; the others store
// one text, as Directory does.
#include <filesystem>
#include <string>

#include "benchmarks/bare_path.h"
#include "benchmarks/support.h"

namespace KV_1_1 {
namespace bench {

namespace {

using FilePtr = SmartPtr<File>;
using DirectoryPtr = SmartPtr<Directory const>;

// With slashes, because all peers parse them.
constexpr char kShort[] = "C:/a/b/../c/file.txt";
constexpr char kDeep[] = "C:/scans/2026/project/../site/north/tower/level3/room12/raw/points/file.txt";

String text(std::string const& path) {
  return String(UTF8Interface(path.c_str()));
}

void addParsing(char const* name, std::string const& path) {
  Row(name)
      .addPath("KVBase", [a = text(path)] { return File::fromString(a)->getFullName(); })
      .addPath("floor", [a = plain(path)] { return BareFile::parse(a)->fullName(); })
      .addPath("std", [a = plain(path)] { return std::filesystem::path(a).lexically_normal().string<wchar>(); })
      .addPath(PEER("Poco", [path] { return bench::plain(pocoPath(path)); }))
      .addPath(PEER("QDir::cleanPath", [a = QString::fromStdString(path)] { return QDir::cleanPath(a); }))
      .addPath(
          PEER("QFileInfo", [a = QString::fromStdString(path)] { return QFileInfo(QDir::cleanPath(a)).filePath(); }));
}

void addTexts(char const* name, std::string const& path) {
  std::filesystem::path const normal = std::filesystem::path(path).lexically_normal();
  Row(name)
      .addPath("KVBase", [file = File::fromString(text(path))] { return file->getFullName(); })
      .addPath("std", [normal] { return normal.string<wchar>(); })
      .addPath(PEER("Poco", [a = pocoPath(path)] { return bench::plain(a); }));
}

void addRelative() {
  std::string const base = "/scans/2026/project/site/north/tower/level3/room12/raw/points";
  std::string const other = "/scans/2026/project/site/north/bridge/deck/west/raw";
  Row("paths: relative path, 9 and 10 levels, object + text")
      .addPath(
          "KVBase",
          [from = DirectoryPtr(Directory::fromString(text(base))),
           to = FilePtr(File::fromString(text(other + "/file.txt")))] { return to->makeRelative(from)->getFullName(); })
      .addPath("std",
               [from = std::filesystem::path(base), to = std::filesystem::path(other + "/file.txt")] {
                 return to.lexically_relative(from).string<wchar>();
               })
      .addPath(PEER("QDir", [from = QDir(QString::fromStdString(base)),
                             to = QString::fromStdString(other + "/file.txt")] { return from.relativeFilePath(to); }));
}

// The timed work returns the new object. Its text is built outside the timing, to compare the results.
template <class Object>
struct NewPath {
  Object object;
};
u16string plain(NewPath<DirectoryPtr> const& path) {
  u16string const text = bench::plain(path.object->getFullName());
  return text.substr(0, text.size() - 1);
}
u16string plain(NewPath<std::filesystem::path> const& path) {
  return path.object.string<wchar>();
}
template <class Path>
u16string plain(NewPath<Path> const& path) {
  return bench::plain(path.object);
}

void addAppending() {
  std::string const path = "C:/scans/2026/project/site/north/tower/level3/room12/raw";
  Row("paths: append a level to 9")
      .addPath("KVBase", [directory = DirectoryPtr(Directory::fromString(text(path))),
                          level = text("points")] { return NewPath<DirectoryPtr>{directory->appendLevel(level)}; })
      .addPath("std", [directory = std::filesystem::path(path),
                       level = u16string(KVW("points"))] { return NewPath<std::filesystem::path>{directory / level}; })
      .addPath(
          PEER("Poco", [directory = pocoPath(path),
                        level = std::string("points")] { return NewPath<Poco::Path>{Poco::Path(directory, level)}; }))
      .addPath(PEER("QDir", [directory = QDir(QString::fromStdString(path)), level = QString("points")] {
        return directory.filePath(level);
      }));
}

void addEquality() {
  std::string const lower = "C:/scans/2026/project/site/north/tower/level3/room12/raw";
  std::string const upper = "C:/SCANS/2026/PROJECT/SITE/NORTH/TOWER/LEVEL3/ROOM12/RAW";
  Row("paths: equals ignoring case, 9 levels")
      .add("KVBase",
           [a = DirectoryPtr(Directory::fromString(text(lower))),
            b = DirectoryPtr(Directory::fromString(text(upper)))] { return a->equals(b) == FileSystemItem::Equal; })
      .add(WINDOWS_PEER("_wcsicmp", [a = bench::plain(lower),
                                     b = bench::plain(upper)] { return _wcsicmp(a.c_str(), b.c_str()) == 0; }))
      .add(PEER("QString", [a = QString::fromStdString(lower),
                            b = QString::fromStdString(upper)] { return a.compare(b, Qt::CaseInsensitive) == 0; }))
      .add(PEER("UnicodeString",
                [a = make<UnicodeString>(bench::plain(lower)), b = make<UnicodeString>(bench::plain(upper))] {
                  return a.caseCompare(b, U_FOLD_CASE_DEFAULT) == 0;
                }));
}

}  // namespace

void addPaths() {
  addParsing("paths: parse and text, short", kShort);
  addParsing("paths: parse and text, 10 levels", kDeep);
  addTexts("paths: text from fields, short", kShort);
  addTexts("paths: text from fields, 10 levels", kDeep);
  addRelative();
  addAppending();
  addEquality();
}

}  // namespace bench
}  // namespace KV_1_1
