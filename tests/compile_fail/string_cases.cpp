// SPDX-License-Identifier: MIT
//
// Foreign texts and values that must not convert to a String, and a String that must not convert to something else.
#include "kvbase/kvbase.h"

using KV_1_1::ForeignUnit;
using KV_1_1::String;

struct Point {
  double x, y;
};

void use(String text, Point const* point, ForeignUnit const* foreign, char32_t const* wide) {
  text.printf(KVW("%ls %p %s"), text, static_cast<void const*>(point), KVW("text"));
  static_cast<void>(foreign);
  static_cast<void>(wide);

#ifdef CASE_CONDITION
  // expect: deleted
  if (text) use(text, point, foreign, wide);
#endif

#ifdef CASE_PRINTF_OF_A_STRUCT
  // expect: printf takes numbers, Strings and texts
  text.printf(KVW("%d"), *point);
#endif

#ifdef CASE_PRINTF_OF_FOREIGN_TEXT
  // expect: printf takes numbers, Strings and texts
  text.printf(KVW("%ls"), foreign);
#endif

#ifdef CASE_PRINTF_OF_WIDER_TEXT
  // expect: printf takes numbers, Strings and texts
  text.printf(KVW("%ls"), wide);
#endif

#ifdef CASE_PRINTF_OF_A_POINTER_TO_A_STRUCT
  // expect: printf takes numbers, Strings and texts
  text.printf(KVW("%p"), point);
#endif

#ifdef CASE_FOREIGN_TEXT
  // expect: no matching|invalid conversion
  String const other(foreign);
#endif

#ifdef CASE_APPENDING_FOREIGN_TEXT
  // expect: deleted
  text += foreign;
#endif

#ifdef CASE_APPENDING_A_FOREIGN_UNIT
  // expect: deleted
  text += *foreign;
#endif

#ifdef CASE_ASSIGNMENT_OF_A_BUFFER
  // expect: deleted
  text.buffer(5, false) = text.buffer(5, false);
#endif
}
