// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/text/code_pages.h"

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <atomic>
#include <iterator>

#include "kvbase/platform/linux/small_buffer.h"
#include "kvbase/platform/narrow_text.h"

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

unsigned int resolved(unsigned int codePage) {
  return codePage == kAnsiCodePage ? currentAnsiCodePage() : codePage;
}

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

// One converter per call: opening one is cheap, and threads must not share one.
class Converter {
 public:
  explicit Converter(unsigned int codePage) {
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
    ucnv_setFallback(converter_, true);
    if (U_SUCCESS(error) && !usesUtf16()) return;
    ucnv_close(converter_);
    converter_ = nullptr;
  }
  ~Converter() { ucnv_close(converter_); }
  Converter(Converter const&) = delete;
  Converter& operator=(Converter const&) = delete;

  bool isOpen() const { return converter_ != nullptr; }

  // ICU's tables of IBM origin exchange three control characters; Windows does not.
  bool rotatesControls() {
    UErrorCode error = U_ZERO_ERROR;
    UChar unit = 0;
    ucnv_toUChars(converter_, &unit, 1, "\x1A", 1, &error);
    return unit == 0x1C;
  }

  int decode(char const* bytes, int size, wchar* units, int capacity) {
    UErrorCode error = U_ZERO_ERROR;
    int const n = ucnv_toUChars(converter_, units, capacity, bytes, size, &error);
    return isDone(error, capacity) ? n : 0;
  }
  int encode(wchar const* units, int size, char* bytes, int capacity) {
    UErrorCode error = U_ZERO_ERROR;
    int const n = ucnv_fromUChars(converter_, bytes, capacity, units, size, &error);
    return isDone(error, capacity) ? n : 0;
  }

 private:
  static bool isDone(UErrorCode error, int capacity) {
    return U_SUCCESS(error) || (error == U_BUFFER_OVERFLOW_ERROR && capacity == 0);
  }
  bool usesUtf16() const {
    UConverterType const type = ucnv_getType(converter_);
    return type == UCNV_UTF16_BigEndian || type == UCNV_UTF16_LittleEndian || type == UCNV_UTF16;
  }

  UConverter* converter_;
};

wchar rotatedBack(wchar unit) {
  return unit == 0x1C ? 0x1A : unit == 0x7F ? 0x1C : unit == 0x1A ? 0x7F : unit;
}

wchar rotated(wchar unit) {
  return unit == 0x1A ? 0x1C : unit == 0x1C ? 0x7F : unit == 0x7F ? 0x1A : unit;
}

unsigned int ansiCodePageOfEnvironment() {
  char const* const text = getenv("KVBASE_ANSI_CODEPAGE");
  if (text == nullptr) return kUtf8CodePage;
  unsigned long const number = strtoul(text, nullptr, 10);
  return number == 0 || number > 65535 ? kUtf8CodePage : static_cast<unsigned int>(number);
}

// 0 until the first call. Threads that ask at the same time get the same result.
std::atomic<unsigned int> ansiCodePage{0};

}  // namespace

unsigned int currentAnsiCodePage() {
  unsigned int page = ansiCodePage.load(std::memory_order_relaxed);
  if (page == 0) {
    page = ansiCodePageOfEnvironment();
    ansiCodePage.store(page, std::memory_order_relaxed);
  }
  return page;
}

int decodeCodePage(unsigned int codePage, char const* bytes, int size, wchar* units, int capacity) {
  if (size <= 0 || capacity < 0) return 0;
  Converter converter(resolved(codePage));
  if (!converter.isOpen()) return 0;
  int const n = converter.decode(bytes, size, units, capacity);
  if (capacity != 0 && converter.rotatesControls()) std::transform(units, units + n, units, rotatedBack);
  return n;
}

int encodeCodePage(unsigned int codePage, wchar const* units, int size, char* bytes, int capacity) {
  if (size <= 0 || capacity < 0) return 0;
  Converter converter(resolved(codePage));
  if (!converter.isOpen()) return 0;
  if (!converter.rotatesControls()) return converter.encode(units, size, bytes, capacity);
  SmallBuffer<wchar, 256> copy;
  copy.resize(static_cast<std::size_t>(size));
  std::transform(units, units + size, copy.data(), rotated);
  return converter.encode(copy.data(), size, bytes, capacity);
}

}  // namespace platform
}  // namespace KV_1_1
