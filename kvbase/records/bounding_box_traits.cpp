// SPDX-License-Identifier: MIT
#include "kvbase/records/bounding_box_traits.h"

#include <math.h>

#include <limits>

namespace KV_1_1 {

namespace {

template <class T>
constexpr Vec3d<T> kLargest = {std::numeric_limits<T>::max(), std::numeric_limits<T>::max(),
                               std::numeric_limits<T>::max()};

}  // namespace

// All of it is constant-initialised, so the order among the library's globals does not matter.
template <>
float KVBoundingBoxTraits<float>::epsilon = 1e-5f;
template <>
double KVBoundingBoxTraits<double>::epsilon = 1e-5;
template <>
float (*KVBoundingBoxTraits<float>::sqrt)(float) = &::sqrtf;
template <>
double (*KVBoundingBoxTraits<double>::sqrt)(double) = &::sqrt;
template <>
Vec3d<float> KVBoundingBoxTraits<float>::maxVector = kLargest<float>;
template <>
Vec3d<double> KVBoundingBoxTraits<double>::maxVector = kLargest<double>;

}  // namespace KV_1_1
