// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/kernels/text_kernels.h"
#include "kvbase/kernels/vector_bytes.h"
#include "kvbase/kernels/vector_kernels.h"
#include "kvbase/kernels/vector_utf8.h"

namespace KV_1_1 {
namespace strings {
namespace {

template <class V>
constexpr TextKernels kVectorKernels = {
    &length<V>,    &mismatch<V>,  &mismatchIgnoringCase<V>, &findUnit<V>, &findLastUnit<V>,
    &findText<V>,  &findRange<V>, &replaceUnit<V>,          &utf8Size<V>, &toUtf8<V>,
    &utf16Size<V>, &fromUtf8<V>,  &findBeyondLatin1<V>,     &widen<V>,    &narrow<V>,
};

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
