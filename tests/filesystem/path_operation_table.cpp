// SPDX-License-Identifier: MIT
#include "tests/filesystem/path_operation_table.h"

#include <utility>

#include "kvbase/filesystem/file_collection_iterator.h"
#include "kvbase/filesystem/file_system_iterator.h"

namespace KV_1_1 {
namespace testing {

namespace {

using Items = PathItems const&;

template <class Path>
SmartPtr<Path> copyOf(SmartPtr<Path const> const& path) {
  return new Path(*path);
}

std::string resultText(bool value) {
  return value ? "true" : "false";
}
std::string resultText(FileSystemItem::ComparisonResult result) {
  return std::to_string(static_cast<int>(result));
}

// Iterators whose search is over: of a running one copies share the handle.
SmartPtr<FileSystemIterator> contents() {
  return SmartPtr<Directory>(new Directory)->findContents(String(KVW("*")));
}
SmartPtr<DirectoryIterator> directories() {
  return SmartPtr<Directory>(new Directory)->findDirectories(String(KVW("*")));
}
SmartPtr<FileIterator> files() {
  return SmartPtr<Directory>(new Directory)->findFiles(String(KVW("*")));
}
SmartPtr<FileCollectionIterator> collection(Items i) {
  return FileCollectionIterator::create({i.file, i.otherFile});
}

template <class Iterator>
std::string nextOf(SmartPtr<Iterator> const& iterator) {
  return described(iterator->getNext());
}
template <>
std::string nextOf(SmartPtr<FileSystemIterator> const& iterator) {
  return resultText(iterator->getNext() == nullptr);
}

char const* const kNone = "";
char const* const kCurrent = "currentDirectory currentDirectoryOfDrive";
char const* const kSearch = "currentDirectory findFirst";

}  // namespace

std::vector<PathOperation> const& pathOperations() {
  static std::vector<PathOperation> const all = {
      {"FileSystemItem::reportError", kNone, [](Items i) { return FileSystemItem::reportError(i.text), "done"; }},

      {"Directory::Directory()", kNone, [](Items) { return described(SmartPtr<Directory>(new Directory)); }},
      {"Directory::Directory(Directory const&)", kNone, [](Items i) { return described(copyOf(i.directory)); }},
      {"Directory::operator=", kNone,
       [](Items i) {
         SmartPtr<Directory> const target = copyOf(i.otherDirectory);
         return described(&(*target = *i.directory));
       }},
      {"Directory::fromString", kNone, [](Items i) { return described(Directory::fromString(i.text)); }},
      {"Directory::fromUTF8(char const*)", kNone,
       [](Items i) { return described(Directory::fromUTF8(shown(i.text).c_str())); }},
      {"Directory::fromUTF8(std::string const&)", kNone,
       [](Items i) { return described(Directory::fromUTF8(shown(i.text))); }},
      {"Directory::getFullName", kNone, [](Items i) { return shown(i.directory->getFullName()); }},
      {"Directory::getFullNameUnicode", kNone, [](Items i) { return shown(i.directory->getFullNameUnicode()); }},
      {"Directory::getFullNameUnix", kNone, [](Items i) { return shown(i.directory->getFullNameUnix()); }},
      {"Directory::getName", kNone, [](Items i) { return shown(i.directory->getName()); }},
      {"Directory::setName", kNone,
       [](Items i) {
         SmartPtr<Directory> const copy = copyOf(i.directory);
         copy->setName(i.level);
         return described(copy);
       }},
      {"Directory::getRoot", kNone, [](Items i) { return shown(i.directory->getRoot()); }},
      {"Directory::isAbsolute", kNone, [](Items i) { return resultText(i.directory->isAbsolute()); }},
      {"Directory::getParent", kNone, [](Items i) { return described(i.directory->getParent()); }},
      {"Directory::appendLevel", kNone, [](Items i) { return described(i.directory->appendLevel(i.level)); }},
      {"Directory::appendPath", kNone, [](Items i) { return described(i.directory->appendPath(*i.otherDirectory)); }},
      {"Directory::combine(SmartPtr<Directory const> const&)", kNone,
       [](Items i) { return described(i.directory->combine(i.otherDirectory)); }},
      {"Directory::combine(SmartPtr<Directory const> const&): null", kNone,
       [](Items i) { return described(i.directory->combine(SmartPtr<Directory const>())); }},
      {"Directory::combine(SmartPtr<File const> const&)", kNone,
       [](Items i) { return described(i.directory->combine(i.file)); }},
      {"Directory::combine(SmartPtr<File const> const&): null", kNone,
       [](Items i) { return described(i.directory->combine(SmartPtr<File const>())); }},
      {"Directory::makeAbsolute", kCurrent, [](Items i) { return described(i.directory->makeAbsolute()); }},
      {"Directory::makeRelative", kCurrent,
       [](Items i) { return described(i.directory->makeRelative(i.otherDirectory)); }},
      {"Directory::contains: a directory", kNone,
       [](Items i) { return resultText(i.directory->contains(*i.otherDirectory)); }},
      {"Directory::contains: a file", kNone, [](Items i) { return resultText(i.directory->contains(*i.file)); }},
      {"Directory::equals", kCurrent, [](Items i) { return resultText(i.directory->equals(i.otherDirectory)); }},
      {"Directory::equals: null", kNone,
       [](Items i) { return resultText(i.directory->equals(SmartPtr<Directory const>())); }},

      {"File::File", kNone, [](Items i) { return described(copyOf(i.file)); }},
      {"File::operator=", kNone,
       [](Items i) {
         SmartPtr<File> const target = copyOf(i.otherFile);
         return described(&(*target = *i.file));
       }},
      {"File::fromString(String const&)", kNone, [](Items i) { return described(File::fromString(i.text)); }},
      {"File::fromString(Directory const&, String const&)", kNone,
       [](Items i) { return described(File::fromString(*i.directory, i.level)); }},
      {"File::getFullName", kNone, [](Items i) { return shown(i.file->getFullName()); }},
      {"File::getFullNameUnicode", kNone, [](Items i) { return shown(i.file->getFullNameUnicode()); }},
      {"File::getFullNameUnix", kNone, [](Items i) { return shown(i.file->getFullNameUnix()); }},
      {"File::getName", kNone, [](Items i) { return shown(i.file->getName()); }},
      {"File::setName", kNone,
       [](Items i) {
         SmartPtr<File> const copy = copyOf(i.file);
         copy->setName(i.level);
         return described(copy);
       }},
      {"File::getBaseName", kNone, [](Items i) { return shown(i.file->getBaseName()); }},
      {"File::getExtension", kNone, [](Items i) { return shown(i.file->getExtension()); }},
      {"File::getDirectory", kNone, [](Items i) { return described(i.file->getDirectory()); }},
      {"File::isAbsolute", kNone, [](Items i) { return resultText(i.file->isAbsolute()); }},
      {"File::replaceExtension", kNone, [](Items i) { return described(i.file->replaceExtension(i.level)); }},
      {"File::makeAbsolute", kCurrent, [](Items i) { return described(i.otherFile->makeAbsolute()); }},
      {"File::makeRelative", kCurrent, [](Items i) { return described(i.file->makeRelative(i.directory)); }},
      {"File::equals", kCurrent, [](Items i) { return resultText(i.file->equals(i.otherFile)); }},
      {"File::equals: null", kNone, [](Items i) { return resultText(i.file->equals(SmartPtr<File const>())); }},

      {"FileSystemIterator::FileSystemIterator", kSearch,
       [](Items) { return nextOf(SmartPtr<FileSystemIterator>(new FileSystemIterator(*contents()))); }},
      {"FileSystemIterator::operator=", kSearch,
       [](Items) {
         auto const target = contents();
         *target = *contents();
         return nextOf(target);
       }},
      {"DirectoryIterator::DirectoryIterator(DirectoryIterator const&)", kSearch,
       [](Items) { return nextOf(SmartPtr<DirectoryIterator>(new DirectoryIterator(*directories()))); }},
      {"DirectoryIterator::DirectoryIterator(DirectoryIterator&&)", kSearch,
       [](Items) { return nextOf(SmartPtr<DirectoryIterator>(new DirectoryIterator(std::move(*directories())))); }},
      {"DirectoryIterator::operator=(DirectoryIterator const&)", kSearch,
       [](Items) {
         auto const target = directories();
         *target = *directories();
         return nextOf(target);
       }},
      {"DirectoryIterator::operator=(DirectoryIterator&&)", kSearch,
       [](Items) {
         auto const target = directories();
         *target = std::move(*directories());
         return nextOf(target);
       }},
      {"FileIterator::FileIterator(FileIterator const&)", kSearch,
       [](Items) { return nextOf(SmartPtr<FileIterator>(new FileIterator(*files()))); }},
      {"FileIterator::FileIterator(FileIterator&&)", kSearch,
       [](Items) { return nextOf(SmartPtr<FileIterator>(new FileIterator(std::move(*files())))); }},
      {"FileIterator::operator=(FileIterator const&)", kSearch,
       [](Items) {
         auto const target = files();
         *target = *files();
         return nextOf(target);
       }},
      {"FileIterator::operator=(FileIterator&&)", kSearch,
       [](Items) {
         auto const target = files();
         *target = std::move(*files());
         return nextOf(target);
       }},
      {"FileCollectionIterator::create", kSearch, [](Items i) { return resultText(collection(i) != nullptr); }},
      {"FileCollectionIterator::getNext", kSearch, [](Items i) { return nextOf(collection(i)); }},
      {"FileCollectionIterator::FileCollectionIterator", kSearch,
       [](Items i) { return nextOf(SmartPtr<FileCollectionIterator>(new FileCollectionIterator(*collection(i)))); }},
      {"FileCollectionIterator::operator=", kSearch,
       [](Items i) {
         auto const target = FileCollectionIterator::create({});
         *target = *collection(i);
         return nextOf(target);
       }},
  };
  return all;
}

}  // namespace testing
}  // namespace KV_1_1
