// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/text/code_page_converter.h"

#include <dlfcn.h>
#include <stdio.h>
#include <string.h>
#include <unicode/ucnv_cb.h>

#include <algorithm>

#include "kvbase/platform/linux/small_buffer.h"

namespace KV_1_1 {
namespace platform {

namespace {

// Code pages that ICU does not have as "windows-<number>".
struct NamedPage {
  unsigned int number;
  char const* name;
};
constexpr NamedPage kNamedPages[] = {
    {37, "cp37"},           {500, "cp500"},         {860, "cp860"},
    {863, "cp863"},         {864, "cp864"},         {865, "cp865"},
    {870, "cp870"},         {875, "cp875"},         {1026, "cp1026"},
    {1047, "cp1047"},       {1140, "cp1140"},       {1141, "cp1141"},
    {1142, "cp1142"},       {1143, "cp1143"},       {1144, "cp1144"},
    {1145, "cp1145"},       {1146, "cp1146"},       {1147, "cp1147"},
    {1148, "cp1148"},       {1149, "cp1149"},       {20273, "ibm-273"},
    {20277, "ibm-277"},     {20278, "ibm-278"},     {20280, "ibm-280"},
    {20284, "ibm-284"},     {20285, "ibm-285"},     {20290, "ibm-290"},
    {20297, "ibm-297"},     {20420, "ibm-420"},     {20424, "ibm-424"},

    {20838, "ibm-838"},     {20871, "ibm-871"},     {20924, "ibm-1047"},
    {20932, "EUC-JP"},      {20936, "GB2312"},      {20949, "KS_C_5601-1987"},
    {21025, "ibm-1025"},    {28591, "ISO-8859-1"},  {38598, "ISO-8859-8-I"},
    {50220, "ISO-2022-JP"}, {50221, "ISO-2022-JP"}, {50222, "ISO-2022-JP"},
    {50225, "ISO-2022-KR"}, {51932, "EUC-JP"},      {51936, "GB2312"},
    {52936, "HZ-GB-2312"},  {65000, "UTF-7"},
};

// Keeps ICU loaded until the process ends. It never frees the tables that it has read, so a library that is loaded, used
// and unloaded again and again would leave them behind each time if ICU came and went with it.
void keepIcuLoaded() {
  static bool const done = [] {
    Dl_info icu;
    if (dladdr(reinterpret_cast<void const*>(&ucnv_open), &icu) != 0) {
      dlopen(icu.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
    }
    return true;
  }();
  static_cast<void>(done);
}

// Writes the substitute for any character that the page does not have: ICU's own callback leaves out those that nobody
// would see, such as U+200B.
void writeSubstitute(void const*, UConverterFromUnicodeArgs* arguments, UChar const*, int32_t, UChar32,
                     UConverterCallbackReason reason, UErrorCode* error) {
  if (reason > UCNV_IRREGULAR) return;
  *error = U_ZERO_ERROR;
  ucnv_cbFromUWriteSub(arguments, 0, error);
}

bool isUtf16(UConverter* converter) {
  UConverterType const type = ucnv_getType(converter);
  return type == UCNV_UTF16_BigEndian || type == UCNV_UTF16_LittleEndian || type == UCNV_UTF16;
}

int decoded(UConverter* converter, char const* bytes, int size, wchar* units, int capacity) {
  UErrorCode error = U_ZERO_ERROR;
  int const n = ucnv_toUChars(converter, units, capacity, bytes, size, &error);
  return U_SUCCESS(error) || (error == U_BUFFER_OVERFLOW_ERROR && capacity == 0) ? n : 0;
}

int encoded(UConverter* converter, wchar const* units, int size, char* bytes, int capacity) {
  UErrorCode error = U_ZERO_ERROR;
  int const n = ucnv_fromUChars(converter, bytes, capacity, units, size, &error);
  return U_SUCCESS(error) || (error == U_BUFFER_OVERFLOW_ERROR && capacity == 0) ? n : 0;
}

// ICU's tables of IBM origin exchange three control characters; Windows does not.
bool rotatesControls(UConverter* converter) {
  wchar unit = 0;
  decoded(converter, "\x1A", 1, &unit, 1);
  return unit == 0x1C;
}

wchar rotatedBack(wchar unit) {
  return unit == 0x1C ? 0x1A : unit == 0x7F ? 0x1C : unit == 0x1A ? 0x7F : unit;
}

wchar rotated(wchar unit) {
  return unit == 0x1A ? 0x1C : unit == 0x1C ? 0x7F : unit == 0x7F ? 0x1A : unit;
}

}  // namespace

CodePageConverter::CodePageConverter(unsigned int codePage) {
  char name[24];
  snprintf(name, sizeof name, "windows-%u", codePage);
  for (NamedPage const& page : kNamedPages) {
    if (page.number == codePage) strcpy(name, page.name);
  }
  keepIcuLoaded();
  UErrorCode error = U_ZERO_ERROR;
  converter_ = ucnv_open(name, &error);
  if (converter_ == nullptr) return;
  constexpr UChar substitute[] = {'?'};
  ucnv_setSubstString(converter_, substitute, 1, &error);
  ucnv_setFromUCallBack(converter_, &writeSubstitute, nullptr, nullptr, nullptr, &error);
  ucnv_setFallback(converter_, true);
  if (U_SUCCESS(error) && !isUtf16(converter_)) {
    rotatesControls_ = rotatesControls(converter_);
    return;
  }
  ucnv_close(converter_);
  converter_ = nullptr;
}

bool CodePageConverter::isOneByte() const {
  UConverterType const type = ucnv_getType(converter_);
  return type == UCNV_SBCS || type == UCNV_LATIN_1 || type == UCNV_US_ASCII;
}

int CodePageConverter::decode(char const* bytes, int size, wchar* units, int capacity) {
  int const n = decoded(converter_, bytes, size, units, capacity);
  if (capacity != 0 && rotatesControls_) std::transform(units, units + n, units, rotatedBack);
  return n;
}

int CodePageConverter::encode(wchar const* units, int size, char* bytes, int capacity) {
  if (!rotatesControls_) return encoded(converter_, units, size, bytes, capacity);
  SmallBuffer<wchar, 256> copy;
  copy.resize(static_cast<std::size_t>(size));
  std::transform(units, units + size, copy.data(), rotated);
  return encoded(converter_, copy.data(), size, bytes, capacity);
}

}  // namespace platform
}  // namespace KV_1_1
