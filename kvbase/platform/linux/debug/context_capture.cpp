// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/context_capture.h"

#include <cstddef>

static_assert(offsetof(_CONTEXT, MxCsr) == 0x34 && offsetof(_CONTEXT, SegCs) == 0x38 &&
                  offsetof(_CONTEXT, EFlags) == 0x44 && offsetof(_CONTEXT, Rax) == 0x78 &&
                  offsetof(_CONTEXT, Rip) == 0xF8,
              "the offsets below");

asm(R"(
  .pushsection .text
  .p2align 4
  .globl kvbaseCaptureContext
  .hidden kvbaseCaptureContext
  .type kvbaseCaptureContext, @function
kvbaseCaptureContext:
  .cfi_startproc
  endbr64
  movq %rax, 0x78(%rdi)
  movq %rcx, 0x80(%rdi)
  movq %rdx, 0x88(%rdi)
  movq %rbx, 0x90(%rdi)
  leaq 8(%rsp), %rax
  movq %rax, 0x98(%rdi)
  movq %rbp, 0xA0(%rdi)
  movq %rsi, 0xA8(%rdi)
  movq %rdi, 0xB0(%rdi)
  movq %r8, 0xB8(%rdi)
  movq %r9, 0xC0(%rdi)
  movq %r10, 0xC8(%rdi)
  movq %r11, 0xD0(%rdi)
  movq %r12, 0xD8(%rdi)
  movq %r13, 0xE0(%rdi)
  movq %r14, 0xE8(%rdi)
  movq %r15, 0xF0(%rdi)
  movq (%rsp), %rax
  movq %rax, 0xF8(%rdi)
  stmxcsr 0x34(%rdi)
  movw %cs, 0x38(%rdi)
  movw %ss, 0x42(%rdi)
  pushfq
  .cfi_adjust_cfa_offset 8
  popq %rax
  .cfi_adjust_cfa_offset -8
  movl %eax, 0x44(%rdi)
  movq 0x78(%rdi), %rax
  ret
  .cfi_endproc
  .size kvbaseCaptureContext, .-kvbaseCaptureContext
  .popsection
)");
