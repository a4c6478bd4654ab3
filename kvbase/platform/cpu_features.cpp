// SPDX-License-Identifier: MIT
#include "kvbase/platform/cpu_features.h"

#if defined(_MSC_VER)
#include <immintrin.h>
#include <intrin.h>
#else
#include <cpuid.h>
#endif

namespace KV_1_1 {
namespace platform {

namespace {

struct CpuidLeaf {
  unsigned int eax, ebx, ecx, edx;
};

#if defined(_MSC_VER)

CpuidLeaf cpuid(unsigned int leaf) {
  int registers[4];
  __cpuidex(registers, static_cast<int>(leaf), 0);
  return {static_cast<unsigned int>(registers[0]), static_cast<unsigned int>(registers[1]),
          static_cast<unsigned int>(registers[2]), static_cast<unsigned int>(registers[3])};
}

unsigned int enabledStates() {
  return static_cast<unsigned int>(_xgetbv(0));
}

#else

CpuidLeaf cpuid(unsigned int leaf) {
  CpuidLeaf result;
  __cpuid_count(leaf, 0, result.eax, result.ebx, result.ecx, result.edx);
  return result;
}

// The instruction is written out because the intrinsic would need a compiler flag for this file.
unsigned int enabledStates() {
  unsigned int low, high;
  __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
}

#endif

constexpr unsigned int kOsxsave = 1u << 27;       // leaf 1, ecx: the system has enabled extended states
constexpr unsigned int kAvx = 1u << 28;           // leaf 1, ecx
constexpr unsigned int kPopcnt = 1u << 23;        // leaf 1, ecx
constexpr unsigned int kAvx2 = 1u << 5;           // leaf 7, ebx
constexpr unsigned int kBmi = 1u << 3 | 1u << 8;  // leaf 7, ebx: BMI1 and BMI2
constexpr unsigned int kAvx512FBwVl = 1u << 16 | 1u << 30 | 1u << 31;  // leaf 7, ebx
constexpr unsigned int kVbmi = 1u << 1 | 1u << 6;                      // leaf 7, ecx: VBMI and VBMI2
constexpr unsigned int kXmmYmm = 0x6;                                  // the system saves the registers of both sizes
constexpr unsigned int kXmmYmmZmm = 0xE6;                              // and those of AVX-512, with its masks

bool hasAll(unsigned int features, unsigned int wanted) {
  return (features & wanted) == wanted;
}

// Whether the system saves those registers.
bool saves(unsigned int states) {
  return hasAll(cpuid(1).ecx, kOsxsave) && hasAll(enabledStates(), states);
}

}  // namespace

bool hasAvx2() {
  return cpuid(0).eax >= 7 && saves(kXmmYmm) && hasAll(cpuid(1).ecx, kAvx) && hasAll(cpuid(7).ebx, kAvx2);
}

bool hasAvx512() {
  return hasAvx2() && saves(kXmmYmmZmm) && hasAll(cpuid(1).ecx, kPopcnt) && hasAll(cpuid(7).ebx, kAvx512FBwVl | kBmi) &&
         hasAll(cpuid(7).ecx, kVbmi);
}

}  // namespace platform
}  // namespace KV_1_1
