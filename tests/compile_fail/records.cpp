// SPDX-License-Identifier: MIT
//
// The forms of the records that the library has, and those that it does not have.
#include "kvbase/kvbase.h"

using namespace KV_1_1;

void use(ScanPtColor<Vec3d<float>> const& color, ScanPtColorExt<Vec3d<double>> const& extended, InfoStringMap& map) {
  ScanPtColor<Vec3d<double>> const wide = scanpt_cast<Vec3d<double>>(color);
  ScanPtColorExt<Vec3d<float>> const narrow = scanpt_cast<Vec3d<float>>(extended);
  map.addInfo<String>(KVW("key"), KVW("value"));
  static_cast<void>(wide);
  static_cast<void>(narrow);

#ifdef CASE_ANOTHER_POSITION
  // expect: deleted
  scanpt_cast<int>(color);
#endif

#ifdef CASE_A_SOURCE_THAT_IS_ONE_NUMBER
  // expect: no matching function
  scanpt_cast<Vec3d<float>>(ScanPtColor<double>());
#endif

#ifdef CASE_FROM_EXTENDED_TO_COLOR
  // expect: conversion from|no viable conversion
  ScanPtColor<Vec3d<double>> const other = scanpt_cast<Vec3d<double>>(extended);
#endif

#ifdef CASE_FROM_COLOR_TO_EXTENDED
  // expect: conversion from|no viable conversion
  ScanPtColorExt<Vec3d<float>> const otherKind = scanpt_cast<Vec3d<float>>(color);
#endif

#ifdef CASE_NULL_REFERENCE_OF_EXTENDED
  // expect: nullReference
  ScanPtColorExt<Vec3d<float>>::nullReference.value;
#endif

#ifdef CASE_A_CHANGE_OF_NULL_REFERENCE
  // expect: read-only
  ScanPtColor<int>::nullReference.value = 1;
#endif

#ifdef CASE_A_VALUE_THAT_IS_NO_STRING
  // expect: deleted
  map.addInfo(String(KVW("key")), 5);
#endif

#ifdef CASE_A_CHANGE_OF_THE_MAP_ITSELF
  // expect: discards qualifiers|passing .const
  map.getInfos().clear();
#endif
}
