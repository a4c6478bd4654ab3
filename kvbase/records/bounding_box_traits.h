// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/export.h"
#include "kvbase/records/scan_point.h"

namespace KV_1_1 {

// The constants of bounding boxes with coordinates of type T, float or double.
//
// COMPAT: none of them is const: a program may replace each, and all its users in the process see the new value.
// Thread rule: not guarded; whoever writes must see to it that nobody reads.
template <class T>
struct KVBoundingBoxTraits {
  // 1e-5.
  static T epsilon;
  // The square root.
  static T (*sqrt)(T);
  // The largest finite T in all three components.
  static Vec3d<T> maxVector;
};

template <>
KVBASE_API float KVBoundingBoxTraits<float>::epsilon;
template <>
KVBASE_API double KVBoundingBoxTraits<double>::epsilon;
template <>
KVBASE_API float (*KVBoundingBoxTraits<float>::sqrt)(float);
template <>
KVBASE_API double (*KVBoundingBoxTraits<double>::sqrt)(double);
template <>
KVBASE_API Vec3d<float> KVBoundingBoxTraits<float>::maxVector;
template <>
KVBASE_API Vec3d<double> KVBoundingBoxTraits<double>::maxVector;

}  // namespace KV_1_1
