// SPDX-License-Identifier: MIT
//
// The whole public interface of KVBase in one include.
#pragma once

#include "kvbase/core/base_node.h"
#include "kvbase/core/class_record.h"
#include "kvbase/core/interlocked_counter.h"
#include "kvbase/core/smart_ptr.h"
#include "kvbase/diagnostics/windows_error.h"
#include "kvbase/export.h"
#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/filesystem/file_collection_iterator.h"
#include "kvbase/filesystem/file_system_item.h"
#include "kvbase/filesystem/file_system_iterator.h"
#include "kvbase/filesystem/progress.h"
#include "kvbase/languages/language_selection.h"
#include "kvbase/languages/translation.h"
#include "kvbase/modules/module.h"
#include "kvbase/modules/symbol_table.h"
#include "kvbase/platform/types.h"
#include "kvbase/strings/code_page.h"
#include "kvbase/strings/kv_string.h"
#include "kvbase/strings/string_buffer.h"
#include "kvbase/strings/string_less.h"
#include "kvbase/strings/string_val.h"
#include "kvbase/text_unit.h"
