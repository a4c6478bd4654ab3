// SPDX-License-Identifier: MIT
#include "kvbase/filesystem/file_system_item.h"

#include "kvbase/filesystem/internal/error_sink.h"
#include "kvbase/modules/client_module.h"

namespace KV_1_1 {

static_assert(sizeof(FileSystemItem) == sizeof(BaseNode), "the mix-in takes no room");

void (*errorSink)(String const& message) = nullptr;

FileSystemItem::~FileSystemItem() = default;

void FileSystemItem::reportError(String const& message) {
  if (errorSink != nullptr) errorSink(message);
}

KVBASE_REGISTER_CLASS(FileSystemItem, BaseNode)

}  // namespace KV_1_1
