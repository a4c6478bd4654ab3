// SPDX-License-Identifier: MIT
//
// The records in which the applications pass single scan points around: plain values, which any thread may copy.
//
//   ScanPtColor<Vec3d<double>> const measured = nextPoint();
//   ScanPtColor<Vec3d<float>> const shown = scanpt_cast<Vec3d<float>>(measured);
#pragma once

#include <array>
#include <cstdint>

#include "kvbase/export.h"

namespace KV_1_1 {

// A vector of floats or doubles.
template <class T>
struct Vec3d {
  T x{};
  T y{};
  T z{};
};

// A point with a colour. P is Vec3d<float>, Vec3d<double>, double or int. The library only carries the fields; what
// they mean, and in which order the components of the colour stand, is up to the applications. All of them start as 0.
template <class P>
struct ScanPtColor {
  P position{};
  std::uint16_t value = 0;
  std::array<std::uint8_t, 4> color{};

  // Stands for no point where a reference is needed; every field is 0.
  static ScanPtColor const nullReference;
};

// A point with a colour and a second value. P is Vec3d<float> or Vec3d<double>. It is another type than ScanPtColor,
// and neither converts to the other.
template <class P>
struct ScanPtColorExt {
  P position{};
  std::uint16_t value = 0;
  std::array<std::uint8_t, 4> color{};
  std::uint16_t extra = 0;
};

template <>
KVBASE_API ScanPtColor<Vec3d<float>> const ScanPtColor<Vec3d<float>>::nullReference;
template <>
KVBASE_API ScanPtColor<Vec3d<double>> const ScanPtColor<Vec3d<double>>::nullReference;
template <>
KVBASE_API ScanPtColor<double> const ScanPtColor<double>::nullReference;
template <>
KVBASE_API ScanPtColor<int> const ScanPtColor<int>::nullReference;

// The same point with a position of the given type, Vec3d<float> or Vec3d<double>: scanpt_cast<Vec3d<float>>(point).
// The kind of the record stays, and so do value, colour and extra, bit for bit. Doubles are rounded to the nearest
// float; beyond the range of float they become infinities. Each of the eight forms stands below; there are no others.
template <class P>
ScanPtColor<P> scanpt_cast(ScanPtColor<Vec3d<float>> const& source) = delete;
template <class P>
ScanPtColor<P> scanpt_cast(ScanPtColor<Vec3d<double>> const& source) = delete;
template <class P>
ScanPtColorExt<P> scanpt_cast(ScanPtColorExt<Vec3d<float>> const& source) = delete;
template <class P>
ScanPtColorExt<P> scanpt_cast(ScanPtColorExt<Vec3d<double>> const& source) = delete;

template <>
KVBASE_API ScanPtColor<Vec3d<float>> scanpt_cast<Vec3d<float>>(ScanPtColor<Vec3d<float>> const& source);
template <>
KVBASE_API ScanPtColor<Vec3d<float>> scanpt_cast<Vec3d<float>>(ScanPtColor<Vec3d<double>> const& source);
template <>
KVBASE_API ScanPtColorExt<Vec3d<float>> scanpt_cast<Vec3d<float>>(ScanPtColorExt<Vec3d<float>> const& source);
template <>
KVBASE_API ScanPtColorExt<Vec3d<float>> scanpt_cast<Vec3d<float>>(ScanPtColorExt<Vec3d<double>> const& source);
template <>
KVBASE_API ScanPtColor<Vec3d<double>> scanpt_cast<Vec3d<double>>(ScanPtColor<Vec3d<double>> const& source);
template <>
KVBASE_API ScanPtColor<Vec3d<double>> scanpt_cast<Vec3d<double>>(ScanPtColor<Vec3d<float>> const& source);
template <>
KVBASE_API ScanPtColorExt<Vec3d<double>> scanpt_cast<Vec3d<double>>(ScanPtColorExt<Vec3d<double>> const& source);
template <>
KVBASE_API ScanPtColorExt<Vec3d<double>> scanpt_cast<Vec3d<double>>(ScanPtColorExt<Vec3d<float>> const& source);

}  // namespace KV_1_1
