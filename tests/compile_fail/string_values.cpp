// SPDX-License-Identifier: MIT
//
// What must not be taken for a number or a truth value when it is appended to a String or taken from one. Each case
// gives an error that matches its expectation.
#include <string>

#include "kvbase/kvbase.h"

using KV_1_1::String;

struct Place {
  int x;
};

void use(String text, Place* point, void (*function)()) {
  // What is the library's own goes in, also where it could be written to.
  static KV_1_1::wchar units[] = {KVW('u'), 0};
  text += units;
  text << units << KVW('u') << KVW("text") << text << true << 'c' << 1 << 1u << 1L << 1UL << 1LL << 1ULL << 1.0f << 1.0;

#ifdef CASE_NARROW_TEXT_ADDED
  // expect: deleted
  text += "narrow";
#endif

#ifdef CASE_NARROW_TEXT_SHIFTED
  // expect: no match for|deleted|invalid operands
  text << "narrow";
#endif

#ifdef CASE_STANDARD_STRING_ADDED
  // expect: no match for|no viable overloaded|ambiguous
  text += std::string("narrow");
#endif

#ifdef CASE_UNTYPED_POINTER_ADDED
  // expect: deleted
  text += static_cast<void const*>(point);
#endif

#ifdef CASE_UNTYPED_POINTER_SHIFTED
  // expect: no match for|deleted|invalid operands
  text << static_cast<void const*>(point);
#endif

#ifdef CASE_OBJECT_POINTER_ADDED
  // expect: deleted
  text += point;
#endif

#ifdef CASE_OBJECT_POINTER_SHIFTED
  // expect: no match for|deleted|invalid operands
  text << point;
#endif

#ifdef CASE_FUNCTION_POINTER_ADDED
  // expect: deleted
  text += function;
#endif

#ifdef CASE_POINTER_TO_STRING_ADDED
  // expect: deleted
  text += &text;
#endif

#ifdef CASE_POINTER_TO_MEMBER_ADDED
  // expect: deleted|no match for|no viable overloaded
  text += &Place::x;
#endif

#ifdef CASE_VOLATILE_UNITS_ADDED
  // expect: deleted|no match for|no viable overloaded
  text += static_cast<KV_1_1::wchar volatile*>(units);
#endif

#ifdef CASE_UNIT_OF_32_BITS_ADDED
  // expect: deleted
  text += U'c';
#endif

#ifdef CASE_UNIT_OF_32_BITS_SHIFTED
  // expect: no match for|deleted|invalid operands
  text << U'c';
#endif

#ifdef CASE_TEXT_OF_32_BITS_ADDED
  // expect: deleted
  text += U"text";
#endif

#ifdef CASE_FOREIGN_UNIT_ADDED
  // expect: deleted
  text += KV_1_1::ForeignUnit();
#endif

#ifdef CASE_FOREIGN_UNIT_SHIFTED
  // expect: no match for|deleted|invalid operands
  text << KV_1_1::ForeignUnit();
#endif

#ifdef CASE_FOREIGN_TEXT_ADDED
  // expect: deleted
  text += static_cast<KV_1_1::ForeignUnit const*>(nullptr);
#endif

#ifdef CASE_FOREIGN_TEXT_SHIFTED
  // expect: no match for|deleted|invalid operands
  text << static_cast<KV_1_1::ForeignUnit const*>(nullptr);
#endif

#ifdef CASE_A_CHAR_TAKEN
  // expect: no match for|invalid operands|cannot bind|binding reference|no viable
  char c;
  text >> c;
#endif

#ifdef CASE_A_FOREIGN_UNIT_TAKEN
  // expect: no match for|invalid operands|cannot bind|binding reference|no viable
  KV_1_1::ForeignUnit foreign;
  text >> foreign;
#endif

#ifdef CASE_A_UNIT_OF_32_BITS_TAKEN
  // expect: no match for|invalid operands|cannot bind|binding reference|no viable
  char32_t unit;
  text >> unit;
#endif

#ifdef CASE_A_CONSTANT_TAKEN
  // expect: no match for|invalid operands|cannot bind|binding reference|no viable
  int const constant = 0;
  text >> constant;
#endif

#ifdef CASE_FROM_A_CONSTANT
  // expect: no match for|invalid operands|discards qualifiers|no viable
  int value = 0;
  String::EMPTY >> value;
#endif
}
