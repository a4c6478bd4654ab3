// SPDX-License-Identifier: MIT
//
// The whole public interface of KVBase in one include.
//
// Comments in all headers use these words:
//   NIL        a String without a text; EMPTY and other empty texts are something else (kv_string.h)
//   unit       a UTF-16 code unit, of 16 bits on every system; lengths and positions count them (text_unit.h)
//   REQUIRES:  a precondition that is not checked: without it the behaviour is undefined
//   COMPAT:    behaviour that looks wrong and is kept on purpose, because programs rely on it
//   a message  a text for FileSystemItem::reportError; the caller sees the result alone
#pragma once

#include "kvbase/core/base_node.h"
#include "kvbase/core/class_record.h"
#include "kvbase/core/interlocked_counter.h"
#include "kvbase/core/smart_ptr.h"
#include "kvbase/diagnostics/assertion.h"
#include "kvbase/diagnostics/output_debug_parentheses_scope.h"
#include "kvbase/diagnostics/stack_walker.h"
#include "kvbase/diagnostics/vg_stack_walker.h"
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
#include "kvbase/modules/scoped_resource_domain.h"
#include "kvbase/modules/symbol_table.h"
#include "kvbase/platform/types.h"
#include "kvbase/records/bounding_box_traits.h"
#include "kvbase/records/info_string_map.h"
#include "kvbase/records/observer_info.h"
#include "kvbase/records/scan_point.h"
#include "kvbase/strings/code_page.h"
#include "kvbase/strings/kv_string.h"
#include "kvbase/strings/string_buffer.h"
#include "kvbase/strings/string_less.h"
#include "kvbase/strings/string_resource.h"
#include "kvbase/strings/string_val.h"
#include "kvbase/text_unit.h"
