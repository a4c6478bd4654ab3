// SPDX-License-Identifier: MIT
//
// Texts of the greatest length, without their memory: only the stored length of a short text says INT_MAX. What would
// make a longer text of it throws before it reads a unit or asks for memory.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <new>

#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/strings/internal/string_access.h"
#include "kvbase/strings/kv_string.h"
#include "tests/support/allocation_failure.h"

namespace KV_1_1 {
namespace testing {
namespace {

String greatestText() {
  String text(KVW("a"));
  int const length = INT_MAX;
  char* const payload = reinterpret_cast<char*>(StringAccess::payload(text));
  std::memcpy(payload + sizeof(InterlockedCounter), &length, sizeof length);
  return text;
}

struct LengthRow {
  char const* name;
  void (*lengthen)(String const& greatest);
};

void appendTo(String const& greatest, void (*append)(String&)) {
  String copy(greatest);
  append(copy);
}

LengthRow const kRows[] = {
    {"text and unit", [](String const& greatest) { greatest + KVW('x'); }},
    {"unit and text", [](String const& greatest) { KVW('x') + greatest; }},
    {"text and pointer", [](String const& greatest) { greatest + KVW("x"); }},
    {"pointer and text", [](String const& greatest) { KVW("x") + greatest; }},
    {"two greatest texts", [](String const& greatest) { greatest + greatest; }},
    {"+= unit", [](String const& greatest) { appendTo(greatest, [](String& text) { text += KVW('x'); }); }},
    {"+= text", [](String const& greatest) { appendTo(greatest, [](String& text) { text += KVW("x"); }); }},
    {"+= itself", [](String const& greatest) { appendTo(greatest, [](String& text) { text += text; }); }},
    {"+= int", [](String const& greatest) { appendTo(greatest, [](String& text) { text += 5; }); }},
    {"write", [](String const& greatest) { appendTo(greatest, [](String& text) { text.write(KVW("x"), 1); }); }},
    {"concatenation",
     [](String const& greatest) { StringAccess::payload(greatest)->concatenation(KVW("x"), -1)->unref(); }},
};

TEST(GreatestLength, NothingIsReadOrAllocatedForALongerText) {
  for (LengthRow const& row : kRows) {
    SCOPED_TRACE(row.name);
    String const greatest = greatestText();
    bool threw = false;
    AllocationFailure scope(0);
    try {
      row.lengthen(greatest);
    } catch (std::bad_alloc const&) {
      threw = true;
    }
    scope.end();
    EXPECT_TRUE(threw);
    EXPECT_EQ(scope.allocations(), 0);
    EXPECT_EQ(greatest.length(), INT_MAX);
  }
}

TEST(GreatestLength, NothingAddedSharesTheText) {
  String const greatest = greatestText();
  EXPECT_EQ(StringAccess::payload(greatest + String::NIL), StringAccess::payload(greatest));
  EXPECT_EQ(StringAccess::payload(String::NIL + greatest), StringAccess::payload(greatest));
}

TEST(GreatestLength, NarrowTextIsEmpty) {
  String const greatest = greatestText();
  EXPECT_STREQ(greatest.stringAnsi(), "");
  EXPECT_STREQ(greatest.stringUTF8(), "");
}

TEST(GreatestLength, PathAroundItThrows) {
  SmartPtr<File const> const file = File::fromString(KVW("C:\\scans\\a"))->replaceExtension(greatestText());
  EXPECT_THROW(file->getName(), std::bad_alloc);
  EXPECT_THROW(file->getFullName(), std::bad_alloc);
  EXPECT_THROW(file->getFullNameUnicode(), std::bad_alloc);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
