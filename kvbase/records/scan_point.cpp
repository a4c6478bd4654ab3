// SPDX-License-Identifier: MIT
#include "kvbase/records/scan_point.h"

#include <limits>

namespace KV_1_1 {

static_assert(std::numeric_limits<float>::is_iec559, "a double beyond the range of float becomes an infinity");

template <>
ScanPtColor<Vec3d<float>> const ScanPtColor<Vec3d<float>>::nullReference = {};
template <>
ScanPtColor<Vec3d<double>> const ScanPtColor<Vec3d<double>>::nullReference = {};
template <>
ScanPtColor<double> const ScanPtColor<double>::nullReference = {};
template <>
ScanPtColor<int> const ScanPtColor<int>::nullReference = {};

namespace {

Vec3d<float> toFloat(Vec3d<double> const& v) {
  return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

Vec3d<double> toDouble(Vec3d<float> const& v) {
  return {v.x, v.y, v.z};
}

}  // namespace

template <>
ScanPtColor<Vec3d<float>> scanpt_cast<Vec3d<float>>(ScanPtColor<Vec3d<float>> const& source) {
  return source;
}

template <>
ScanPtColor<Vec3d<float>> scanpt_cast<Vec3d<float>>(ScanPtColor<Vec3d<double>> const& source) {
  return {toFloat(source.position), source.value, source.color};
}

template <>
ScanPtColorExt<Vec3d<float>> scanpt_cast<Vec3d<float>>(ScanPtColorExt<Vec3d<float>> const& source) {
  return source;
}

template <>
ScanPtColorExt<Vec3d<float>> scanpt_cast<Vec3d<float>>(ScanPtColorExt<Vec3d<double>> const& source) {
  return {toFloat(source.position), source.value, source.color, source.extra};
}

template <>
ScanPtColor<Vec3d<double>> scanpt_cast<Vec3d<double>>(ScanPtColor<Vec3d<double>> const& source) {
  return source;
}

template <>
ScanPtColor<Vec3d<double>> scanpt_cast<Vec3d<double>>(ScanPtColor<Vec3d<float>> const& source) {
  return {toDouble(source.position), source.value, source.color};
}

template <>
ScanPtColorExt<Vec3d<double>> scanpt_cast<Vec3d<double>>(ScanPtColorExt<Vec3d<double>> const& source) {
  return source;
}

template <>
ScanPtColorExt<Vec3d<double>> scanpt_cast<Vec3d<double>>(ScanPtColorExt<Vec3d<float>> const& source) {
  return {toDouble(source.position), source.value, source.color, source.extra};
}

}  // namespace KV_1_1
