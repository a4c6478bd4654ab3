// SPDX-License-Identifier: MIT
#include <algorithm>

#include "kvbase/kernels/text_kernels.h"
#include "kvbase/strings/internal/text_builder.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

constexpr wchar kBackslash = KVW('\\');

// The letter behind the backslash in the escape of a unit; 0 if it has no short escape.
wchar escapeLetter(wchar unit) {
  switch (unit) {
    case KVW('\n'):
      return KVW('n');
    case KVW('\r'):
      return KVW('r');
    case KVW('"'):
    case kBackslash:
      return unit;
    default:
      return 0;
  }
}

bool isAscii(wchar unit) {
  return unit < 0x80;
}

// Whether a unit is in the class of hexadecimal digits, which includes the full-width forms.
bool isHexDigit(wchar unit) {
  if (unit >= 0xFF10 && unit <= 0xFF46) unit = static_cast<wchar>(unit - 0xFF10 + KVW('0'));
  return (unit >= KVW('0') && unit <= KVW('9')) || (unit >= KVW('A') && unit <= KVW('F')) ||
         (unit >= KVW('a') && unit <= KVW('f'));
}

// The value of four hexadecimal digits.
// COMPAT: full-width letters are in the class but not converted; the value ends before them.
wchar hexValue(wchar const* digits) {
  unsigned int value = 0;
  for (int i = 0; i < 4; ++i) {
    wchar const unit =
        digits[i] >= 0xFF10 && digits[i] <= 0xFF19 ? static_cast<wchar>(digits[i] - 0xFF10 + KVW('0')) : digits[i];
    if (!isAscii(unit)) break;
    value = value * 16 + (unit <= KVW('9') ? unit - KVW('0') : (unit | 0x20u) - KVW('a') + 10u);
  }
  return static_cast<wchar>(value);
}

// Writes units backwards from `end` on; those at or behind `limit` are dropped.
class BackwardWriter {
 public:
  BackwardWriter(wchar* units, long long end, int limit) : units_(units), next_(end), limit_(limit) {}

  void put(wchar unit) {
    if (--next_ < limit_) units_[next_] = unit;
  }
  void putEscaped(wchar unit) {
    for (int digit = 0; digit < 4; ++digit, unit = static_cast<wchar>(unit >> 4)) {
      put(static_cast<wchar>(KVW("0123456789ABCDEF")[unit & 0xF]));
    }
    put(KVW('u'));
    put(kBackslash);
  }

 private:
  wchar* units_;
  long long next_;
  int limit_;
};

// Escapes the units [begin, end) so that the result ends before writeEnd. It may overwrite the source, because the write
// position never falls below the read position.
void escapeBackwards(wchar* units, int begin, int end, long long writeEnd, int limit, bool unicode) {
  BackwardWriter writer(units, writeEnd, limit);
  for (int i = end; i-- > begin;) {
    wchar const unit = units[i];
    if (wchar const letter = escapeLetter(unit)) {
      writer.put(letter);
      writer.put(kBackslash);
    } else if (unicode && !isAscii(unit)) {
      writer.putEscaped(unit);
    } else {
      writer.put(unit);
    }
  }
}

// How many units the escapes of [begin, end) add; `letters` and `wide` count the escapes of either kind.
struct Growth {
  long long letters = 0;
  long long wide = 0;
  long long units() const { return letters + 5 * wide; }
};

Growth growthOf(wchar const* units, int begin, int end) {
  Growth growth;
  for (int i = begin; i < end; ++i) {
    growth.letters += escapeLetter(units[i]) != 0;
    growth.wide += !isAscii(units[i]);
  }
  return growth;
}

// The escape whose letter is at an index: how many units it takes from there on (0 if it is no escape), and the unit
// that replaces it, unless it stays as it is.
struct Escape {
  int units;
  bool replaces;
  wchar unit;
};

Escape readEscape(wchar const* units, int at, int length, bool unicode) {
  switch (units[at]) {
    case KVW('"'):
    case kBackslash:
      return {1, true, units[at]};
    case KVW('n'):
      return {1, true, KVW('\n')};
    case KVW('r'):
      return {1, true, KVW('\r')};
    case KVW('u'): {
      if (!unicode) return {1, false, 0};
      wchar const* const digits = units + at + 1;
      if (length - at <= 4 || !std::all_of(digits, digits + 4, isHexDigit)) return {0, false, 0};
      return {5, true, hexValue(digits)};
    }
    default:
      return {0, false, 0};
  }
}

// Escapes again what was decoded from the backslash at `first` on, up to a bad escape whose letter is at `from`. The
// decoded text ends before the pending backslash at to - 1; behind `from` nothing has changed yet.
void restoreEscapes(wchar* units, int first, int from, int to) {
  if (from <= to) return;
  long long const escapedLength = to - 1 - first + growthOf(units, first, to - 1).units();
  escapeBackwards(units, first, to - 1, first + escapedLength, from - 1, true);
  units[from - 1] = kBackslash;
}

}  // namespace

void String::controlsToEsc(bool unicode) {
  int const length = this->length();
  if (length < 1) return;
  Growth const growth = growthOf(payload_->str(), 0, length);
  if (growth.units() == 0) return;
  // COMPAT: without `unicode` there is room for wide escapes too, and the text is written behind that room.
  TextBuilder escaped(length + growth.units());
  int const room = length + static_cast<int>(growth.units());
  wchar* const units = escaped.extend(room);
  std::copy_n(payload_->str(), length, units);
  units[length] = 0;
  escapeBackwards(units, 0, length, room, room, unicode);
  escaped.finish().swap(*this);
  payload_->length_ = StringVal::kUnknown;
}

int String::escToControls(bool unicode) {
  int const length = this->length();
  int const first = find(kBackslash, 0);
  if (first < 0 || first + 1 >= length) return -1;
  wchar* const units = &(*this)[0];
  int to = first + 1;
  bool pending = true;
  for (int from = first + 1; from < length; ++from, ++to) {
    units[to] = units[from];
    if (!pending) {
      pending = units[to] == kBackslash;
      continue;
    }
    pending = false;
    Escape const escape = readEscape(units, from, length, unicode);
    if (escape.units == 0) {
      restoreEscapes(units, first, from, to);
      return from - 1;
    }
    if (escape.replaces) units[--to] = escape.unit;
    from += escape.units - 1;
  }
  if (to < length) units[to] = 0;
  return -1;
}

}  // namespace KV_1_1
