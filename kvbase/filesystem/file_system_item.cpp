// SPDX-License-Identifier: MIT
#include "kvbase/filesystem/file_system_item.h"

#include "kvbase/core/internal/library_class.h"
#include "kvbase/filesystem/internal/error_sink.h"

namespace KV_1_1 {

void (*errorSink)(String const& message) = nullptr;

FileSystemItem::~FileSystemItem() = default;

void FileSystemItem::reportError(String const& message) {
  if (errorSink != nullptr) errorSink(message);
}

FileSystemItem::ClassCreator::~ClassCreator() = default;

mZClass const* FileSystemItem::getClassType() const {
  return Class();
}

mZClass const* FileSystemItem::Class() {
  static LibraryClass<ClassCreator> record(KVW("FileSystemItem"), &BaseNode::Class);
  return record.get();
}

void FileSystemItem::initStatics() {}

void FileSystemItem::clearStatics() {}

}  // namespace KV_1_1
